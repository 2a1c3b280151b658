#include "PatchHost/PolicyRevision.h"

#include "OvPlatform.h"
#include "PatchHost/Options.h"
#include "PatchHost/Text.h"

#include <vector>

namespace
{

const wchar_t s_szKey[] = L"SOFTWARE\\Trevok\\Trevok Patch Agent";
const wchar_t s_szName[] = L"PolicyRevId";

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

std::vector<BYTE> BytesFromText(const std::wstring& text)
{
    std::vector<BYTE> bytes;
    for (const wchar_t unit : text + L'\0')
    {
        bytes.push_back(static_cast<BYTE>(unit & 0xFF));
        bytes.push_back(static_cast<BYTE>(unit >> 8 & 0xFF));
    }
    return bytes;
}

[[noreturn]] void Fail(const char* szWhat, LONG lResult)
{
    throw CCommandError(ExitFailed, std::string("the stored revision cannot be ") + szWhat + ": " +
                                        SystemText(static_cast<DWORD>(lResult)));
}

/// Nothing, when the key or its value is not there; any other failure is one.
std::nullopt_t NoneUnless(LONG lResult)
{
    if (lResult != ERROR_FILE_NOT_FOUND)
        Fail("read", lResult);
    return std::nullopt;
}

} // namespace

std::optional<std::string> ReadPolicyRevision()
{
    HKEY hKey = nullptr;
    LONG lResult = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, KEY_READ | KEY_WOW64_64KEY, &hKey);
    if (lResult != ERROR_SUCCESS)
        return NoneUnless(lResult);
    DWORD nSize = 0;
    lResult = ::RegQueryValueExW(hKey, s_szName, nullptr, nullptr, nullptr, &nSize);
    std::vector<BYTE> bytes(nSize);
    if (lResult == ERROR_SUCCESS && nSize > 0)
        lResult = ::RegQueryValueExW(hKey, s_szName, nullptr, nullptr, bytes.data(), &nSize);
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        return NoneUnless(lResult);
    return WideToUtf8(TextFromBytes(bytes));
}

std::string PolicyRevisionText()
{
    try
    {
        return ReadPolicyRevision().value_or("");
    }
    catch (const CCommandError& e)
    {
        return e.what();
    }
}

void WritePolicyRevision(const std::string& revision)
{
    HKEY hKey = nullptr;
    LONG lResult = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                     KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &hKey, nullptr);
    if (lResult != ERROR_SUCCESS)
        Fail("written", lResult);
    const std::vector<BYTE> bytes = BytesFromText(Utf8ToWide(revision));
    lResult = ::RegSetValueExW(hKey, s_szName, 0, REG_SZ, bytes.data(), static_cast<DWORD>(bytes.size()));
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        Fail("written", lResult);
}
