#include "ovCore/OvSysInfoProcessApi.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvOsProcessApi";

constexpr ULONG SYSTEM_PROCESS_INFORMATION_CLASS = 5;
constexpr SIZE_T FIRST_SIZE = 32768;
constexpr LONG STATUS_TOO_SMALL = static_cast<LONG>(0xC0000004); // STATUS_INFO_LENGTH_MISMATCH

std::wstring NameOf(const SYSTEM_PROCESS_INFORMATION& process)
{
    const auto& name = process.ImageName;
    return name.Buffer == nullptr ? L"Idle" : std::wstring(name.Buffer, name.Length / sizeof(WCHAR));
}

} // namespace

void COvSysInfoProcessApi::Initialize()
{
    OV_SCOPE(L"COvSysInfoProcessApi::Initialize");
    constexpr bool bThrow = true;
    m_lib.Init(L"NTDLL.DLL", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, bThrow);
    m_pZwQuerySystemInformation = m_lib.GetProc<ZwQuerySystemInformationFunction>(L"ZwQuerySystemInformation", bThrow);
}

COvProcessCollection COvSysInfoProcessApi::GetAllProcesses() const
{
    OV_SCOPE(L"COvSysInfoProcessApi::GetAllProcesses");
    const COvHeapBlock block = QueryProcesses();
    COvProcessCollection processes;
    const BYTE* pEntry = static_cast<const BYTE*>(block.get());
    for (;;)
    {
        const auto& process = *reinterpret_cast<const SYSTEM_PROCESS_INFORMATION*>(pEntry);
        const auto nProcessId = reinterpret_cast<ULONG_PTR>(process.UniqueProcessId);
        processes.AddProcess(NameOf(process), static_cast<DWORD>(nProcessId));
        if (process.NextEntryOffset == 0)
            return processes;
        pEntry += process.NextEntryOffset;
    }
}

COvHeapBlock COvSysInfoProcessApi::QueryProcesses() const
{
    for (SIZE_T nSize = FIRST_SIZE;; nSize *= 2)
    {
        COvHeapBlock block = OvHeapAlloc(nSize, s_szSource, __LINE__);
        const LONG nStatus = m_pZwQuerySystemInformation(SYSTEM_PROCESS_INFORMATION_CLASS, block.get(),
                                                         static_cast<ULONG>(nSize), nullptr);
        if (nStatus >= 0)
            return block;
        if (nStatus != STATUS_TOO_SMALL)
            OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Method", L"ZwQuerySystemInformation"));
    }
}
