#include "Files.h"

#include "FileNames.h"
#include "Guard.h"
#include "Handles.h"
#include "KernelObject.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace OvPlatform
{

namespace
{

constexpr DWORD FileReadAccess = 0x00120089; // reading data and attributes, READ_CONTROL, SYNCHRONIZE
constexpr CAccessMap FileAccess = { FileReadAccess, 0, 0, FileReadAccess };

/// A file, whatever its name is now.
using CFileId = std::pair<dev_t, ino_t>;

/// How often each open file is open in this process, and how often without FILE_SHARE_READ.
struct CSharing
{
    unsigned nOpen = 0;
    unsigned nExclusive = 0;
};

std::mutex& SharingLock()
{
    static std::mutex& s_lock = *new std::mutex;
    return s_lock;
}

std::map<CFileId, CSharing>& Sharing() // guarded by SharingLock; never destroyed
{
    static auto& s_sharing = *new std::map<CFileId, CSharing>;
    return s_sharing;
}

class CFile final : public CKernelObject
{
public:
    CFile(const CFileId& id, bool bExclusive) : CKernelObject(FileAccess), m_id(id), m_bExclusive(bExclusive) {}

    ~CFile() override
    {
        const std::lock_guard<std::mutex> lock(SharingLock());
        const auto found = Sharing().find(m_id);
        found->second.nExclusive -= m_bExclusive ? 1 : 0;
        if (--found->second.nOpen == 0)
            Sharing().erase(found);
    }

private:
    const CFileId m_id;
    const bool m_bExclusive;
};

/// Why a file that could not be looked at is not there: its folder is missing, or the file itself.
DWORD WhyMissing(const std::string& path, int nError)
{
    if (nError == EACCES || nError == EPERM)
        return ERROR_ACCESS_DENIED;
    if (nError != ENOENT)
        return ERROR_PATH_NOT_FOUND;
    const size_t nEnd = path.find_last_of('/');
    const std::string folder = nEnd == std::string::npos ? "." : path.substr(0, nEnd + 1);
    return ::access(folder.c_str(), F_OK) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

/// @return 0 and the file's identity, or the error.
DWORD Look(const std::string& path, CFileId& id)
{
    if (path.empty())
        return ERROR_BAD_NETPATH;
    struct stat data = {};
    if (::stat(path.c_str(), &data) != 0)
        return WhyMissing(path, errno);
    if (S_ISDIR(data.st_mode) || ::access(path.c_str(), R_OK) != 0)
        return ERROR_ACCESS_DENIED;
    id = { data.st_dev, data.st_ino };
    return ERROR_SUCCESS;
}

HANDLE Open(const std::string& path, bool bExclusive)
{
    CFileId id;
    const DWORD dwError = Look(path, id);
    if (dwError != ERROR_SUCCESS)
        return Fail(dwError, INVALID_HANDLE_VALUE);
    {
        const std::lock_guard<std::mutex> lock(SharingLock());
        CSharing& sharing = Sharing()[id];
        if (sharing.nExclusive > 0 || (bExclusive && sharing.nOpen > 0))
            return Fail(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
        ++sharing.nOpen;
        sharing.nExclusive += bExclusive ? 1 : 0;
    }
    return OpenHandle(std::make_shared<CFile>(id, bExclusive), GENERIC_READ);
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

HANDLE CreateFileW(LPCWSTR szName, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES, DWORD dwDisposition,
                   DWORD dwFlags, HANDLE hTemplate)
{
    const bool bKnownFlags = (dwFlags & ~(FILE_ATTRIBUTE_NORMAL | FILE_FLAG_NO_BUFFERING)) == 0;
    if (!szName || dwAccess != GENERIC_READ || dwDisposition != OPEN_EXISTING || !bKnownFlags || hTemplate)
        return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    if (*szName == L'\0')
        return Fail(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE);
    return OrNoMemory(INVALID_HANDLE_VALUE, [&] { return Open(HostPath(szName), (dwShare & FILE_SHARE_READ) == 0); });
}

DWORD GetCurrentDirectoryW(DWORD nUnits, LPWSTR szBuffer)
{
    return OrNoMemory<DWORD>(0, [&] {
        std::vector<char> path(256);
        while (::getcwd(path.data(), path.size()) == nullptr)
        {
            if (errno != ERANGE)
                return Fail<DWORD>(ERROR_PATH_NOT_FOUND, 0);
            path.resize(path.size() * 2);
        }
        const std::wstring name = PlatformPath(path.data());
        if (name.size() >= nUnits)
            return static_cast<DWORD>(name.size() + 1);
        std::copy(name.c_str(), name.c_str() + name.size() + 1, szBuffer);
        return static_cast<DWORD>(name.size());
    });
}
