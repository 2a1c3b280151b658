#include "Platform/Messages.h"

#include "Platform/Kernel/LastError.h"
#include "Platform/Memory.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace OvPlatform
{

namespace
{

struct CMessage
{
    DWORD dwCode;
    const wchar_t* szText; // without the line end that the platform's texts have
};

// What the calls of the stand-in and the components behind them can answer, by code.
constexpr CMessage Messages[] = {
    { 0, L"The operation completed successfully." },
    { 1, L"Incorrect function." },
    { 2, L"The system cannot find the file specified." },
    { 3, L"The system cannot find the path specified." },
    { 4, L"The system cannot open the file." },
    { 5, L"Access is denied." },
    { 6, L"The handle is invalid." },
    { 8, L"Not enough memory resources are available to process this command." },
    { 13, L"The data is invalid." },
    { 14, L"Not enough memory resources are available to complete this operation." },
    { 18, L"There are no more files." },
    { 31, L"A device attached to the system is not functioning." },
    { 32, L"The process cannot access the file because it is being used by another process." },
    { 50, L"The request is not supported." },
    { 53, L"The network path was not found." },
    { 87, L"The parameter is incorrect." },
    { 112, L"There is not enough space on the disk." },
    { 120, L"This function is not supported on this system." },
    { 121, L"The semaphore timeout period has expired." },
    { 122, L"The data area passed to a system call is too small." },
    { 123, L"The filename, directory name, or volume label syntax is incorrect." },
    { 126, L"The specified module could not be found." },
    { 127, L"The specified procedure could not be found." },
    { 161, L"The specified path is invalid." },
    { 170, L"The requested resource is in use." },
    { 183, L"Cannot create a file when that file already exists." },
    { 193, L"%1 is not a valid Win32 application." },
    { 206, L"The filename or extension is too long." },
    { 234, L"More data is available." },
    { 258, L"The wait operation timed out." },
    { 259, L"No more data is available." },
    { 288, L"Attempt to release mutex not owned by caller." },
    { 299, L"Only part of a ReadProcessMemory or WriteProcessMemory request was completed." },
    { 317, L"The system cannot find message text for message number 0x%1 in the message file for %2." },
    { 487, L"Attempt to access invalid address." },
    { 998, L"Invalid access to memory location." },
    { 1004, L"Invalid flags." },
    { 1008, L"An attempt was made to reference a token that does not exist." },
    { 1010, L"The configuration registry key is invalid." },
    { 1015, L"The registry is corrupted. The structure of one of the files containing registry data is corrupted, or "
            L"the system's memory image of the file is corrupted, or the file could not be recovered because the "
            L"alternate copy or log was absent or corrupted." },
    { 1016, L"An I/O operation initiated by the registry failed unrecoverably. The registry could not read in, or "
            L"write out, or flush, one of the files that contain the system's image of the registry." },
    { 1018, L"Illegal operation attempted on a registry key that has been marked for deletion." },
    { 1021, L"Cannot create a stable subkey under a volatile parent key." },
    { 1113, L"No mapping for the Unicode character exists in the target multi-byte code page." },
    { 1114, L"A dynamic link library (DLL) initialization routine failed." },
    { 1168, L"Element not found." },
    { 1300, L"Not all privileges or groups referenced are assigned to the caller." },
    { 1314, L"A required privilege is not held by the client." },
    { 1337, L"The security ID structure is invalid." },
    { 1400, L"Invalid window handle." },
    { 1444, L"Invalid thread identifier." },
    { 1722, L"The RPC server is unavailable." },
    { 1726, L"The remote procedure call failed." },
    { 1812, L"The specified image file did not contain a resource section." },
    { 1813, L"The specified resource type cannot be found in the image file." },
    { 1814, L"The specified resource name cannot be found in the image file." },
    { 1815, L"The specified resource language ID cannot be found in the image file." },
    { 0x80004001, L"Not implemented" },
    { 0x80004002, L"No such interface supported" },
    { 0x80004003, L"Invalid pointer" },
    { 0x80004004, L"Operation aborted" },
    { 0x80004005, L"Unspecified error" },
    { 0x8000FFFF, L"Catastrophic failure" },
    { 0x80010001, L"Call was rejected by callee." },
    { 0x80010105, L"The server threw an exception." },
    { 0x80010106, L"Cannot change thread mode after it is set." },
    { 0x80010108, L"The object invoked has disconnected from its clients." },
    { 0x8001010E, L"The application called an interface that was marshalled for a different thread." },
    { 0x80020003, L"Member not found." },
    { 0x80020004, L"Parameter not found." },
    { 0x80020005, L"Type mismatch." },
    { 0x80020006, L"Unknown name." },
    { 0x80020008, L"Bad variable type." },
    { 0x80020009, L"Exception occurred." },
    { 0x8002000A, L"Out of present range." },
    { 0x8002000B, L"Invalid index." },
    { 0x8002000E, L"Invalid number of parameters." },
    { 0x80040110, L"Class does not support aggregation (or class object is remote)" },
    { 0x80040111, L"ClassFactory cannot supply requested class" },
    { 0x80040154, L"Class not registered" },
    { 0x80040155, L"Interface not registered" },
    { 0x800401F0, L"CoInitialize has not been called." },
    { 0x800401F3, L"Invalid class string" },
    { 0x800401FB, L"Object is not registered" },
    { 0x800401FD, L"Object is not connected to server" },
    { 0x80080005, L"Server execution failed" },
};

constexpr wchar_t LineEnd[] = L"\r\n";

/// The table's text; null for none.
const wchar_t* FindMessage(DWORD dwCode)
{
    const DWORD dwKey = (dwCode & 0xFFFF0000) == 0x80070000 ? dwCode & 0xFFFF : dwCode;
    const auto found = std::find_if(std::begin(Messages), std::end(Messages),
                                    [dwKey](const CMessage& message) { return message.dwCode == dwKey; });
    return found == std::end(Messages) ? nullptr : found->szText;
}

bool IsLanguageKnown(DWORD dwLanguage)
{
    constexpr DWORD English = 0x409;
    return dwLanguage == LANG_NEUTRAL || dwLanguage == MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT) ||
           dwLanguage == English;
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

DWORD FormatMessageW(DWORD dwFlags, LPCVOID, DWORD dwCode, DWORD dwLanguage, LPWSTR szBuffer, DWORD, va_list*)
{
    if (dwFlags != (FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS) ||
        !szBuffer)
        return Fail(ERROR_INVALID_PARAMETER, 0u);
    void* const pResult = szBuffer; // with FORMAT_MESSAGE_ALLOCATE_BUFFER the address of a pointer
    auto& szResult = *static_cast<LPWSTR*>(pResult);
    szResult = nullptr;
    if (!IsLanguageKnown(dwLanguage))
        return Fail(ERROR_RESOURCE_LANG_NOT_FOUND, 0u);
    const wchar_t* szText = FindMessage(dwCode);
    if (!szText)
        return Fail(ERROR_MR_MID_NOT_FOUND, 0u);
    const size_t nUnits = std::wcslen(szText) + std::size(LineEnd) - 1;
    szResult = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, (nUnits + 1) * sizeof(wchar_t)));
    if (!szResult)
        return 0;
    std::wcscpy(szResult, szText);
    std::wcscat(szResult, LineEnd);
    return static_cast<DWORD>(nUnits);
}
