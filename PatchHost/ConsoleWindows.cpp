#include "PatchHost/Console.h"

#include "OvPlatform.h"
#include "PatchHost/Text.h"

#include <fcntl.h>
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
