#include "RevisionRecord.h"

#include "OvPlatform.h"

#include <gtest/gtest.h>

namespace
{

const wchar_t s_szPath[] = L"SOFTWARE\\Trevok\\Trevok Patch Agent";
const wchar_t s_szName[] = L"PolicyRevId";

} // namespace

std::optional<std::wstring> StoredRevision()
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_READ | KEY_WOW64_64KEY, &hKey) != ERROR_SUCCESS)
        return std::nullopt;
    BYTE data[1024] = {};
    DWORD dwSize = sizeof data;
    DWORD dwType = 0;
    const LONG lResult = ::RegQueryValueExW(hKey, s_szName, nullptr, &dwType, data, &dwSize);
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        return std::nullopt;
    EXPECT_EQ(DWORD{ REG_SZ }, dwType);
    std::wstring wzText; // registry data is packed UTF-16, whatever the width of wchar_t is
    for (DWORD i = 0; i + 1 < dwSize && (data[i] != 0 || data[i + 1] != 0); i += 2)
        wzText += static_cast<wchar_t>(data[i] | data[i + 1] << 8);
    return wzText;
}

void StoreRevision(const std::optional<std::wstring>& wzRevId)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, nullptr, 0,
                                               KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &hKey, nullptr));
    if (wzRevId)
    {
        std::string data;
        for (const wchar_t c : *wzRevId + L'\0')
        {
            data += static_cast<char>(c & 0xFF);
            data += static_cast<char>(c >> 8 & 0xFF);
        }
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetValueExW(hKey, s_szName, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.data()),
                                                  static_cast<DWORD>(data.size())));
    }
    else
        ::RegDeleteValueW(hKey, s_szName);
    ::RegCloseKey(hKey);
}

void RemoveRevisionKey()
{
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szPath, KEY_WOW64_64KEY, 0);
}
