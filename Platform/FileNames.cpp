#include "FileNames.h"

#include "Text.h"

#include <algorithm>

namespace OvPlatform
{

namespace
{

constexpr std::wstring_view LongPrefix = L"\\\\?\\";

bool IsLetter(wchar_t c)
{
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

bool IsSeparator(wchar_t c)
{
    return c == L'\\' || c == L'/';
}

} // namespace

std::string HostPath(std::wstring_view name)
{
    const bool bLong = name.substr(0, LongPrefix.size()) == LongPrefix;
    if (bLong)
        name.remove_prefix(LongPrefix.size());
    else if (name.size() > 1 && IsSeparator(name[0]) && IsSeparator(name[1]))
        return std::string();
    if (name.size() > 1 && IsLetter(name[0]) && name[1] == L':')
        name.remove_prefix(2);
    std::string path = Utf8FromWide(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::wstring PlatformPath(std::string_view path)
{
    std::wstring name = L"Z:" + WideFromUtf8(path);
    std::replace(name.begin(), name.end(), L'/', L'\\');
    return name;
}

} // namespace OvPlatform
