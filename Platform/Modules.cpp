#include "Modules.h"

#include "FileNames.h"
#include "Guard.h"
#include "ProcessList.h"
#include "SystemCalls.h"
#include "Text.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <map>
#include <memory>
#include <mutex>
#include <string>
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
    };
    return s_libraries;
}

HMODULE HandleOf(const CSystemLibrary& library)
{
    return reinterpret_cast<HMODULE>(reinterpret_cast<uintptr_t>(&library));
}

const CSystemLibrary* FindSystemLibrary(std::wstring_view name)
{
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

thread_local bool t_bEntryFailed = false; // a DllMain has returned FALSE in the load that runs on this thread

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

/// Where a library of that name would be; a bare name is looked for beside the executable.
std::string FileToLoad(std::wstring_view name)
{
    if (name.find_first_of(L"\\/") != std::wstring_view::npos)
        return HostPath(name);
    const std::string executable = ExecutablePath();
    return executable.substr(0, executable.find_last_of('/') + 1) + Utf8FromWide(name);
}

/// Why the loader did not load it: there is no such file, it is no library, or one that it needs is missing.
DWORD WhyNotLoaded(const std::string& path)
{
    if (::access(path.c_str(), R_OK) != 0)
        return ERROR_MOD_NOT_FOUND;
    const char* const szReason = ::dlerror();
    const bool bNoLibrary = szReason && (std::strstr(szReason, "ELF") || std::strstr(szReason, "file too short"));
    return bNoLibrary ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND;
}

HMODULE Load(const std::string& path)
{
    t_bEntryFailed = false;
    void* const pHandle = path.empty() ? nullptr : ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!pHandle)
        return Fail<HMODULE>(WhyNotLoaded(path), nullptr);
    if (t_bEntryFailed)
    {
        ::dlclose(pHandle);
        return Fail<HMODULE>(ERROR_DLL_INIT_FAILED, nullptr);
    }
    const HMODULE hModule = BaseOf(pHandle);
    const std::lock_guard<std::mutex> lock(Loaded().lock);
    Loaded().handles[hModule].push_back(pHandle);
    return hModule;
}

/// The executable is the first module that the loader tells of.
HMODULE ExecutableBase()
{
    HMODULE hModule = nullptr;
    ::dl_iterate_phdr(
        [](dl_phdr_info* pInfo, size_t, void* pResult) {
            *static_cast<HMODULE*>(pResult) = reinterpret_cast<HMODULE>(pInfo->dlpi_addr);
            return 1;
        },
        &hModule);
    return hModule;
}

/// The loader's path of a module that is loaded at this address; empty when none is.
std::string PathOf(HMODULE hModule)
{
    Dl_info info = {};
    const bool bFound = ::dladdr(hModule, &info) != 0 && info.dli_fbase == hModule && info.dli_fname;
    return bFound ? info.dli_fname : std::string();
}

std::wstring NameOf(HMODULE hModule)
{
    if (!hModule)
        return PlatformPath(ExecutablePath());
    if (const CSystemLibrary* pLibrary = FindSystemLibrary(hModule))
        return L"Z:\\windows\\system32\\" + std::wstring(pLibrary->szName);
    const std::string path = PathOf(hModule);
    if (path.empty())
        return std::wstring();
    const std::unique_ptr<char, void (*)(void*)> full(::realpath(path.c_str(), nullptr), &::free);
    return PlatformPath(full ? full.get() : path.c_str());
}

struct CModuleSearch
{
    const std::string& name; ///< a path, or a file name
    HMODULE hFound;
};

int MatchModule(dl_phdr_info* pInfo, size_t, void* pSearch)
{
    auto& search = *static_cast<CModuleSearch*>(pSearch);
    const std::string path = pInfo->dlpi_name ? pInfo->dlpi_name : "";
    const bool bPath = search.name.find('/') != std::string::npos;
    if (path.empty() || (bPath ? path : path.substr(path.find_last_of('/') + 1)) != search.name)
        return 0;
    search.hFound = reinterpret_cast<HMODULE>(pInfo->dlpi_addr);
    return 1;
}

HMODULE FindLoaded(LPCWSTR szName)
{
    std::wstring name = szName;
    if (name.find_first_of(L".\\/") == std::wstring::npos)
        name += L".dll";
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
    return nullptr;
}

/// The loader's own handle of a loaded module; null for none.
void* LoaderHandle(HMODULE hModule)
{
    const std::lock_guard<std::mutex> lock(Loaded().lock);
    const auto found = Loaded().handles.find(hModule);
    return found == Loaded().handles.end() ? nullptr : found->second.back();
}

FARPROC FindExport(void* pHandle, HMODULE hModule, const char* szName)
{
    void* const pAddress = ::dlsym(pHandle, szName);
    Dl_info info = {};
    const bool bOwn = pAddress && ::dladdr(pAddress, &info) != 0 && info.dli_fbase == hModule;
    return bOwn ? reinterpret_cast<FARPROC>(pAddress) : nullptr;
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

extern "C" OVPLATFORM_API void OvModuleEntryFailed();

void OvModuleEntryFailed()
{
    t_bEntryFailed = true;
}

HMODULE LoadLibraryExW(LPCWSTR szName, HANDLE hReserved, DWORD dwFlags)
{
    const bool bKnownFlags =
        dwFlags == 0 || dwFlags == LOAD_WITH_ALTERED_SEARCH_PATH || dwFlags == LOAD_LIBRARY_SEARCH_SYSTEM32;
    if (!szName || hReserved || !bKnownFlags)
        return Fail<HMODULE>(ERROR_INVALID_PARAMETER, nullptr);
    return OrNoMemory<HMODULE>(nullptr, [&]() -> HMODULE {
        const std::wstring_view name = szName;
        if (const CSystemLibrary* pLibrary = FindSystemLibrary(name))
            return HandleOf(*pLibrary);
        const bool bBare = name.find_first_of(L"\\/") == std::wstring_view::npos;
        if (bBare && dwFlags == LOAD_LIBRARY_SEARCH_SYSTEM32)
            return Fail<HMODULE>(ERROR_MOD_NOT_FOUND, nullptr);
        return Load(FileToLoad(name));
    });
}

HMODULE LoadLibraryW(LPCWSTR szName)
{
    return LoadLibraryExW(szName, nullptr, 0);
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
    FARPROC pAddress = nullptr;
    if (const CSystemLibrary* pLibrary = FindSystemLibrary(hModule))
        pAddress = FindSystemFunction(*pLibrary, szName);
    else if (void* const pHandle = LoaderHandle(hModule))
        pAddress = FindExport(pHandle, hModule, szName);
    return pAddress ? pAddress : Fail<FARPROC>(ERROR_PROC_NOT_FOUND, nullptr);
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
