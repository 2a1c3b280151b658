#include "ovCore/Api_Version.h"

template <class Function>
Function* CApi_Version::FindOpt(const wchar_t* szFunction)
{
    const bool bThrow = true;
    if (!m_lib.IsLoaded())
        m_lib.Init(L"version.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, !bThrow);
    return m_lib.GetProc<Function>(szFunction, !bThrow);
}

DWORD CApi_Version::GetFileVersionInfoSizeW(const wchar_t* szFile, DWORD* pdwHandle)
{
    const auto pFunction = FindOpt<DWORD WINAPI(LPCWSTR, LPDWORD)>(L"GetFileVersionInfoSizeW");
    return pFunction != nullptr ? pFunction(szFile, pdwHandle) : 0;
}

BOOL CApi_Version::GetFileVersionInfoW(const wchar_t* szFile, DWORD dwHandle, DWORD dwLength, void* pBlock)
{
    const auto pFunction = FindOpt<BOOL WINAPI(LPCWSTR, DWORD, DWORD, LPVOID)>(L"GetFileVersionInfoW");
    return pFunction != nullptr ? pFunction(szFile, dwHandle, dwLength, pBlock) : FALSE;
}

BOOL CApi_Version::VerQueryValueW(const void* pBlock, const wchar_t* szSubBlock, void** ppValue, UINT* pnLength)
{
    const auto pFunction = FindOpt<BOOL WINAPI(LPCVOID, LPCWSTR, LPVOID*, UINT*)>(L"VerQueryValueW");
    return pFunction != nullptr ? pFunction(pBlock, szSubBlock, ppValue, pnLength) : FALSE;
}
