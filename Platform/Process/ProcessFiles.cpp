#include "Platform/Process/ProcessObject.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <memory>
#include <sstream>
#include <sys/types.h>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

/// The text behind "name:" and white space in a status file; empty when there is no such line.
std::string StatusField(const std::string& status, const char* szName)
{
    const std::string label = std::string("\n") + szName + ":";
    const size_t nLabel = ("\n" + status).find(label);
    if (nLabel == std::string::npos)
        return std::string();
    const size_t nValue = std::min(status.find_first_not_of(" \t", nLabel + label.size() - 1), status.size());
    return status.substr(nValue, status.find('\n', nValue) - nValue);
}

DWORD StatusNumber(const std::string& status, const char* szName)
{
    return static_cast<DWORD>(std::strtoul(StatusField(status, szName).c_str(), nullptr, 10));
}

/// One line of the list of mappings: "start-end permissions offset device inode path".
struct CMapping
{
    ULONG_PTR nStart = 0;
    ULONG_PTR nEnd = 0;
    std::string permissions;
    std::string path;
};

CMapping ParseMapping(const std::string& line)
{
    CMapping mapping;
    std::istringstream stream(line);
    char cDash;
    std::string ignored;
    stream >> std::hex >> mapping.nStart >> cDash >> mapping.nEnd >> mapping.permissions;
    stream >> ignored >> ignored >> ignored >> std::ws;
    std::getline(stream, mapping.path);
    return mapping;
}

void AddMapping(std::vector<CProcessModule>& modules, const CMapping& mapping)
{
    if (mapping.path.rfind('/', 0) != 0) // not of a file
        return;
    auto found = std::find_if(modules.begin(), modules.end(),
                              [&](const CProcessModule& module) { return module.path == mapping.path; });
    if (found == modules.end())
        found = modules.insert(found, { mapping.path, mapping.nStart, 0, false });
    found->nSize = mapping.nEnd - found->nBase;
    found->bCode = found->bCode || mapping.permissions.find('x') != std::string::npos;
}

/// 0: the executable, which comes first. Null when there is none at that address.
const CProcessModule* FindModule(const std::vector<CProcessModule>& modules, ULONG_PTR nBase)
{
    const auto found = std::find_if(modules.begin(), modules.end(),
                                    [&](const CProcessModule& module) { return nBase == 0 || module.nBase == nBase; });
    return found == modules.end() ? nullptr : &*found;
}

} // namespace

CProcessFiles::CProcessFiles(DWORD dwId)
    : m_dwId(dwId), m_nFolder(open(("/proc/" + std::to_string(dwId)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
}

CProcessFiles::~CProcessFiles()
{
    if (m_nFolder >= 0)
        close(m_nFolder);
}

std::string CProcessFiles::Read(const char* szName) const
{
    std::string content;
    const int nFile = openat(m_nFolder, szName, O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
        return content;
    std::array<char, 4096> block;
    ssize_t nRead;
    while ((nRead = read(nFile, block.data(), block.size())) > 0)
        content.append(block.data(), static_cast<size_t>(nRead));
    close(nFile);
    return content;
}

std::string CProcessFiles::ExecutablePath() const
{
    std::array<char, PATH_MAX> path;
    const ssize_t nLength = readlinkat(m_nFolder, "exe", path.data(), path.size());
    return nLength > 0 ? std::string(path.data(), static_cast<size_t>(nLength)) : std::string();
}

bool ReadStatus(const CProcessFiles& files, CProcessStatus& status)
{
    const std::string content = files.Read("status");
    if (content.empty())
        return false;
    status.name = StatusField(content, "Name");
    status.dwParent = StatusNumber(content, "PPid");
    status.dwThreads = StatusNumber(content, "Threads");
    unsigned nReal;
    std::istringstream(StatusField(content, "Uid")) >> nReal >> status.nUser;
    return true;
}

std::vector<CProcessModule> ReadModules(const CProcessFiles& files)
{
    std::vector<CProcessModule> modules; // in the order in which they are first met
    std::istringstream lines(files.Read("maps"));
    for (std::string line; std::getline(lines, line);)
        AddMapping(modules, ParseMapping(line));
    const auto isData = [](const CProcessModule& module) { return !module.bCode; };
    modules.erase(std::remove_if(modules.begin(), modules.end(), isData), modules.end());

    const std::string executable = files.ExecutablePath();
    const auto isExecutable = [&](const CProcessModule& module) { return module.path == executable; };
    const auto others = std::stable_partition(modules.begin(), modules.end(), isExecutable);
    return others == modules.begin() ? std::vector<CProcessModule>() : modules;
}

std::vector<DWORD> ProcessIds()
{
    std::vector<DWORD> ids;
    const std::unique_ptr<DIR, int (*)(DIR*)> pFolder(opendir("/proc"), &closedir);
    while (const dirent* pEntry = pFolder ? readdir(pFolder.get()) : nullptr)
        if (const unsigned long nId = std::strtoul(pEntry->d_name, nullptr, 10); nId != 0)
            ids.push_back(static_cast<DWORD>(nId));
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::string FileName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string ImageName(const CProcessFiles& files, const CProcessStatus& status)
{
    const std::string path = files.ExecutablePath();
    return path.empty() ? status.name : FileName(path);
}

std::vector<CProcessModule> CProcessObject::ListModules()
{
    std::vector<CProcessModule> modules = ReadModules(m_files);
    const std::lock_guard<std::mutex> lock(m_lock);
    m_modules = modules;
    return modules;
}

std::string CProcessObject::ModulePath(ULONG_PTR nBase)
{
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        if (const CProcessModule* const pModule = FindModule(m_modules, nBase))
            return pModule->path;
    }
    const std::vector<CProcessModule> modules = ListModules();
    const CProcessModule* const pModule = FindModule(modules, nBase);
    return pModule == nullptr ? std::string() : pModule->path;
}

} // namespace OvPlatform
