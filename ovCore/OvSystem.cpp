#include "ovCore/OvSystem.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvSystem";
constexpr DWORD DIRECTORY_BUFFER = 1024; // characters, with the terminating zero

} // namespace

std::wstring COvSystem::GetCurrentDirectoryW()
{
    OV_SCOPE(L"COvSystem::GetCurrentDirectoryW");
    wchar_t szDirectory[DIRECTORY_BUFFER] = {};
    const DWORD dwLength = ::GetCurrentDirectoryW(DIRECTORY_BUFFER, szDirectory);
    if (dwLength == 0 || dwLength >= DIRECTORY_BUFFER)
    {
        const LONG lError = static_cast<LONG>(::GetLastError());
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"::GetCurrentDirectory") +
                    COvEvidence(L"Win32 Error", lError, true));
    }
    return std::wstring(szDirectory, dwLength);
}
