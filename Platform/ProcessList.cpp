#include "ProcessList.h"

#include "CodePages.h"
#include "Guard.h"
#include "Handles.h"
#include "ProcessObject.h"
#include "Text.h"

#include <algorithm>
#include <cstring>
#include <dirent.h>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap SnapshotAccess = { READ_CONTROL, READ_CONTROL, READ_CONTROL, STANDARD_RIGHTS_REQUIRED };
constexpr DWORD ReadAccess = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;
constexpr ULONG SystemProcessInformation = 5;
constexpr LONG StatusSuccess = 0;
constexpr LONG StatusInvalidInfoClass = static_cast<LONG>(0xC0000003);
constexpr LONG StatusInfoLengthMismatch = static_cast<LONG>(0xC0000004);
constexpr LONG StatusNoMemory = static_cast<LONG>(0xC0000017);

/// The ids of all processes, the smallest first.
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

/// A path of the host system as it is shown here.
std::wstring ShownPath(const std::string& path)
{
    std::wstring shown = L"Z:" + WideFromUtf8(path);
    std::replace(shown.begin(), shown.end(), L'/', L'\\');
    return shown;
}

std::string FileName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

/// The executable's file name, or what the host system calls a process without one.
std::string ImageName(const CProcessFiles& files, const CProcessStatus& status)
{
    const std::string path = files.ExecutablePath();
    return path.empty() ? status.name : FileName(path);
}

/// Text in the ANSI code page, cut to the room and ended by NUL.
template <size_t N>
void WriteNarrow(const std::wstring& text, CHAR (&szOut)[N])
{
    const int nUnits = static_cast<int>(text.size());
    std::string bytes(text.size() * 4, '\0');
    const int nBytes = nUnits == 0 ? 0
                                   : WideCharToMultiByte(CP_ACP, 0, text.data(), nUnits, bytes.data(),
                                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    const size_t nKept = std::min(static_cast<size_t>(nBytes), N - 1);
    std::memcpy(szOut, bytes.data(), nKept);
    szOut[nKept] = '\0';
}

tagPROCESSENTRY32 ProcessEntry(const CProcessFiles& files, const CProcessStatus& status)
{
    tagPROCESSENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    entry.th32ProcessID = files.Id();
    entry.cntThreads = status.dwThreads;
    entry.th32ParentProcessID = status.dwParent;
    WriteNarrow(WideFromUtf8(ImageName(files, status)), entry.szExeFile);
    return entry;
}

tagMODULEENTRY32 ModuleEntry(DWORD dwProcessId, const CProcessModule& module)
{
    tagMODULEENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    entry.th32ModuleID = 1;
    entry.th32ProcessID = dwProcessId;
    entry.modBaseAddr = reinterpret_cast<BYTE*>(module.nBase);
    entry.modBaseSize = static_cast<DWORD>(module.nSize);
    entry.hModule = reinterpret_cast<HMODULE>(module.nBase);
    WriteNarrow(WideFromUtf8(FileName(module.path)), entry.szModule);
    WriteNarrow(ShownPath(module.path), entry.szExePath);
    return entry;
}

/// The entries as they were when the snapshot was taken, and the place reached.
template <class Entry>
class CSnapshot final : public CKernelObject
{
public:
    explicit CSnapshot(std::vector<Entry> entries) : CKernelObject(SnapshotAccess), m_entries(std::move(entries)) {}

    void Rewind() { m_nNext = 0; }

    BOOL Next(Entry* pEntry)
    {
        if (pEntry->dwSize < sizeof(Entry))
            return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
        if (m_nNext == m_entries.size())
            return Fail(ERROR_NO_MORE_FILES, FALSE);
        *pEntry = m_entries[m_nNext++];
        return TRUE;
    }

private:
    const std::vector<Entry> m_entries;
    size_t m_nNext = 0;
};

template <class Entry>
BOOL NextEntry(HANDLE hSnapshot, Entry* pEntry, bool bFirst)
{
    const auto pSnapshot = FindObject<CSnapshot<Entry>>(hSnapshot, 0);
    if (!pSnapshot)
        return FALSE;
    if (bFirst)
        pSnapshot->Rewind();
    return pSnapshot->Next(pEntry);
}

HANDLE ProcessSnapshot()
{
    std::vector<tagPROCESSENTRY32> entries;
    for (const DWORD dwId : ProcessIds())
    {
        const CProcessFiles files(dwId);
        CProcessStatus status;
        if (ReadStatus(files, status))
            entries.push_back(ProcessEntry(files, status));
    }
    return OpenHandle(std::make_shared<CSnapshot<tagPROCESSENTRY32>>(std::move(entries)), 0);
}

HANDLE ModuleSnapshot(DWORD dwProcessId)
{
    const CProcessFiles files(dwProcessId != 0 ? dwProcessId : GetCurrentProcessId());
    if (!files.Exist())
        return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    std::vector<tagMODULEENTRY32> entries;
    for (const CProcessModule& module : ReadModules(files))
        entries.push_back(ModuleEntry(files.Id(), module));
    if (entries.empty())
        return Fail(ERROR_PARTIAL_COPY, INVALID_HANDLE_VALUE);
    return OpenHandle(std::make_shared<CSnapshot<tagMODULEENTRY32>>(std::move(entries)), 0);
}

/// A process of the system's list before its place in the caller's block is known.
struct CListedProcess
{
    DWORD dwId = 0;
    DWORD dwThreads = 0;
    std::wstring name;

    size_t NameBytes() const { return name.size() * sizeof(WCHAR); }

    /// Whole multiples of the entry's alignment.
    size_t EntryBytes() const
    {
        constexpr size_t nAlign = alignof(SYSTEM_PROCESS_INFORMATION);
        return sizeof(SYSTEM_PROCESS_INFORMATION) + (NameBytes() + nAlign - 1) / nAlign * nAlign;
    }
};

std::vector<CListedProcess> ListProcesses()
{
    std::vector<CListedProcess> list(1); // the idle process
    for (const DWORD dwId : ProcessIds())
    {
        const CProcessFiles files(dwId);
        CProcessStatus status;
        if (ReadStatus(files, status))
            list.push_back({ dwId, status.dwThreads, WideFromUtf8(ImageName(files, status)) });
    }
    return list;
}

void WriteEntry(const CListedProcess& process, bool bLast, BYTE* pEntry)
{
    SYSTEM_PROCESS_INFORMATION info = {};
    BYTE* const pName = pEntry + sizeof(info);
    info.NextEntryOffset = bLast ? 0 : static_cast<ULONG>(process.EntryBytes());
    info.NumberOfThreads = process.dwThreads;
    info.UniqueProcessId = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(process.dwId));
    if (!process.name.empty())
        info.ImageName = { static_cast<USHORT>(process.NameBytes()), static_cast<USHORT>(process.NameBytes()),
                           reinterpret_cast<LPWSTR>(pName) };
    std::memcpy(pEntry, &info, sizeof(info));
    std::memcpy(pName, process.name.data(), process.NameBytes());
}

LONG WriteList(PVOID pInfo, ULONG nLength, ULONG* pnNeeded)
{
    const std::vector<CListedProcess> list = ListProcesses();
    size_t nNeeded = 0;
    for (const CListedProcess& process : list)
        nNeeded += process.EntryBytes();
    if (pnNeeded != nullptr)
        *pnNeeded = static_cast<ULONG>(nNeeded);
    if (nLength < nNeeded)
        return StatusInfoLengthMismatch;
    BYTE* pEntry = static_cast<BYTE*>(pInfo);
    for (const CListedProcess& process : list)
    {
        WriteEntry(process, &process == &list.back(), pEntry);
        pEntry += process.EntryBytes();
    }
    return StatusSuccess;
}

/// Null: the executable's, which comes first.
const CProcessModule* FindModule(const std::vector<CProcessModule>& modules, HMODULE hModule)
{
    const auto found = std::find_if(modules.begin(), modules.end(), [&](const CProcessModule& module) {
        return hModule == nullptr || reinterpret_cast<HMODULE>(module.nBase) == hModule;
    });
    return found == modules.end() ? nullptr : &*found;
}

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
        const std::vector<CProcessModule> modules = ReadModules(pProcess->Files());
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
        const std::vector<CProcessModule> modules = ReadModules(pProcess->Files());
        const CProcessModule* const pModule = FindModule(modules, hModule);
        if (pModule == nullptr)
            return Fail(ERROR_INVALID_HANDLE, 0);
        return CopyPath(ShownPath(pModule->path), szPath, nUnits);
    });
}

HANDLE CreateToolhelp32Snapshot(DWORD dwFlags, DWORD dwProcessId)
{
    return OrNoMemory(INVALID_HANDLE_VALUE, [&] {
        if (dwFlags == TH32CS_SNAPPROCESS)
            return ProcessSnapshot();
        if (dwFlags == TH32CS_SNAPMODULE)
            return ModuleSnapshot(dwProcessId);
        return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    });
}

BOOL Process32First(HANDLE hSnapshot, tagPROCESSENTRY32* pEntry)
{
    return NextEntry(hSnapshot, pEntry, true);
}

BOOL Process32Next(HANDLE hSnapshot, tagPROCESSENTRY32* pEntry)
{
    return NextEntry(hSnapshot, pEntry, false);
}

BOOL Module32First(HANDLE hSnapshot, tagMODULEENTRY32* pEntry)
{
    return NextEntry(hSnapshot, pEntry, true);
}

BOOL Module32Next(HANDLE hSnapshot, tagMODULEENTRY32* pEntry)
{
    return NextEntry(hSnapshot, pEntry, false);
}

LONG ZwQuerySystemInformation(ULONG nClass, PVOID pInfo, ULONG nLength, ULONG* pnNeeded)
{
    if (nClass != SystemProcessInformation)
        return StatusInvalidInfoClass;
    try
    {
        return WriteList(pInfo, nLength, pnNeeded);
    }
    catch (const std::bad_alloc&)
    {
        return StatusNoMemory;
    }
}
