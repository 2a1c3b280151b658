#include "Platform/CodePages.h"
#include "Platform/Handles.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Process/ProcessList.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Text/FileNames.h"
#include "Platform/Text/Text.h"

#include <algorithm>
#include <cstring>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap SnapshotAccess = { READ_CONTROL, READ_CONTROL, READ_CONTROL, STANDARD_RIGHTS_REQUIRED };

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
    WriteNarrow(PlatformPath(module.path), entry.szExePath);
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

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

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
