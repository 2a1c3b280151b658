// What the registry key and the process list do on other systems than the running one. The system is looked at once in
// a process, so each is pretended in a process of its own.
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OvProcesses.h"
#include "ovCore/OvRegKey.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Platform/Control.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{

OvPlatform::CSystemRecord NtSystem(DWORD nMajor, DWORD nMinor, WORD nProcessor, bool bWow64)
{
    OvPlatform::CSystemRecord record;
    record.nReportedMajor = record.nTrueMajor = nMajor;
    record.nReportedMinor = record.nTrueMinor = nMinor;
    record.nNativeProcessor = nProcessor;
    record.bWow64 = bWow64;
    return record;
}

OvPlatform::CSystemRecord Old9xSystem(DWORD nMinor, DWORD nBuild)
{
    OvPlatform::CSystemRecord record = NtSystem(4, nMinor, PROCESSOR_ARCHITECTURE_INTEL, false);
    record.nPlatformId = VER_PLATFORM_WIN32_WINDOWS;
    record.nReportedBuild = record.nTrueBuild = nBuild;
    return record;
}

/// Ends the process: with 0 when the work, on that system, says true.
template <class Work>
[[noreturn]] void ExitOn(const OvPlatform::CSystemRecord& record, Work&& work)
{
    OvPlatform::SetSystemRecord(record);
    bool bTrue = false;
    const std::wstring raised = Raised([&] { bTrue = work(); });
    std::fprintf(stderr, "%ls\n", raised.c_str());
    std::_Exit(bTrue ? 0 : 1);
}

} // namespace

TEST(OtherSystemsDeathTest, TheViewFlagsSuitSystemAndProcess)
{
    constexpr WORD X86 = PROCESSOR_ARCHITECTURE_INTEL;
    constexpr WORD X64 = PROCESSOR_ARCHITECTURE_AMD64;
    const struct
    {
        OvPlatform::CSystemRecord record;
        DWORD dwFlag32;
        DWORD dwFlag64;
    } rows[] = {
        { NtSystem(5, 0, X64, false), 0, 0 }, // no views on Windows 2000
        { NtSystem(6, 1, X86, false), 0, KEY_WOW64_64KEY },
        { NtSystem(6, 1, X64, true), 0, KEY_WOW64_64KEY },
        { NtSystem(6, 1, X64, false), KEY_WOW64_32KEY, 0 },
    };
    for (const auto& row : rows)
        EXPECT_EXIT(ExitOn(row.record,
                           [&] {
                               return COvRegKey(RegView32).GetWOWDescriptor() == row.dwFlag32 &&
                                      COvRegKey(RegView64).GetWOWDescriptor() == row.dwFlag64;
                           }),
                    testing::ExitedWithCode(0), "nothing")
            << &row - rows;
}

TEST(OtherSystemsDeathTest, On9xAProcessesKeyIsTheCurrentUsers)
{
    EXPECT_EXIT(ExitOn(Old9xSystem(10, 1998),
                       [] {
                           HKEY hRoot = HKEY_USERS;
                           const DWORD dwSelf = ::GetCurrentProcessId();
                           return COvRegKey(RegView32).GetModifiedPath(&hRoot, L"\\a\\b", dwSelf) == L"a\\b" &&
                                  hRoot == HKEY_CURRENT_USER &&
                                  COvProcessInfo(L"", dwSelf).GetTextualSID(true) == L".DEFAULT" &&
                                  COvProcessInfo(L"", dwSelf).GetTextualSID(false).empty();
                       }),
                testing::ExitedWithCode(0), "nothing");
}

TEST(OtherSystemsDeathTest, TheProcessListIsThatOfTheSystem)
{
    EXPECT_EXIT(ExitOn(Old9xSystem(10, 1998),
                       [] {
                           bool bFound = false;
                           COvProcesses().GetProcess(::GetCurrentProcessId(), bFound);
                           return bFound && dynamic_cast<COvToolHelpProcessApi*>(&COvOsProcessApi::GetApi()) != nullptr;
                       }),
                testing::ExitedWithCode(0), "nothing");
    EXPECT_EXIT(ExitOn(Old9xSystem(0, 950), [] { return COvOsProcessApi::GetApi().GetAllProcesses().GetCount() > 0; }),
                testing::ExitedWithCode(1), "Info Msg: Unsupported Os . \\(long\\)ePlatform: 3");
}
