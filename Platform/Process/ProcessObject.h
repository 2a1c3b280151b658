// The kernel objects of processes, and what the host system tells of a process.
#pragma once

#include "Platform/Kernel/KernelObject.h"

#include <string>
#include <vector>

namespace OvPlatform
{

/// The host system's files about one process. They stay that process's when its id is used again.
class CProcessFiles
{
public:
    explicit CProcessFiles(DWORD dwId);
    ~CProcessFiles();
    CProcessFiles(const CProcessFiles&) = delete;
    CProcessFiles& operator=(const CProcessFiles&) = delete;

    /// Whether there was a process of that id.
    bool Exist() const { return m_nFolder >= 0; }

    DWORD Id() const { return m_dwId; }

    /// A file's whole content; empty when it cannot be read or the process has ended.
    std::string Read(const char* szName) const;

    /// The executable's path; empty for a process without one, or when it may not be known.
    std::string ExecutablePath() const;

private:
    const DWORD m_dwId;
    const int m_nFolder; // a file descriptor; -1 for no process
};

/// What the host system tells of every process.
struct CProcessStatus
{
    std::string name; ///< at most its first 15 bytes
    DWORD dwParent = 0;
    DWORD dwThreads = 0;
    unsigned nUser = 0; ///< the effective user's number
};

/// False when the process has ended.
bool ReadStatus(const CProcessFiles& files, CProcessStatus& status);

/// The ids of all processes, the smallest first.
std::vector<DWORD> ProcessIds();

std::string FileName(const std::string& path);

/// The executable's file name, or what the host system calls a process without one.
std::string ImageName(const CProcessFiles& files, const CProcessStatus& status);

/// A file that a process has mapped.
struct CProcessModule
{
    std::string path;
    ULONG_PTR nBase;
    size_t nSize;
    bool bCode; ///< some of it may be executed
};

/// Those that hold code, the executable first; empty when the process has none or they may not be known.
std::vector<CProcessModule> ReadModules(const CProcessFiles& files);

/// What a handle of a process stands for, the current process's among them.
class CProcessObject
{
public:
    explicit CProcessObject(DWORD dwId) : m_files(dwId) {}
    virtual ~CProcessObject() = default;
    const CProcessFiles& Files() const { return m_files; }

    /// The modules as they are now. They are remembered, so that who lists them can ask for their paths although the
    /// process has ended in between.
    std::vector<CProcessModule> ListModules();

    /// The path of a module; 0: the executable's. Empty for what is no module.
    std::string ModulePath(ULONG_PTR nBase);

private:
    const CProcessFiles m_files;
    std::mutex m_lock;
    std::vector<CProcessModule> m_modules; // as listed last; guarded by m_lock
};

/// What the current process's pseudo-handle stands for.
const CHandleEntry& CurrentProcessEntry();

} // namespace OvPlatform
