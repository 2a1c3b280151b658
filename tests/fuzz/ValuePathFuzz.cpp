// Any text as the full path of a registry value and as a file's name: taken apart at its backslashes, and put together
// again; a value that is made below a path is found by that path.
#include "Fuzz.h"
#include "ovCore/OvException.h"
#include "ovCore/OvFile.h"
#include "ovCore/OvRegKey.h"

#include <algorithm>
#include <optional>

namespace
{

/// The operation's result; none when it raised.
template <class Operation>
auto Try(Operation&& operation) -> std::optional<decltype(operation())>
{
    try
    {
        return operation();
    }
    catch (const COvException&)
    {
        return std::nullopt;
    }
}

bool IsRoot(std::string name)
{
    static const char* const s_names[] = { "HKLM",
                                           "HKCU",
                                           "HKCR",
                                           "HKCC",
                                           "HKU",
                                           "HKDD",
                                           "HKEY_LOCAL_MACHINE",
                                           "HKEY_CURRENT_USER",
                                           "HKEY_CLASSES_ROOT",
                                           "HKEY_CURRENT_CONFIG",
                                           "HKEY_USERS",
                                           "HKEY_DYN_DATA" };
    for (char& c : name)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return std::find(std::begin(s_names), std::end(s_names), name) != std::end(s_names);
}

/// Makes the value, looks for it, and takes the keys away again.
void DemandFound(const std::wstring& strFull, const std::wstring& strKey, const std::wstring& strValue)
{
    const std::wstring strMade = strKey.substr(std::min(strKey.find_first_not_of(L'\\'), strKey.size()));
    HKEY hKey = nullptr;
    if (strMade.empty() || ::RegCreateKeyExW(HKEY_CURRENT_USER, strMade.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                             &hKey, nullptr) != ERROR_SUCCESS)
        return; // no name for a key
    const BYTE data[] = { 0, 0 };
    const LONG lResult = ::RegSetValueExW(hKey, strValue.c_str(), 0, REG_SZ, data, sizeof data);
    ::RegCloseKey(hKey);
    if (lResult == ERROR_SUCCESS)
        Demand(COvRegKey::ValueExists(strFull, RegView64), "a value is found by its full path");
    ::RegDeleteTreeW(HKEY_CURRENT_USER, strMade.substr(0, strMade.find(L'\\')).c_str());
    Demand(!COvRegKey::ValueExists(strFull, RegView64), "and is not found any more");
}

void DemandParsed(const std::string& text)
{
    const std::wstring strFull(text.begin(), text.end());
    HKEY hRoot = nullptr;
    std::wstring strKey;
    std::wstring strValue;
    const auto parsed = Try([&] { return COvRegKey::Parse(strFull, &hRoot, &strKey, &strValue); });
    const size_t nFirst = text.find('\\');
    const bool bRoot = nFirst != std::string::npos && IsRoot(text.substr(0, nFirst));
    Demand(parsed.has_value() == (bRoot || nFirst == std::string::npos), "an unknown root raises");
    Demand(parsed.value_or(false) == (bRoot && text.find('\\', nFirst + 1) != std::string::npos),
           "there are three parts");
    if (!parsed.value_or(false))
        return;
    Demand(strFull == strFull.substr(0, nFirst) + L"\\" + strKey + L"\\" + strValue, "the parts make up the path");
    Demand(strValue.find(L'\\') == std::wstring::npos, "the value's name is the last part");
    if (hRoot == HKEY_CURRENT_USER)
        DemandFound(strFull, strKey, strValue);
}

void DemandFileName(const std::wstring& strPath)
{
    std::wstring strFolder, strBase, strExtension, strFile;
    COvFile::GetFileNameParts(strPath, &strFolder, &strBase, &strExtension, &strFile);
    const bool bFolder = strPath.find(L'\\') != std::wstring::npos;
    Demand(strPath == (bFolder ? strFolder + L"\\" : L"") + strFile, "folder and file make up the path");
    const bool bDot = strFile.find(L'.') != std::wstring::npos;
    Demand(strFile == strBase + (bDot ? L"." : L"") + strExtension, "base name and extension make up the file");

    const bool bUnc = strPath.compare(0, 2, L"\\\\") == 0;
    const auto unicode = Try([&] { return COvFile::MakeUnicodeName(strPath); });
    Demand(unicode.has_value() == (!bUnc || strPath.find(L'\\', 2) != std::wstring::npos), "a server needs a share");
    const std::wstring strPrefix = bUnc ? L"\\\\?\\UNC" : strPath.find(L":\\") == 1 ? L"\\\\?\\" : L"";
    Demand(unicode.value_or(L"") == (unicode ? strPrefix + strPath.substr(bUnc ? 1 : 0) : L""),
           "a long name is prefixed");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    std::string text(reinterpret_cast<const char*>(pData), nSize);
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c <= 0; }), text.end());
    DemandParsed(text);
    DemandFileName(std::wstring(text.begin(), text.end()));
    return 0;
}
