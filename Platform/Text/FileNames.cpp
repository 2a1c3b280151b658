#include "Platform/Text/FileNames.h"

#include "Platform/Errors.h"
#include "Platform/Text/Text.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

constexpr std::wstring_view LongPrefix = L"\\\\?\\";
constexpr std::wstring_view LongNetworkPrefix = L"\\\\?\\UNC\\";

bool IsLetter(wchar_t c)
{
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

bool IsSeparator(wchar_t c)
{
    return c == L'\\' || c == L'/';
}

bool StartsWith(std::wstring_view name, std::wstring_view prefix)
{
    return name.substr(0, prefix.size()) == prefix;
}

/// Why a file that could not be looked at is not there: its folder is missing, or the file itself.
DWORD WhyMissing(const std::string& path, int nError)
{
    if (nError == EACCES)
        return ERROR_ACCESS_DENIED;
    if (nError != ENOENT)
        return ERROR_PATH_NOT_FOUND;
    const std::string folder = path.substr(0, path.find_last_of('/') + 1) + ".";
    return ::access(folder.c_str(), F_OK) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

} // namespace

DWORD ParseFileName(std::wstring_view name, std::string& path)
{
    const bool bLong = StartsWith(name, LongPrefix);
    const bool bOtherComputer =
        bLong ? StartsWith(name, LongNetworkPrefix) : name.size() > 1 && IsSeparator(name[0]) && IsSeparator(name[1]);
    if (bOtherComputer)
        return ERROR_BAD_NETPATH;
    if (bLong && name.find(L'/') != std::wstring_view::npos)
        return ERROR_INVALID_NAME;
    name.remove_prefix(bLong ? LongPrefix.size() : 0);
    if (name.size() > 1 && IsLetter(name[0]) && name[1] == L':')
        name.remove_prefix(2);
    path = Utf8FromWide(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path.empty() ? ERROR_PATH_NOT_FOUND : ERROR_SUCCESS;
}

std::string HostPath(std::wstring_view name)
{
    std::string path;
    return ParseFileName(name, path) == ERROR_SUCCESS ? path : std::string();
}

std::wstring PlatformPath(std::string_view path)
{
    std::wstring name = L"Z:" + WideFromUtf8(path);
    std::replace(name.begin(), name.end(), L'/', L'\\');
    return name;
}

DWORD FindFile(std::wstring_view name, std::string& path, CFileId& id)
{
    const DWORD dwError = ParseFileName(name, path);
    if (dwError != ERROR_SUCCESS)
        return dwError;
    struct stat data = {};
    if (::stat(path.c_str(), &data) != 0)
        return WhyMissing(path, errno);
    if (!S_ISREG(data.st_mode) || ::access(path.c_str(), R_OK) != 0)
        return ERROR_ACCESS_DENIED;
    id = { data.st_dev, data.st_ino };
    return ERROR_SUCCESS;
}

} // namespace OvPlatform
