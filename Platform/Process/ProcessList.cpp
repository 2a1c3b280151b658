#include "Platform/Process/ProcessList.h"

#include "Platform/Kernel/LastError.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Text/FileNames.h"

#include <algorithm>

namespace OvPlatform
{

namespace
{

constexpr DWORD ReadAccess = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;

/// As much as there is room for, ended by NUL; nUnits when it was cut.
DWORD CopyPath(const std::wstring& path, LPWSTR szPath, DWORD nUnits)
{
    if (nUnits == 0)
        return Fail(ERROR_INSUFFICIENT_BUFFER, 0);
    const size_t nCopied = std::min<size_t>(path.size(), nUnits - 1);
    std::copy_n(path.begin(), nCopied, szPath);
    szPath[nCopied] = L'\0';
    return nCopied == path.size() ? static_cast<DWORD>(nCopied) : Fail(ERROR_INSUFFICIENT_BUFFER, nUnits);
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

BOOL EnumProcesses(DWORD* pIds, DWORD dwRoom, DWORD* pdwBytes)
{
    return OrNoMemory(FALSE, [&] {
        const std::vector<DWORD> ids = ProcessIds();
        const size_t nWritten = std::min<size_t>(ids.size(), dwRoom / sizeof(DWORD));
        std::copy_n(ids.begin(), nWritten, pIds);
        *pdwBytes = static_cast<DWORD>(nWritten * sizeof(DWORD));
        return TRUE;
    });
}

BOOL EnumProcessModules(HANDLE hProcess, HMODULE* phModules, DWORD dwRoom, DWORD* pdwNeeded)
{
    return OrNoMemory(FALSE, [&] {
        const auto pProcess = FindObject<CProcessObject>(hProcess, ReadAccess);
        if (!pProcess)
            return FALSE;
        const std::vector<CProcessModule> modules = pProcess->ListModules();
        if (modules.empty())
            return Fail(ERROR_PARTIAL_COPY, FALSE);
        const size_t nWritten = std::min<size_t>(modules.size(), dwRoom / sizeof(HMODULE));
        for (size_t i = 0; i < nWritten; ++i)
            phModules[i] = reinterpret_cast<HMODULE>(modules[i].nBase);
        *pdwNeeded = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
        return TRUE;
    });
}

DWORD GetModuleFileNameExW(HANDLE hProcess, HMODULE hModule, LPWSTR szPath, DWORD nUnits)
{
    return OrNoMemory<DWORD>(0, [&]() -> DWORD {
        const auto pProcess = FindObject<CProcessObject>(hProcess, ReadAccess);
        if (!pProcess)
            return 0;
        const std::string path = pProcess->ModulePath(reinterpret_cast<ULONG_PTR>(hModule));
        if (path.empty())
            return Fail(ERROR_INVALID_HANDLE, 0);
        return CopyPath(PlatformPath(path), szPath, nUnits);
    });
}
