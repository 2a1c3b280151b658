#include "PatchHost/Console.h"

#include "PatchHost/Text.h"
#include "Platform/Control.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <unistd.h>

std::vector<std::string> Arguments(int argc, char** argv)
{
    return { argv + 1, argv + argc };
}

std::string UserPath(const std::wstring& path)
{
    return path.compare(0, 3, L"Z:\\") == 0 ? OvPlatform::HostPath(path) : WideToUtf8(path);
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

CProcessCounts CountProcess()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    const auto nThreads = std::distance(begin(tasks), end(tasks));
    return { static_cast<unsigned>(nThreads), OvPlatform::OpenHandles() };
}
