#include "PatchHost/Console.h"

#include "OvPlatform.h"
#include "PatchHost/Text.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <io.h>
#include <shellapi.h>

namespace
{

HANDLE HandleOf(Stream stream)
{
    return ::GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

} // namespace

std::vector<std::string> Arguments(int, char**)
{
    int nCount = 0;
    wchar_t** const ppArguments = ::CommandLineToArgvW(::GetCommandLineW(), &nCount);
    std::vector<std::string> arguments;
    for (int i = 1; i < nCount; ++i)
        arguments.push_back(WideToUtf8(ppArguments[i]));
    ::LocalFree(ppArguments);
    return arguments;
}

std::string UserPath(const std::wstring& path)
{
    return WideToUtf8(path);
}

bool IsTerminal(Stream stream)
{
    DWORD dwMode = 0;
    return ::GetConsoleMode(HandleOf(stream), &dwMode) != FALSE;
}

bool HasColours(Stream stream)
{
    constexpr DWORD dwEscapes = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING
    DWORD dwMode = 0;
    return ::GetConsoleMode(HandleOf(stream), &dwMode) && ::SetConsoleMode(HandleOf(stream), dwMode | dwEscapes);
}

std::optional<unsigned> Columns()
{
    const char* const szColumns = std::getenv("COLUMNS");
    const int nColumns = szColumns == nullptr ? 0 : std::atoi(szColumns);
    if (nColumns > 0)
        return static_cast<unsigned>(nColumns);
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!::GetConsoleScreenBufferInfo(HandleOf(Stream::Output), &info) || info.dwSize.X < 2)
        return std::nullopt;
    return static_cast<unsigned>(info.dwSize.X - 1); // a full line would break by itself
}

bool MakePrivate(const std::filesystem::path& file)
{
    return static_cast<bool>(std::ofstream(file, std::ios::binary));
}

std::string LoadFailure(const std::string& path, unsigned long dwError)
{
    if (::GetFileAttributesW(Utf8ToWide(path).c_str()) == INVALID_FILE_ATTRIBUTES)
        return "there is no such file: " + SystemText(dwError);
    if (dwError == ERROR_MOD_NOT_FOUND)
        return "a library that it needs is missing: " + SystemText(dwError);
    return SystemText(dwError);
}

void PrepareStreams()
{
    ::_setmode(0, _O_BINARY);
    ::_setmode(1, _O_BINARY);
}

bool UseAnsiCodePage(unsigned nCodePage)
{
    return nCodePage == ::GetACP();
}

CProcessCounts CountProcess()
{
    CProcessCounts counts;
    const HANDLE hSnapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL bMore = ::Thread32First(hSnapshot, &entry); bMore; bMore = ::Thread32Next(hSnapshot, &entry))
        counts.nThreads += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(hSnapshot);
    DWORD dwHandles = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &dwHandles);
    counts.nHandles = dwHandles;
    return counts;
}
