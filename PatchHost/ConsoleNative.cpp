#include "Console.h"

#include "Platform/Control.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

std::vector<std::string> Arguments(int argc, char** argv)
{
    return { argv + 1, argv + argc };
}

std::string UserPath(const std::string& path)
{
    if (path.compare(0, 3, "Z:\\") != 0)
        return path;
    std::string own = path.substr(2); // the stand-in shows /a/b as Z:\a\b
    std::replace(own.begin(), own.end(), '\\', '/');
    return own;
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

void PrepareStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
}

bool UseAnsiCodePage(unsigned nCodePage)
{
    return OvPlatform::SetAnsiCodePage(nCodePage);
}
