#include "ovCore/OvVersionResource.h"

#include "ovCore/OvFile.h"
#include "ovCore/OvVersion.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvVersionResource";

/// Names the executable where no file is named. @return false when there is no such file, or the name is none.
bool FindFile(std::wstring& strFile)
{
    try
    {
        if (strFile.empty())
            strFile = COvFile::GetModuleFileNameW(nullptr);
        return COvFile::FileExists(strFile, false, nullptr);
    }
    catch (const COvBaseException&)
    {
        return false;
    }
}

} // namespace

bool COvVersionResource::Open(const std::wstring& path)
{
    OV_SCOPE(L"COvVersionResource::Open");
    std::wstring strFile = path;
    if (!FindFile(strFile))
        return false;
    DWORD dwUnused = 0;
    const DWORD dwSize = m_api.GetFileVersionInfoSizeW(strFile.c_str(), &dwUnused);
    if (dwSize == 0)
        return false;
    m_block.Resize(dwSize);
    if (m_api.GetFileVersionInfoW(strFile.c_str(), 0, dwSize, m_block.Data()))
        return true;
    const LONG lError = static_cast<LONG>(::GetLastError());
    m_block.Clear();
    OvRaise(E_FAIL, s_szSource, __LINE__,
            COvEvidence(L"Method", L"GetFileVersionInfo") + COvEvidence(L"Win32 GetLastError", lError, true));
}

bool COvVersionResource::Open(HMODULE module)
{
    OV_SCOPE(L"COvVersionResource::Open");
    if (module == nullptr)
        return false;
    wchar_t szFile[MAX_PATH] = {};
    const DWORD dwLength = ::GetModuleFileNameW(module, szFile, MAX_PATH);
    return dwLength != 0 && Open(std::wstring(szFile, dwLength));
}

bool COvVersionResource::Query(const wchar_t* subBlock, void** value, UINT* length)
{
    OV_SCOPE(L"COvVersionResource::Query");
    return m_block.Size() != 0 && m_api.VerQueryValueW(m_block.Data(), subBlock, value, length) && *value != nullptr &&
           *length != 0;
}

const VS_FIXEDFILEINFO* COvVersionResource::FixedInfoOpt()
{
    OV_SCOPE(L"COvVersionResource::FixedInfoOpt");
    void* pValue = nullptr;
    UINT nLength = 0;
    const bool bFound = Query(L"\\", &pValue, &nLength) && nLength >= sizeof(VS_FIXEDFILEINFO);
    return bFound ? static_cast<const VS_FIXEDFILEINFO*>(pValue) : nullptr;
}

bool COvVersionResource::GetVersion(COvVersion& version)
{
    OV_SCOPE(L"COvVersionResource::GetVersion");
    version.SetVersion(0, 0, 0, 0);
    const VS_FIXEDFILEINFO* const pInfo = FixedInfoOpt();
    return pInfo != nullptr && version.SetVersion(pInfo->dwFileVersionMS, pInfo->dwFileVersionLS);
}
