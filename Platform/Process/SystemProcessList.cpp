#include "Platform/Process/ProcessList.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Text/Text.h"

#include <cstring>
#include <new>

namespace OvPlatform
{

namespace
{

constexpr ULONG SystemProcessInformation = 5;
constexpr LONG StatusSuccess = 0;
constexpr LONG StatusInvalidInfoClass = static_cast<LONG>(0xC0000003);
constexpr LONG StatusInfoLengthMismatch = static_cast<LONG>(0xC0000004);
constexpr LONG StatusNoMemory = static_cast<LONG>(0xC0000017);

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

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

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
