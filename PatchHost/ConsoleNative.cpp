#include "PatchHost/Console.h"

#include "PatchHost/Text.h"
#include "Platform/Control.h"

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/ioctl.h>
#include <sys/stat.h>
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

std::optional<unsigned> Columns()
{
    const char* const szColumns = std::getenv("COLUMNS");
    const int nColumns = szColumns == nullptr ? 0 : std::atoi(szColumns);
    if (nColumns > 0)
        return static_cast<unsigned>(nColumns);
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return std::nullopt;
    return size.ws_col;
}

bool MakePrivate(const std::filesystem::path& file)
{
    const int nFile = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const bool bMade = nFile >= 0 && ::fchmod(nFile, 0600) == 0 && ::ftruncate(nFile, 0) == 0;
    if (nFile >= 0)
        ::close(nFile);
    return bMade;
}

// The stand-in keeps the number alone, so the loader is asked once more for its words.
std::string LoadFailure(const std::string& path, unsigned long)
{
    void* const pModule = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (pModule != nullptr)
        ::dlclose(pModule);
    const char* const szReason = pModule == nullptr ? ::dlerror() : nullptr;
    const bool bThere = ::access(path.c_str(), F_OK) == 0;
    const std::string reason = szReason == nullptr ? "the loader gives no reason" : szReason;
    const bool bDependency = bThere && reason.find("cannot open shared object file") != std::string::npos &&
                             reason.compare(0, path.size(), path) != 0;
    return (bDependency ? "a library that it needs is missing: " : bThere ? "" : "there is no such file: ") + reason;
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
