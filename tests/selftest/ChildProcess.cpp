#include "ChildProcess.h"

#include "OvPlatform.h"

namespace
{

/// A file that the child inherits as its outputs.
class COutputFile
{
public:
    explicit COutputFile(const std::wstring& wzFile)
    {
        SECURITY_ATTRIBUTES inherited = { sizeof(inherited), nullptr, TRUE };
        m_hFile = ::CreateFileW(wzFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
    }
    ~COutputFile() { ::CloseHandle(m_hFile); }
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    HANDLE Get() const { return m_hFile; }

private:
    HANDLE m_hFile;
};

uint32_t WaitFor(HANDLE hProcess, unsigned nMinutes)
{
    DWORD dwExitCode = 0;
    if (::WaitForSingleObject(hProcess, nMinutes * 60 * 1000) == WAIT_OBJECT_0 &&
        ::GetExitCodeProcess(hProcess, &dwExitCode))
        return dwExitCode;
    ::TerminateProcess(hProcess, 1);
    ::WaitForSingleObject(hProcess, INFINITE);
    return CHILD_TOOK_TOO_LONG;
}

} // namespace

uint32_t RunChild(const std::wstring& wzProgram, const std::wstring& wzArguments, const std::wstring& wzOutput,
                  unsigned nMinutes)
{
    const COutputFile output(wzOutput);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.Get();
    startup.hStdError = output.Get();
    std::wstring wzCommand = L"\"" + wzProgram + L"\" " + wzArguments;
    PROCESS_INFORMATION process = {};
    constexpr BOOL bInherit = TRUE;
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX); // inherited: no box waits for a click
    if (!::CreateProcessW(wzProgram.c_str(), &wzCommand[0], nullptr, nullptr, bInherit, CREATE_NO_WINDOW, nullptr,
                          nullptr, &startup, &process))
        return CHILD_NOT_STARTED;
    const uint32_t nExitCode = WaitFor(process.hProcess, nMinutes);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return nExitCode;
}
