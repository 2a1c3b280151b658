#include "Platform/Registry/Path.h"

#include "Platform/Process/UserSid.h"
#include "Platform/Registry/Database.h"

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

constexpr size_t MaxKeyName = 255;
constexpr wchar_t RedirectedName[] = L"Wow6432Node";

CKeyPath Software()
{
    return { L"HKEY_LOCAL_MACHINE", L"SOFTWARE" };
}

CKeyPath Below(CKeyPath path, const wchar_t* szSubKey)
{
    const CKeyPath names = SplitSubKey(szSubKey);
    path.insert(path.end(), names.begin(), names.end());
    return path;
}

bool SameName(const std::wstring& a, const std::wstring& b)
{
    return FoldName(a) == FoldName(b);
}

/// Whether the path is the start or goes on from it.
bool StartsWith(const CKeyPath& path, const CKeyPath& start)
{
    return path.size() >= start.size() && std::equal(start.begin(), start.end(), path.begin(), SameName);
}

/// The letter's capital, where that one's small letter is the letter again: how the platform's table has it.
wchar_t Capital(wchar_t c)
{
    static const locale_t s_locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (!s_locale)
        return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    const wint_t nCapital = towupper_l(static_cast<wint_t>(c), s_locale);
    return towlower_l(nCapital, s_locale) == static_cast<wint_t>(c) ? static_cast<wchar_t>(nCapital) : c;
}

} // namespace

std::wstring FoldName(const std::wstring& name)
{
    std::wstring folded = name;
    std::transform(folded.begin(), folded.end(), folded.begin(), Capital);
    return folded;
}

CKeyPath PredefinedPath(HKEY hKey)
{
    if (hKey == HKEY_LOCAL_MACHINE)
        return { L"HKEY_LOCAL_MACHINE" };
    if (hKey == HKEY_USERS)
        return { L"HKEY_USERS" };
    if (hKey == HKEY_CURRENT_USER)
        return { L"HKEY_USERS", UserSidText(geteuid()) };
    if (hKey == HKEY_CLASSES_ROOT)
        return Below(Software(), L"Classes");
    if (hKey == HKEY_CURRENT_CONFIG)
        return Below({ L"HKEY_LOCAL_MACHINE" }, L"SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current");
    return {};
}

CKeyPath SplitSubKey(const wchar_t* szSubKey)
{
    const std::wstring text = szSubKey ? szSubKey : L"";
    if (!text.empty() && text[0] == L'\\')
        throw CRegistryError{ ERROR_BAD_PATHNAME };
    CKeyPath names;
    for (size_t nStart = 0; nStart < text.size();)
    {
        const size_t nEnd = std::min(text.find(L'\\', nStart), text.size());
        if (nEnd - nStart > MaxKeyName)
            throw CRegistryError{ ERROR_INVALID_PARAMETER };
        if (nEnd != nStart)
            names.push_back(text.substr(nStart, nEnd - nStart));
        nStart = nEnd + 1;
    }
    return names;
}

CKeyPath RedirectTo32(const CKeyPath& path)
{
    const CKeyPath software = Software();
    if (!StartsWith(path, software) || StartsWith(path, Below(software, RedirectedName)))
        return path;
    CKeyPath redirected = path;
    redirected.insert(redirected.begin() + static_cast<CKeyPath::difference_type>(software.size()), RedirectedName);
    return redirected;
}

std::vector<CKeyPath> FixedKeys()
{
    return { PredefinedPath(HKEY_CLASSES_ROOT), Below(Software(), RedirectedName), PredefinedPath(HKEY_CURRENT_CONFIG),
             PredefinedPath(HKEY_CURRENT_USER), Below(PredefinedPath(HKEY_USERS), L".DEFAULT") };
}

bool IsFixedKey(const CKeyPath& path)
{
    const std::vector<CKeyPath> fixed = FixedKeys();
    return std::any_of(fixed.begin(), fixed.end(), [&](const CKeyPath& key) { return StartsWith(key, path); });
}

} // namespace OvPlatform
