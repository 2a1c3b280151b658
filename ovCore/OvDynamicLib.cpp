#include "ovCore/OvDynamicLib.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvSystem.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvDynamicLib";

/// For evidence: a directory that can't be told must not hide the failure that is reported.
std::wstring CurrentDirectoryOpt()
{
    try
    {
        return COvSystem::GetCurrentDirectoryW();
    }
    catch (const COvBaseException&)
    {
        return std::wstring();
    }
}

/// Null with the last error set. Windows 7 without its updates does not know the flag for the system's folder: there
/// the folder is named instead, and what the library needs comes from beside it.
HMODULE Load(const std::wstring& wzName, HANDLE hReserved, DWORD dwFlags)
{
    const HMODULE hModule = ::LoadLibraryExW(wzName.c_str(), hReserved, dwFlags);
    if (hModule != nullptr || dwFlags != LOAD_LIBRARY_SEARCH_SYSTEM32 || ::GetLastError() != ERROR_INVALID_PARAMETER)
        return hModule;
    wchar_t szFolder[MAX_PATH] = {};
    const UINT nLength = ::GetSystemDirectoryW(szFolder, MAX_PATH);
    if (nLength == 0 || nLength >= MAX_PATH)
        return nullptr;
    return ::LoadLibraryExW((szFolder + (L"\\" + wzName)).c_str(), hReserved, LOAD_WITH_ALTERED_SEARCH_PATH);
}

} // namespace

COvDynamicLib::COvDynamicLib(const wchar_t* name, HANDLE reserved, DWORD flags)
{
    OV_SCOPE(L"COvDynamicLib::COvDynamicLib");
    Init(name, reserved, flags, true);
}

COvDynamicLib::~COvDynamicLib()
{
    Clear();
}

void COvDynamicLib::Init(const wchar_t* name, HANDLE reserved, DWORD flags, bool bThrow)
{
    OV_SCOPE(L"COvDynamicLib::Init");
    if (name == nullptr || *name == L'\0')
        return;
    Clear();
    m_wzFileNm = name;
    m_hModule = Load(m_wzFileNm, reserved, flags);
    if (m_hModule != nullptr || !bThrow)
        return;
    const LONG lError = static_cast<LONG>(::GetLastError());
    OvRaise(E_FAIL, s_szSource, __LINE__,
            COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"LoadLibraryEx") +
                COvEvidence(L"Win32 Error", lError, true) + COvEvidence(L"m_wzFileNm", m_wzFileNm) +
                COvEvidence(L"tzCurrDir", CurrentDirectoryOpt()));
}

FARPROC COvDynamicLib::GetProcAddr(const wchar_t* tzFuncNm, bool bThrow) const
{
    OV_SCOPE(L"COvDynamicLib::GetProcAddr");
    if (m_hModule == nullptr)
    {
        if (!bThrow)
            return nullptr;
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"Cannot retrieve function pointer; No module has been loaded") +
                    COvEvidence(L"tzFuncNm", tzFuncNm) + COvEvidence(L"m_wzFileNm", m_wzFileNm));
    }
    const FARPROC pFunction = ::GetProcAddress(m_hModule, COvStringUtil::WideToNarrow(tzFuncNm).c_str());
    if (pFunction == nullptr && bThrow)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"GetProcAddress") +
                    COvEvidence(L"tzFuncNm", tzFuncNm) + COvEvidence(L"m_wzFileNm", m_wzFileNm));
    return pFunction;
}

void COvDynamicLib::Clear()
{
    OV_SCOPE(L"COvDynamicLib::Clear");
    if (m_hModule != nullptr)
        ::FreeLibrary(m_hModule);
    m_hModule = nullptr;
}
