#include "ovCore/OvRegKey.h"

#include "ovCore/OvDynamicAPI.h"
#include "ovCore/OvException.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvProcesses.h"
#include "ovCore/OVProcessInfo.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "OvUtf16.h"

#include <utility>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvRegKey";

constexpr int OPTION_NON_VOLATILE = 0;
constexpr int OPTION_VOLATILE = 1;
constexpr DWORD LAST_VALUE_TYPE = REG_QWORD;

struct CRootName
{
    const wchar_t* m_szShort;
    const wchar_t* m_szLong;
    HKEY m_hKey;
};

const CRootName s_rootNames[] = { { L"HKLM", L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE },
                                  { L"HKCU", L"HKEY_CURRENT_USER", HKEY_CURRENT_USER },
                                  { L"HKCR", L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT },
                                  { L"HKCC", L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG },
                                  { L"HKU", L"HKEY_USERS", HKEY_USERS },
                                  { L"HKDD", L"HKEY_DYN_DATA", HKEY_DYN_DATA } };

/// A failed registry call and the key that it was about.
COvEvidence CallFailed(const wchar_t* szMethod, LONG lResult, HKEY hRoot)
{
    return COvEvidence(L"Method", szMethod) + COvEvidence(L"Win32 Error", lResult, true) +
           COvEvidence(L"HKEY", COvRegKey::HKEY2Str(hRoot));
}

[[noreturn]] void RaiseOpenFailure(const wchar_t* szMethod, LONG nLine, LONG lResult, HKEY hRoot,
                                   const std::wstring& strPath, DWORD samDesired)
{
    OvRaise(E_FAIL, s_szSource, nLine,
            CallFailed(szMethod, lResult, hRoot) + COvEvidence(L"strPath", strPath) +
                COvEvidence(L"samDesired", samDesired));
}

/// A question that the platform cannot answer counts as not under WOW64.
bool IsNative64BitProcess()
{
    return COVOsVersion::GetCurrent().IsPlatform64() && !COvDynamicAPI::Get().IsCurrentProcessWow64();
}

/// The hive under HKEY_USERS of the user who runs a process.
std::wstring HiveOfProcess(DWORD dwProcessId)
{
    COvProcesses processes;
    bool bFound = false;
    const COvProcessInfo& process = processes.GetProcess(dwProcessId, bFound);
    if (!bFound)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"dwProcessId", dwProcessId) + COvEvidence(L"Info Msg", L"Process id not found"));
    constexpr bool bDefault = true;
    return process.GetTextualSID(bDefault);
}

} // namespace

COvRegKey::COvRegKey(LONG nView)
    : m_hRoot(nullptr), m_hKey(nullptr), m_samDesired(KEY_READ), m_nView(nView), m_lLastError(0), m_dwProcessId(0)
{
    OV_SCOPE(L"COvRegKey::COvRegKey");
}

COvRegKey::~COvRegKey()
{
    OV_SCOPE(L"COvRegKey::~COvRegKey");
    if (m_hKey != nullptr)
        ::RegCloseKey(m_hKey);
}

bool COvRegKey::Create(const std::wstring& path, HKEY hRoot, DWORD samDesired, DWORD dwProcessId)
{
    OV_SCOPE(L"COvRegKey::Create");
    Close(); // before anything may fail: a failed Create leaves no key open
    HKEY hMappedRoot = hRoot;
    const std::wstring wzMapped = GetModifiedPath(&hMappedRoot, path, dwProcessId);
    DWORD dwDisposition = 0;
    const LONG lResult = CreateEx(path, hRoot, samDesired, dwProcessId, &dwDisposition, OPTION_NON_VOLATILE);
    if (lResult != ERROR_SUCCESS)
        RaiseOpenFailure(L"::RegCreateKeyEx", __LINE__, lResult, hMappedRoot, wzMapped, samDesired);
    return dwDisposition == REG_CREATED_NEW_KEY;
}

LONG COvRegKey::CreateEx(const std::wstring& path, HKEY hRoot, DWORD samDesired, DWORD dwProcessId,
                         DWORD* pdwDisposition, int nOption)
{
    OV_SCOPE(L"COvRegKey::CreateEx");
    Close();
    std::wstring wzMapped = GetModifiedPath(&hRoot, path, dwProcessId);
    *pdwDisposition = 0;
    HKEY hKey = nullptr;
    const LONG lResult = ::RegCreateKeyExW(hRoot, wzMapped.c_str(), 0, nullptr, GetRegOption(nOption),
                                           samDesired | GetWOWDescriptor(), nullptr, &hKey, pdwDisposition);
    if (lResult == ERROR_SUCCESS)
        SetOpened(hKey, hRoot, std::move(wzMapped), samDesired);
    return lResult;
}

bool COvRegKey::OpenOpt(const std::wstring& strPath, HKEY hRoot, DWORD samDesired, DWORD dwProcessId)
{
    OV_SCOPE(L"COvRegKey::OpenOpt");
    Close();
    std::wstring wzMapped = GetModifiedPath(&hRoot, strPath, dwProcessId);
    HKEY hKey = nullptr;
    m_lLastError = ::RegOpenKeyExW(hRoot, wzMapped.c_str(), 0, samDesired | GetWOWDescriptor(), &hKey);
    if (m_lLastError == ERROR_FILE_NOT_FOUND)
        return false;
    if (m_lLastError != ERROR_SUCCESS)
        RaiseOpenFailure(L"::RegOpenKeyEx", __LINE__, m_lLastError, hRoot, wzMapped, samDesired);
    SetOpened(hKey, hRoot, std::move(wzMapped), samDesired);
    return true;
}

void COvRegKey::Close()
{
    OV_SCOPE(L"COvRegKey::Close");
    if (m_hKey == nullptr)
        return;
    m_lLastError = ::RegCloseKey(m_hKey);
    m_hKey = nullptr;
    m_hRoot = nullptr;
    m_samDesired = KEY_READ;
    m_dwProcessId = 0;
    if (m_lLastError != ERROR_SUCCESS)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Method", L"::RegCloseKey") + COvEvidence(L"Win32 Error", m_lLastError, true));
}

void COvRegKey::VerifyKeyOpen() const
{
    OV_SCOPE(L"COvRegKey::VerifyKeyOpen");
    if (m_hKey == nullptr)
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Info Msg", L"There is no registry key open."));
}

LONG COvRegKey::QueryValue(const std::wstring& tzValNm, DWORD* pdwType, COvByteBuffer& data, unsigned nFlags)
{
    OV_SCOPE(L"COvRegKey::QueryValue");
    const DWORD dwAsked = *pdwType;
    *pdwType = 0;
    data.Clear();
    DWORD dwSize = 0;
    Query(tzValNm, pdwType, nullptr, &dwSize);
    // The value may be replaced by a shorter one at any time: then once more, so that the size is the data's own.
    while ((nFlags & QueryReadData) != 0 && m_lLastError == ERROR_SUCCESS && dwSize != data.Size())
    {
        data.Resize(dwSize);
        if (dwSize > 0)
            Query(tzValNm, pdwType, data.Data(), &dwSize);
    }
    if ((nFlags & QueryCheckType) != 0 && m_lLastError == ERROR_SUCCESS && *pdwType != dwAsked)
        RaiseUnexpectedType(__LINE__, COvEvidence(L"tzValNm", tzValNm), ValueType2Str(dwAsked), *pdwType);
    return m_lLastError;
}

bool COvRegKey::GetOptValueType(const std::wstring& name, DWORD* pdwType)
{
    OV_SCOPE(L"COvRegKey::GetOptValueType");
    VerifyKeyOpen();
    COvByteBuffer data;
    DWORD dwType = 0;
    if (QueryValue(name, &dwType, data, 0) != ERROR_SUCCESS)
        return false;
    *pdwType = dwType;
    return true;
}

bool COvRegKey::GetOptStringValue(const std::wstring& tzName, std::wstring& value)
{
    OV_SCOPE(L"COvRegKey::GetOptStringValue");
    VerifyKeyOpen();
    value.clear();
    COvByteBuffer data;
    DWORD dwType = 0;
    if (QueryValue(tzName, &dwType, data, QueryReadData) != ERROR_SUCCESS)
        return false;
    if (dwType != REG_SZ && dwType != REG_EXPAND_SZ)
        RaiseUnexpectedType(__LINE__, COvEvidence(L"tzName", tzName), L"REG_SZ or REG_EXPAND_SZ", dwType);
    DWORD nBytes = data.Size();
    if (nBytes >= 2 && data[nBytes - 1] == 0 && data[nBytes - 2] == 0)
        nBytes -= 2;
    value = OvUnpackUtf16(data.Data(), nBytes / 2);
    return true;
}

std::wstring COvRegKey::GetStringValue(const std::wstring& wzName)
{
    OV_SCOPE(L"COvRegKey::GetStringValue");
    std::wstring value;
    if (!GetOptStringValue(wzName, value))
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Win32 Error", static_cast<LONG>(ERROR_FILE_NOT_FOUND), true) +
                    COvEvidence(L"wzName", wzName));
    return value;
}

void COvRegKey::SetValue(const std::wstring& wszName, const std::wstring& value)
{
    OV_SCOPE(L"COvRegKey::SetValue");
    VerifyKeyOpen();
    const size_t nUnits = value.length() + 1;
    COvByteBuffer data;
    data.Resize(nUnits * 2);
    OvPackUtf16(value.c_str(), nUnits, data.Data());
    const LONG lResult = ::RegSetValueExW(m_hKey, wszName.c_str(), 0, REG_SZ, data.Data(), data.Size());
    if (lResult != ERROR_SUCCESS)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                CallFailed(L"::RegSetValueEx", lResult, m_hRoot) + COvEvidence(L"m_wzPath", m_wzPath) +
                    COvEvidence(L"wszName", wszName) + COvEvidence(L"Info Msg", L"REG_SZ"));
}

bool COvRegKey::ValueExists(const std::wstring& tzName, LONG nView)
{
    OV_SCOPE(L"COvRegKey::ValueExists");
    HKEY hRoot = nullptr;
    std::wstring wzKeyPath;
    std::wstring wzValueName;
    if (!Parse(tzName, &hRoot, &wzKeyPath, &wzValueName))
        OvRaise(OV_E_REGISTRY_NAME, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"Unable to parse Registry Value string") + COvEvidence(L"tzName", tzName));
    constexpr DWORD NO_PROCESS = 0;
    COvRegKey key(nView);
    DWORD dwType = 0;
    return key.OpenOpt(wzKeyPath, hRoot, KEY_READ, NO_PROCESS) && key.GetOptValueType(wzValueName, &dwType);
}

HKEY COvRegKey::Str2HKEY(const std::wstring& strHkey)
{
    OV_SCOPE(L"COvRegKey::Str2HKEY");
    const std::wstring wzUpper = COvStringUtil::ToUpper(strHkey);
    for (const CRootName& name : s_rootNames)
        if (wzUpper == name.m_szShort || wzUpper == name.m_szLong)
            return name.m_hKey;
    OvRaise(OV_E_REGISTRY_NAME, s_szSource, __LINE__,
            COvEvidence(L"Info Msg", L"Invalid HKEY string provided") + COvEvidence(L"strHkey", strHkey));
}

std::wstring COvRegKey::HKEY2Str(HKEY hKey)
{
    OV_SCOPE(L"COvRegKey::HKEY2Str");
    for (const CRootName& name : s_rootNames)
        if (hKey == name.m_hKey)
            return name.m_szShort;
    return std::wstring();
}

std::wstring COvRegKey::ValueType2Str(DWORD dwType)
{
    OV_SCOPE(L"COvRegKey::ValueType2Str");
    if (dwType > LAST_VALUE_TYPE)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"Failed to convert enum to string") +
                    COvEvidence(L"Enum", L"Registry Value Type") + COvEvidence(L"Value to convert", dwType));
    return L"( " + std::to_wstring(dwType) + L" )";
}

bool COvRegKey::Parse(const std::wstring& full, HKEY* phRoot, std::wstring* rest)
{
    OV_SCOPE(L"COvRegKey::Parse");
    const size_t nSplit = full.find(L'\\');
    if (nSplit == std::wstring::npos)
        return false;
    if (phRoot != nullptr)
        *phRoot = Str2HKEY(full.substr(0, nSplit));
    if (rest != nullptr)
        *rest = full.substr(nSplit + 1);
    return true;
}

bool COvRegKey::Parse(const std::wstring& full, HKEY* phRoot, std::wstring* keyPath, std::wstring* valueName)
{
    OV_SCOPE(L"COvRegKey::Parse");
    std::wstring wzRest;
    if (!Parse(full, phRoot, &wzRest))
        return false;
    const size_t nSplit = wzRest.rfind(L'\\');
    if (nSplit == std::wstring::npos)
        return false;
    if (keyPath != nullptr)
        *keyPath = wzRest.substr(0, nSplit);
    if (valueName != nullptr)
        *valueName = wzRest.substr(nSplit + 1);
    return true;
}

std::wstring COvRegKey::GetModifiedPath(HKEY* phRoot, const std::wstring& path, DWORD dwProcessId)
{
    OV_SCOPE(L"COvRegKey::GetModifiedPath");
    m_dwProcessId = dwProcessId;
    std::wstring wzResult = path;
    COvStringUtil::TrimLeft(wzResult, L'\\');
    if (*phRoot != HKEY_USERS || dwProcessId == 0)
        return wzResult;
    if (!COVOsVersion::GetCurrent().IsPlatform9xBased())
        return HiveOfProcess(dwProcessId) + L"\\" + wzResult;
    *phRoot = HKEY_CURRENT_USER;
    return wzResult;
}

DWORD COvRegKey::GetWOWDescriptor() const
{
    OV_SCOPE(L"COvRegKey::GetWOWDescriptor");
    const bool bHasViews = COVOsVersion::GetCurrent().GetFlavour() != OsWindows2000;
    return bHasViews ? GetViewFlag(m_nView, IsNative64BitProcess()) : 0;
}

DWORD COvRegKey::GetViewFlag(LONG nView, bool bNative64)
{
    if (nView == RegView64 && !bNative64)
        return KEY_WOW64_64KEY;
    if (nView == RegView32 && bNative64)
        return KEY_WOW64_32KEY;
    return 0;
}

DWORD COvRegKey::GetRegOption(int nOption)
{
    OV_SCOPE(L"COvRegKey::GetRegOption");
    return nOption == OPTION_VOLATILE ? REG_OPTION_VOLATILE : REG_OPTION_NON_VOLATILE;
}

void COvRegKey::SetOpened(HKEY hKey, HKEY hRoot, std::wstring&& wzPath, DWORD samDesired)
{
    m_hKey = hKey;
    m_hRoot = hRoot;
    m_wzPath = std::move(wzPath);
    m_samDesired = samDesired;
}

void COvRegKey::Query(const std::wstring& tzValNm, DWORD* pdwType, BYTE* pData, DWORD* pdwSize)
{
    const bool bReading = pData != nullptr;
    m_lLastError = ::RegQueryValueExW(m_hKey, tzValNm.c_str(), nullptr, pdwType, pData, pdwSize);
    if (m_lLastError == ERROR_SUCCESS || (m_lLastError == ERROR_FILE_NOT_FOUND && !bReading))
        return;
    OvRaise(E_FAIL, s_szSource, __LINE__,
            CallFailed(L"::RegQueryValueEx", m_lLastError, m_hRoot) + COvEvidence(L"m_wzPath", m_wzPath) +
                COvEvidence(L"tzValNm", tzValNm));
}

void COvRegKey::RaiseUnexpectedType(LONG nLine, const COvEvidence& name, const std::wstring& wzDesired,
                                    DWORD dwFound) const
{
    OvRaise(E_FAIL, s_szSource, nLine,
            COvEvidence(L"Info Msg", L"Unexpected value type") + COvEvidence(L"HKEY", HKEY2Str(m_hRoot)) +
                COvEvidence(L"m_wzPath", m_wzPath) + name + COvEvidence(L"Desired", wzDesired) +
                COvEvidence(L"Found", ValueType2Str(dwFound)));
}
