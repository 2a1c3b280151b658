#include "ovCore/OvOsRecord.h"

#include "ovCore/OvDynamicLib.h"
#include "ovCore/OvException.h"
#include "ovCore/OvFile.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvVersionResource.h"
#include "OvUtf16.h"

#include <cwchar>
#include <iterator>
#include <vector>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OVOsVersion";
const wchar_t s_szVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
const wchar_t s_szProductKey[] = L"System\\CurrentControlSet\\Control\\ProductOptions";
const wchar_t s_szTerminalKey[] = L"System\\CurrentControlSet\\Control\\Terminal Server";
const wchar_t s_szHotfixKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009";

/// A key of the local machine, open for reading while this lives, if it exists.
class CMachineKey
{
public:
    explicit CMachineKey(const wchar_t* szPath)
    {
        if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, szPath, 0, KEY_READ, &m_hKey) != ERROR_SUCCESS)
            m_hKey = nullptr;
    }
    ~CMachineKey()
    {
        if (m_hKey != nullptr)
            ::RegCloseKey(m_hKey);
    }
    CMachineKey(const CMachineKey&) = delete;
    CMachineKey& operator=(const CMachineKey&) = delete;

    bool Exists() const { return m_hKey != nullptr; }

    /// The value's bytes; empty without one of that type.
    std::vector<BYTE> Read(const wchar_t* szName, DWORD dwWanted) const
    {
        DWORD dwType = 0;
        DWORD dwSize = 0;
        if (m_hKey == nullptr ||
            ::RegQueryValueExW(m_hKey, szName, nullptr, &dwType, nullptr, &dwSize) != ERROR_SUCCESS ||
            dwType != dwWanted)
            return {};
        std::vector<BYTE> data(dwSize);
        if (::RegQueryValueExW(m_hKey, szName, nullptr, &dwType, data.data(), &dwSize) != ERROR_SUCCESS ||
            dwType != dwWanted)
            return {};
        data.resize(dwSize);
        return data;
    }

private:
    HKEY m_hKey = nullptr;
};

/// A text of the type, with the zeros that end it or its parts; empty without one.
std::wstring ReadUnits(const wchar_t* szKey, const wchar_t* szName, DWORD dwType)
{
    const std::vector<BYTE> data = CMachineKey(szKey).Read(szName, dwType);
    return OvUnpackUtf16(data.data(), data.size() / 2);
}

std::wstring ReadText(const wchar_t* szKey, const wchar_t* szName)
{
    return ReadUnits(szKey, szName, REG_SZ).c_str(); // up to the zero
}

DWORD ReadNumber(const wchar_t* szKey, const wchar_t* szName)
{
    const std::vector<BYTE> data = CMachineKey(szKey).Read(szName, REG_DWORD);
    DWORD dwValue = 0;
    for (size_t i = 0; i < data.size() && i < sizeof(dwValue); ++i)
        dwValue |= static_cast<DWORD>(data[i]) << (8 * i);
    return dwValue;
}

/// The number at the end of "Service Pack 6".
WORD NumberAtEnd(const wchar_t* szText)
{
    const std::wstring strText(szText);
    const size_t nDigits = strText.find_last_not_of(L"0123456789") + 1; // 0 where every character is a digit
    return static_cast<WORD>(std::wcstoul(strText.c_str() + nDigits, nullptr, 10));
}

void TakeReported(const OSVERSIONINFOW& info, COvOsRecord& record)
{
    record.dwPlatform = info.dwPlatformId;
    record.reported = { info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber };
    if (info.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS)
        record.reported.dwBuild = LOWORD(info.dwBuildNumber); // the version stands above it once more
}

/// The facts of the plain structure's time: those of the extended one were in the registry.
void ReadPlainFacts(const OSVERSIONINFOW& info, COvOsRecord& record)
{
    static const struct
    {
        const wchar_t* szName;
        LONG lType;
    } s_types[] = { { L"WINNT", VER_NT_WORKSTATION },
                    { L"LANMANNT", VER_NT_DOMAIN_CONTROLLER },
                    { L"SERVERNT", VER_NT_SERVER } };
    static const struct
    {
        const wchar_t* szName;
        WORD wSuite;
    } s_suites[] = { { L"Enterprise", VER_SUITE_ENTERPRISE },    { L"DataCenter", VER_SUITE_DATACENTER },
                     { L"Terminal Server", VER_SUITE_TERMINAL }, { L"EmbeddedNT", VER_SUITE_EMBEDDEDNT },
                     { L"Personal", VER_SUITE_PERSONAL },        { L"Blade", VER_SUITE_BLADE } };
    const std::wstring strType = ReadText(s_szProductKey, L"ProductType");
    for (const auto& type : s_types)
        if (strType == type.szName)
            record.lProductType = type.lType;
    const std::wstring strSuites = L'\0' + ReadUnits(s_szProductKey, L"ProductSuite", REG_MULTI_SZ) + L'\0';
    for (const auto& suite : s_suites)
        if (strSuites.find(L'\0' + std::wstring(suite.szName) + L'\0') != std::wstring::npos)
            record.wSuite |= suite.wSuite;
    record.wServicePackMajor = NumberAtEnd(info.szCSDVersion);
    if (record.wServicePackMajor == 6 && CMachineKey(s_szHotfixKey).Exists())
        record.wServicePackMinor = 1; // what people call 6a
}

/// The version that the process is told. @return false when there is none.
bool ReadReported(COvOsRecord& record)
{
    OSVERSIONINFOEXW info = {};
    OSVERSIONINFOW& plain = reinterpret_cast<OSVERSIONINFOW&>(info); // the extended structure begins with it
    info.dwOSVersionInfoSize = sizeof(info);
    if (::GetVersionExW(&plain))
    {
        TakeReported(plain, record);
        record.wServicePackMajor = info.wServicePackMajor;
        record.wServicePackMinor = info.wServicePackMinor;
        record.wSuite = info.wSuiteMask;
        record.lProductType = info.wProductType;
        return true;
    }
    info.dwOSVersionInfoSize = sizeof(plain);
    if (!::GetVersionExW(&plain))
        return false;
    TakeReported(plain, record);
    ReadPlainFacts(plain, record);
    return true;
}

/// The version that no compatibility mode changes. @return false where the system has no such call.
bool ReadActual(COvOsNumber& actual)
{
    COvDynamicLib ntdll;
    ntdll.Init(L"NTDLL.DLL", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, false);
    const auto pRtlGetVersion = ntdll.GetProc<LONG WINAPI(OSVERSIONINFOW*)>(L"RtlGetVersion", false);
    OSVERSIONINFOW info = {};
    info.dwOSVersionInfoSize = sizeof(info);
    if (pRtlGetVersion == nullptr || pRtlGetVersion(&info) < 0)
        return false;
    actual = { info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber };
    return true;
}

/// The version of the hardware layer's file, which is the system's own.
bool ReadHalVersion(COvOsNumber& version)
{
    std::wstring strFolder;
    COvFile::GetFileNameParts(COvFile::GetModuleFileNameW(L"kernel32.dll"), &strFolder, nullptr, nullptr, nullptr);
    COvVersionResource resource;
    const bool bOpened = resource.Open(strFolder + L"\\HAL.DLL");
    const VS_FIXEDFILEINFO* const pInfo = bOpened ? resource.FixedInfoOpt() : nullptr;
    if (pInfo == nullptr)
        return false;
    version = { HIWORD(pInfo->dwFileVersionMS), LOWORD(pInfo->dwFileVersionMS), HIWORD(pInfo->dwFileVersionLS) };
    return true;
}

/// What runs, as far as it can be told where the system itself does not tell it.
COvOsNumber GuessActual(const COvOsRecord& record)
{
    COvOsNumber actual = record.reported;
    const bool bMayBeLater = actual.dwMajor == 6 && actual.dwMinor == 3; // all that an old program is ever told
    if (bMayBeLater && ReadHalVersion(actual))
        return actual;
    const std::wstring strBuild = ReadText(s_szVersionKey, L"CurrentBuildNumber");
    if (record.dwPlatform == VER_PLATFORM_WIN32_NT && !strBuild.empty())
        actual.dwBuild = static_cast<DWORD>(std::wcstoul(strBuild.c_str(), nullptr, 10));
    return actual;
}

void ReadVersion(COvOsRecord& record)
{
    const bool bReported = ReadReported(record);
    const bool bActual = ReadActual(record.actual);
    if (!bReported && !bActual)
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Info Msg", L"Failed Loading OS version information"));
    if (!bActual)
        record.actual = GuessActual(record);
    if (!bReported)
    {
        record.dwPlatform = VER_PLATFORM_WIN32_NT; // no other has the call
        record.reported = record.actual;
    }
}

void ReadFromKernel(COvOsRecord& record)
{
    COvDynamicLib kernel;
    kernel.Init(L"kernel32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, false);
    SYSTEM_INFO info = {};
    if (const auto pGetNative = kernel.GetProc<void WINAPI(SYSTEM_INFO*)>(L"GetNativeSystemInfo", false))
        pGetNative(&info);
    else
        ::GetSystemInfo(&info);
    record.wArchitecture = info.wProcessorArchitecture;
    const auto pGetProductInfo =
        kernel.GetProc<BOOL WINAPI(DWORD, DWORD, DWORD, DWORD, DWORD*)>(L"GetProductInfo", false);
    if (pGetProductInfo != nullptr)
        pGetProductInfo(record.actual.dwMajor, record.actual.dwMinor, record.wServicePackMajor,
                        record.wServicePackMinor, &record.dwProductInfo);
}

void ReadEdition(COvOsRecord& record)
{
    record.strEdition = ReadText(s_szVersionKey, L"EditionID");
    record.strBuildType = ReadText(s_szVersionKey, L"CurrentType");
    record.bTerminalServer = ReadNumber(s_szTerminalKey, L"TSAppCompat") != 0;
    record.bMediaCenter = ReadNumber(L"System\\WPA\\MediaCenter", L"Installed") != 0;
    record.bTabletPc = ReadNumber(L"System\\WPA\\TabletPC", L"Installed") != 0;
    record.bServerR2 = ::GetSystemMetrics(SM_SERVERR2) != 0;
}

} // namespace

COvOsRecord OvReadOsRecord()
{
    COvOsRecord record;
    ReadVersion(record);
    ReadFromKernel(record);
    ReadEdition(record);
    return record;
}
