#include "SystemFacts.h"

#include "OvPlatform.h"
#include "Wine.h"

namespace
{

std::string Narrow(const std::wstring& wzText)
{
    std::string text(3 * wzText.size() + 1, '\0');
    text.resize(static_cast<size_t>(::WideCharToMultiByte(CP_UTF8, 0, wzText.data(), static_cast<int>(wzText.size()),
                                                          &text[0], static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

using AnyFunction = void (*)();

template <class Function>
Function* Find(const wchar_t* szLibrary, const char* szFunction)
{
    return reinterpret_cast<Function*>(
        reinterpret_cast<AnyFunction>(::GetProcAddress(::GetModuleHandleW(szLibrary), szFunction)));
}

std::string SystemVersion()
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    const auto pRtlGetVersion = Find<LONG WINAPI(OSVERSIONINFOW*)>(L"ntdll.dll", "RtlGetVersion");
    if (pRtlGetVersion != nullptr)
        pRtlGetVersion(&version);
    return std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
           std::to_string(version.dwBuildNumber) + " " + Narrow(version.szCSDVersion);
}

std::string Architecture()
{
    SYSTEM_INFO info = {};
    ::GetNativeSystemInfo(&info);
    BOOL bWow64 = FALSE;
    ::IsWow64Process(::GetCurrentProcess(), &bWow64);
    return std::to_string(info.wProcessorArchitecture) + (bWow64 ? ", 32-bit program on a 64-bit system" : "");
}

bool IsElevated()
{
    HANDLE hToken = nullptr;
    TOKEN_ELEVATION elevation = {};
    DWORD dwBytes = 0;
    ::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &hToken);
    ::GetTokenInformation(hToken, TokenElevation, &elevation, sizeof(elevation), &dwBytes);
    ::CloseHandle(hToken);
    return elevation.TokenIsElevated != 0;
}

std::string Folder()
{
    wchar_t szFolder[1024] = {};
    return Narrow(std::wstring(szFolder, ::GetCurrentDirectoryW(1024, szFolder)));
}

void DescribeKey(HKEY hParent, const std::wstring& wzName, REGSAM samView, std::string& text)
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(hParent, wzName.c_str(), 0, KEY_READ | samView, &hKey) != ERROR_SUCCESS)
        return;
    FILETIME written = {};
    ::RegQueryInfoKeyW(hKey, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                       &written);
    text += Narrow(wzName) + " " + std::to_string(written.dwHighDateTime) + "-" +
            std::to_string(written.dwLowDateTime) + "(";
    wchar_t szBelow[256] = {};
    DWORD dwUnits = 256;
    for (DWORD n = 0; ::RegEnumKeyExW(hKey, n, szBelow, &dwUnits, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++n, dwUnits = 256)
        DescribeKey(hKey, szBelow, samView, text);
    text += ")";
    ::RegCloseKey(hKey);
}

} // namespace

CFacts ReadSystemFacts()
{
    return { { "system", std::string(IsWine() ? "Wine as " : "") + "Windows " + SystemVersion() },
             { "processor architecture", Architecture() },
             { "ANSI code page", std::to_string(::GetACP()) },
             { "language", std::to_string(::GetUserDefaultUILanguage()) },
             { "elevated", IsElevated() ? "yes" : "no" },
             { "folder", Folder() },
             { "HKEY_LOCAL_MACHINE\\SOFTWARE\\Trevok", DescribeMachineKeys().empty() ? "not there" : "there" },
             { "patch service", IsServiceThere() ? "there" : "not there" } };
}

bool IsServiceThere()
{
    const HANDLE hEvent = ::OpenEventW(SYNCHRONIZE, FALSE, L"Global\\_HDQ_EVENT_03_");
    const DWORD dwError = hEvent == nullptr ? ::GetLastError() : ERROR_SUCCESS;
    if (hEvent != nullptr)
        ::CloseHandle(hEvent);
    return dwError != ERROR_FILE_NOT_FOUND;
}

std::string DescribeMachineKeys()
{
    std::string text;
    for (const REGSAM samView : { KEY_WOW64_32KEY, KEY_WOW64_64KEY })
        DescribeKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Trevok", samView, text);
    return text;
}
