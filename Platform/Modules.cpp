#include "Platform/Modules.h"

#include "Platform/Kernel/LastError.h"
#include "Platform/Process/ProcessList.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Process/SystemCalls.h"
#include "Platform/Text/FileNames.h"
#include "Platform/Text/Text.h"
#include "Platform/VersionData.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <iterator>
#include <link.h>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace OvPlatform
{

namespace
{

template <class Function>
FARPROC Address(Function* pFunction)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(pFunction)); // its type is the caller's business
}

struct CSystemFunction
{
    const char* szName;
    FARPROC pAddress;
};

/// A library of the system: there without a file. Its handle is the address of its row.
struct CSystemLibrary
{
    const wchar_t* szName;
    std::vector<CSystemFunction> functions;
};

const std::vector<CSystemLibrary>& SystemLibraries()
{
    static const auto& s_libraries = *new std::vector<CSystemLibrary>{
        { L"kernel32.dll",
          { { "CreateToolhelp32Snapshot", Address(&CreateToolhelp32Snapshot) },
            { "GetNativeSystemInfo", Address(&GetNativeSystemInfo) },
            { "GetProductInfo", Address(&GetProductInfo) },
            { "IsWow64Process", Address(&IsWow64Process) },
            { "Module32First", Address(&Module32First) },
            { "Module32Next", Address(&Module32Next) },
            { "Process32First", Address(&Process32First) },
            { "Process32Next", Address(&Process32Next) } } },
        { L"ntdll.dll",
          { { "RtlGetVersion", Address(&RtlGetVersion) },
            { "ZwQuerySystemInformation", Address(&ZwQuerySystemInformation) } } },
        { L"psapi.dll",
          { { "EnumProcessModules", Address(&EnumProcessModules) },
            { "EnumProcesses", Address(&EnumProcesses) },
            { "GetModuleFileNameExW", Address(&GetModuleFileNameExW) } } },
        { L"version.dll",
          { { "GetFileVersionInfoSizeW", Address(&GetFileVersionInfoSizeW) },
            { "GetFileVersionInfoW", Address(&GetFileVersionInfoW) },
            { "VerQueryValueW", Address(&VerQueryValueW) } } },
    };
    return s_libraries;
}

HMODULE HandleOf(const CSystemLibrary& library)
{
    return reinterpret_cast<HMODULE>(reinterpret_cast<uintptr_t>(&library));
}

const wchar_t s_szSystemFolder[] = L"Z:\\windows\\system32";

/// By its name, alone or with the system's folder before it.
const CSystemLibrary* FindSystemLibrary(std::wstring_view name)
{
    const size_t nFile = std::size(s_szSystemFolder); // with the backslash in the NUL's place
    if (name.size() > nFile && name[nFile - 1] == L'\\' && EqualsNoCase(name.substr(0, nFile - 1), s_szSystemFolder))
        name.remove_prefix(nFile);
    for (const CSystemLibrary& library : SystemLibraries())
        if (EqualsNoCase(name, library.szName))
            return &library;
    return nullptr;
}

const CSystemLibrary* FindSystemLibrary(HMODULE hModule)
{
    for (const CSystemLibrary& library : SystemLibraries())
        if (HandleOf(library) == hModule)
            return &library;
    return nullptr;
}

/// What LoadLibrary has loaded: the loader's own handles, one for each load, by load address.
struct CLoaded
{
    std::mutex lock;
    std::map<HMODULE, std::vector<void*>> handles; // guarded by lock
};

CLoaded& Loaded()
{
    static CLoaded& s_loaded = *new CLoaded;
    return s_loaded;
}

/// A load that runs on this thread; a DllMain may load another library.
struct CLoadInProgress
{
    CLoadInProgress() : pOuter(t_pInnermost) { t_pInnermost = this; }
    ~CLoadInProgress() { t_pInnermost = pOuter; }
    CLoadInProgress(const CLoadInProgress&) = delete;
    CLoadInProgress& operator=(const CLoadInProgress&) = delete;

    CLoadInProgress* const pOuter;
    bool bEntryFailed = false; // a DllMain has returned FALSE

    static thread_local CLoadInProgress* t_pInnermost;
};

thread_local CLoadInProgress* CLoadInProgress::t_pInnermost = nullptr;

/// A reference that the system's loader counts, given back at the end unless it is kept.
using CLoaderReference = std::unique_ptr<void, int (*)(void*)>;

/// The address at which the loader has placed a library.
HMODULE BaseOf(void* pHandle)
{
    const link_map* pMap = nullptr;
    ::dlinfo(pHandle, RTLD_DI_LINKMAP, &pMap);
    Dl_info info = {};
    ::dladdr(reinterpret_cast<const void*>(pMap->l_ld), &info);
    return static_cast<HMODULE>(info.dli_fbase);
}

std::string ExecutablePath()
{
    std::vector<char> path(4096);
    const ssize_t nLength = ::readlink("/proc/self/exe", path.data(), path.size());
    return nLength < 0 ? std::string() : std::string(path.data(), static_cast<size_t>(nLength));
}

bool IsBareName(std::wstring_view name)
{
    return name.find_first_of(L"\\/") == std::wstring_view::npos;
}

/// A bare name without a dot means a library.
std::wstring WithExtension(std::wstring_view name)
{
    const bool bAdd = IsBareName(name) && name.find(L'.') == std::wstring_view::npos;
    return std::wstring(name) + (bAdd ? L".dll" : L"");
}

/// Where a library of that name would be; a bare name is looked for beside the executable.
std::string FileToLoad(std::wstring_view name)
{
    if (!IsBareName(name))
        return HostPath(name);
    const std::string executable = ExecutablePath();
    return executable.substr(0, executable.find_last_of('/') + 1) + Utf8FromWide(name);
}

/// Why the loader did not load it: there is no such file, it is no library, it lacks a function, or one that it needs
/// is missing.
DWORD WhyNotLoaded(const std::string& path)
{
    const char* const szReason = ::dlerror();
    const auto says = [&](const char* szWords) { return szReason && std::strstr(szReason, szWords); };
    if (::access(path.c_str(), R_OK) != 0)
        return ERROR_MOD_NOT_FOUND;
    if (says("undefined symbol"))
        return ERROR_PROC_NOT_FOUND;
    return says("ELF") || says("file too short") ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND;
}

HMODULE Load(const std::string& path)
{
    CLoadInProgress load;
    CLoaderReference pHandle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), &::dlclose);
    if (!pHandle)
        return Fail<HMODULE>(WhyNotLoaded(path), nullptr);
    if (load.bEntryFailed)
        return Fail<HMODULE>(ERROR_DLL_INIT_FAILED, nullptr);
    const HMODULE hModule = BaseOf(pHandle.get());
    const std::lock_guard<std::mutex> lock(Loaded().lock);
    Loaded().handles[hModule].push_back(pHandle.get());
    pHandle.release();
    return hModule;
}

/// The executable's first byte in memory.
HMODULE ExecutableBase()
{
    Dl_info info = {};
    ::dladdr(reinterpret_cast<const void*>(::getauxval(AT_PHDR)), &info);
    return static_cast<HMODULE>(info.dli_fbase);
}

/// The loader's path of a module that is loaded at this address; empty when none is.
std::string PathOf(HMODULE hModule)
{
    Dl_info info = {};
    if (::dladdr(hModule, &info) == 0 || info.dli_fbase != hModule)
        return std::string();
    return hModule == ExecutableBase() ? ExecutablePath() : info.dli_fname;
}

std::wstring NameOf(HMODULE hModule)
{
    if (!hModule)
        return PlatformPath(ExecutablePath());
    if (const CSystemLibrary* pLibrary = FindSystemLibrary(hModule))
        return std::wstring(s_szSystemFolder) + L"\\" + pLibrary->szName;
    const std::string path = PathOf(hModule);
    if (path.empty())
        return std::wstring();
    const std::unique_ptr<char, void (*)(void*)> full(::realpath(path.c_str(), nullptr), &std::free);
    return PlatformPath(full ? full.get() : path.c_str());
}

struct CModuleSearch
{
    const std::string& name; ///< a path, or a file name
    HMODULE hFound;
};

bool IsSameFile(const std::string& a, const std::string& b)
{
    struct stat first = {};
    struct stat second = {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

int MatchModule(dl_phdr_info* pInfo, size_t, void* pSearch)
{
    auto& search = *static_cast<CModuleSearch*>(pSearch);
    const bool bExecutable = !pInfo->dlpi_name || *pInfo->dlpi_name == 0; // the loader knows no name of it
    const std::string path = bExecutable ? ExecutablePath() : pInfo->dlpi_name;
    const bool bSame =
        search.name.find('/') != std::string::npos ? IsSameFile(path, search.name) : FileName(path) == search.name;
    if (bSame)
        search.hFound = bExecutable ? ExecutableBase() : reinterpret_cast<HMODULE>(pInfo->dlpi_addr);
    return bSame;
}

HMODULE FindLoaded(LPCWSTR szName)
{
    const std::wstring name = WithExtension(szName);
    if (const CSystemLibrary* pLibrary = FindSystemLibrary(name))
        return HandleOf(*pLibrary);
    const std::string host = HostPath(name);
    CModuleSearch search = { host, nullptr };
    ::dl_iterate_phdr(&MatchModule, &search);
    return search.hFound ? search.hFound : Fail<HMODULE>(ERROR_MOD_NOT_FOUND, nullptr);
}

FARPROC FindSystemFunction(const CSystemLibrary& library, const char* szName)
{
    for (const CSystemFunction& function : library.functions)
        if (std::strcmp(function.szName, szName) == 0 && !IsFunctionMissing(szName))
            return function.pAddress;
    return Fail<FARPROC>(ERROR_PROC_NOT_FOUND, nullptr);
}

/// Counts a loaded module once more; null for none.
CLoaderReference ReferTo(HMODULE hModule)
{
    const std::string path = PathOf(hModule);
    const char* const szName = hModule == ExecutableBase() ? nullptr : path.c_str(); // null: the loader's for that
    return { path.empty() ? nullptr : ::dlopen(szName, RTLD_LAZY | RTLD_NOLOAD), &::dlclose };
}

/// Null with the last error set.
FARPROC FindExport(HMODULE hModule, const char* szName)
{
    const CLoaderReference pHandle = ReferTo(hModule);
    if (!pHandle)
        return Fail<FARPROC>(ERROR_MOD_NOT_FOUND, nullptr);
    void* const pAddress = ::dlsym(pHandle.get(), szName);
    Dl_info info = {};
    const bool bOwn = pAddress && ::dladdr(pAddress, &info) != 0 && info.dli_fbase == hModule;
    return bOwn ? reinterpret_cast<FARPROC>(pAddress) : Fail<FARPROC>(ERROR_PROC_NOT_FOUND, nullptr);
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

extern "C" OVPLATFORM_API void OvModuleEntryFailed();

void OvModuleEntryFailed()
{
    if (CLoadInProgress::t_pInnermost)
        CLoadInProgress::t_pInnermost->bEntryFailed = true;
    else
    {
        std::fputs("A library that the program is linked with failed to initialise\n", stderr);
        std::abort(); // as the system does not start such a program
    }
}

HMODULE LoadLibraryExW(LPCWSTR szName, HANDLE hReserved, DWORD dwFlags)
{
    const bool bKnownFlags =
        dwFlags == 0 || dwFlags == LOAD_WITH_ALTERED_SEARCH_PATH || dwFlags == LOAD_LIBRARY_SEARCH_SYSTEM32;
    if (!szName || hReserved || !bKnownFlags)
        return Fail<HMODULE>(ERROR_INVALID_PARAMETER, nullptr);
    return OrNoMemory<HMODULE>(nullptr, [&]() -> HMODULE {
        const std::wstring name = WithExtension(szName);
        if (const CSystemLibrary* pLibrary = FindSystemLibrary(name))
            return HandleOf(*pLibrary);
        if (IsBareName(name) && dwFlags == LOAD_LIBRARY_SEARCH_SYSTEM32)
            return Fail<HMODULE>(ERROR_MOD_NOT_FOUND, nullptr);
        return Load(FileToLoad(name));
    });
}

HMODULE LoadLibraryW(LPCWSTR szName)
{
    return LoadLibraryExW(szName, nullptr, 0);
}

UINT GetSystemDirectoryW(LPWSTR szBuffer, UINT nUnits)
{
    const UINT nNeeded = static_cast<UINT>(std::size(s_szSystemFolder));
    if (nUnits < nNeeded)
        return nNeeded;
    std::copy_n(s_szSystemFolder, nNeeded, szBuffer);
    return nNeeded - 1;
}

BOOL FreeLibrary(HMODULE hModule)
{
    if (FindSystemLibrary(hModule))
        return TRUE;
    void* pHandle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(Loaded().lock);
        const auto found = Loaded().handles.find(hModule);
        if (found == Loaded().handles.end())
            return Fail(ERROR_MOD_NOT_FOUND, FALSE);
        pHandle = found->second.back();
        found->second.pop_back();
        if (found->second.empty())
            Loaded().handles.erase(found);
    }
    ::dlclose(pHandle); // without the lock: this may run the library's DllMain
    return TRUE;
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR szName)
{
    return OrNoMemory<FARPROC>(nullptr, [&] {
        const CSystemLibrary* pLibrary = FindSystemLibrary(hModule);
        return pLibrary ? FindSystemFunction(*pLibrary, szName) : FindExport(hModule, szName);
    });
}

HMODULE GetModuleHandleW(LPCWSTR szName)
{
    if (!szName)
        return ExecutableBase();
    return OrNoMemory<HMODULE>(nullptr, [&] { return FindLoaded(szName); });
}

DWORD GetModuleFileNameW(HMODULE hModule, LPWSTR szBuffer, DWORD nUnits)
{
    return OrNoMemory<DWORD>(0, [&] {
        const std::wstring name = NameOf(hModule);
        if (name.empty())
            return Fail<DWORD>(ERROR_MOD_NOT_FOUND, 0);
        if (nUnits == 0)
            return Fail<DWORD>(ERROR_INSUFFICIENT_BUFFER, 0);
        const size_t nCopied = std::min<size_t>(name.size(), nUnits - 1);
        std::copy_n(name.data(), nCopied, szBuffer);
        szBuffer[nCopied] = L'\0';
        return nCopied < name.size() ? Fail(ERROR_INSUFFICIENT_BUFFER, nUnits)
                                     : Fail<DWORD>(ERROR_SUCCESS, static_cast<DWORD>(nCopied));
    });
}
