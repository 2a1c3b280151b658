#include "OvDynamicLib.h"

#include "OvException.h"
#include "OvStackTrace.h"
#include "OvStringUtil.h"
#include "OvSystem.h"

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
    m_hModule = ::LoadLibraryExW(name, reserved, flags);
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
