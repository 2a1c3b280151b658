#include "PolicyRevision.h"

#include "OvPlatform.h"
#include "Text.h"

#include <vector>

namespace
{

/// Registry text: UTF-16, low byte first, with or without the NUL that ends it.
std::wstring TextFromBytes(const std::vector<BYTE>& bytes)
{
    std::wstring text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        text += static_cast<wchar_t>(bytes[i] | bytes[i + 1] << 8);
    if (!text.empty() && text.back() == L'\0')
        text.pop_back();
    return text;
}

} // namespace

std::optional<std::string> ReadPolicyRevision()
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Trevok\\Trevok Patch Agent", 0, KEY_READ | KEY_WOW64_64KEY,
                        &hKey) != ERROR_SUCCESS)
        return std::nullopt;
    DWORD nSize = 0;
    LONG lResult = ::RegQueryValueExW(hKey, L"PolicyRevId", nullptr, nullptr, nullptr, &nSize);
    std::vector<BYTE> bytes(nSize);
    if (lResult == ERROR_SUCCESS && nSize > 0)
        lResult = ::RegQueryValueExW(hKey, L"PolicyRevId", nullptr, nullptr, bytes.data(), &nSize);
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        return std::nullopt;
    return WideToUtf8(TextFromBytes(bytes));
}
