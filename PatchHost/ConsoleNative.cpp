#include "Console.h"

#include "Platform/Control.h"

#include <cstdlib>
#include <unistd.h>

std::vector<std::string> Arguments(int argc, char** argv)
{
    return { argv + 1, argv + argc };
}

bool IsTerminal(Stream stream)
{
    return ::isatty(stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO) != 0;
}

bool HasColours(Stream stream)
{
    const char* const szTerminal = std::getenv("TERM");
    return IsTerminal(stream) && szTerminal != nullptr && std::string(szTerminal) != "dumb";
}

void UseBinaryStreams() {}

bool UseAnsiCodePage(unsigned nCodePage)
{
    return OvPlatform::SetAnsiCodePage(nCodePage);
}
