#include "Platform/Files.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/KernelObject.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Text/FileNames.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <unistd.h>
#include <vector>

namespace OvPlatform
{

namespace
{

constexpr DWORD FileReadAccess = 0x00120089; // reading data and attributes, READ_CONTROL, SYNCHRONIZE
constexpr CAccessMap FileAccess = { FileReadAccess, 0, 0, FileReadAccess };

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
        if (m_bOpen)
            Release(Sharing().find(m_id));
    }

    /// False when another handle does not allow it.
    bool Open()
    {
        const std::lock_guard<std::mutex> lock(SharingLock());
        CSharing& sharing = Sharing()[m_id];
        m_bOpen = sharing.nExclusive == 0 && (!m_bExclusive || sharing.nOpen == 0);
        sharing.nOpen += m_bOpen ? 1 : 0;
        sharing.nExclusive += m_bOpen && m_bExclusive ? 1 : 0;
        return m_bOpen;
    }

private:
    void Release(std::map<CFileId, CSharing>::iterator found)
    {
        found->second.nExclusive -= m_bExclusive ? 1 : 0;
        if (--found->second.nOpen == 0)
            Sharing().erase(found);
    }

    const CFileId m_id;
    const bool m_bExclusive;
    bool m_bOpen = false;
};

HANDLE Open(LPCWSTR szName, bool bExclusive)
{
    std::string path;
    CFileId id;
    const DWORD dwError = FindFile(szName, path, id);
    if (dwError != ERROR_SUCCESS)
        return Fail(dwError, INVALID_HANDLE_VALUE);
    const auto pFile = std::make_shared<CFile>(id, bExclusive);
    return pFile->Open() ? OpenHandle(pFile, GENERIC_READ) : Fail(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
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
    return OrNoMemory(INVALID_HANDLE_VALUE, [&] { return Open(szName, (dwShare & FILE_SHARE_READ) == 0); });
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
