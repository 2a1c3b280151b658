// What the registry key and the process list do on other systems than the running one. The system is looked at once in
// a process, so each is pretended in a process of its own.
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OvProcesses.h"
#include "ovCore/OvRegKey.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Platform/Control.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{

OvPlatform::CSystemRecord System(DWORD dwPlatform, DWORD nMajor, DWORD nMinor, DWORD nBuild, WORD nProcessor,
                                 bool bWow64 = false)
{
    OvPlatform::CSystemRecord record;
    record.nPlatformId = dwPlatform;
    record.nReportedMajor = record.nTrueMajor = nMajor;
    record.nReportedMinor = record.nTrueMinor = nMinor;
    record.nReportedBuild = record.nTrueBuild = nBuild;
    record.nNativeProcessor = nProcessor;
    record.bWow64 = bWow64;
    return record;
}

bool HasFlags(DWORD dwFlag32, DWORD dwFlag64)
{
    return COvRegKey(RegView32).GetWOWDescriptor() == dwFlag32 && COvRegKey(RegView64).GetWOWDescriptor() == dwFlag64;
}

/// Whether a process's key is the current user's, and processes are listed as such a system can.
bool IsWithoutUsers()
{
    HKEY hRoot = HKEY_USERS;
    const DWORD dwSelf = ::GetCurrentProcessId();
    bool bFound = false;
    COvProcesses().GetProcess(dwSelf, bFound);
    return COvRegKey(RegView32).GetModifiedPath(&hRoot, L"\\a\\b", dwSelf) == L"a\\b" && hRoot == HKEY_CURRENT_USER &&
           COvProcessInfo(L"", dwSelf).GetTextualSID(true) == L".DEFAULT" &&
           COvProcessInfo(L"", dwSelf).GetTextualSID(false).empty() && bFound &&
           dynamic_cast<COvToolHelpProcessApi*>(&COvOsProcessApi::GetApi()) != nullptr;
}

/// Ends the process: with 0 when the check, on that system, says true.
[[noreturn]] void ExitOn(const OvPlatform::CSystemRecord& record, bool (*pCheck)())
{
    OvPlatform::SetSystemRecord(record);
    bool bTrue = false;
    const std::wstring raised = Raised([&] { bTrue = pCheck(); });
    std::fprintf(stderr, "%ls\n", raised.c_str());
    std::_Exit(bTrue ? 0 : 1);
}

} // namespace

TEST(OtherSystemsDeathTest, AreUsedAsTheyCanBe)
{
    constexpr DWORD NT = VER_PLATFORM_WIN32_NT;
    constexpr DWORD WIN9X = VER_PLATFORM_WIN32_WINDOWS;
    constexpr WORD X86 = PROCESSOR_ARCHITECTURE_INTEL;
    constexpr WORD X64 = PROCESSOR_ARCHITECTURE_AMD64;
    const struct
    {
        OvPlatform::CSystemRecord record;
        bool (*pCheck)();
        const char* szRaised;
    } rows[] = {
        { System(NT, 5, 0, 2195, X64), [] { return HasFlags(0, 0); }, "nothing" }, // Windows 2000 has no views
        { System(NT, 6, 1, 7601, X86), [] { return HasFlags(0, KEY_WOW64_64KEY); }, "nothing" },
        { System(NT, 6, 1, 7601, X64, true), [] { return HasFlags(0, KEY_WOW64_64KEY); }, "nothing" },
        { System(NT, 6, 1, 7601, X64), [] { return HasFlags(KEY_WOW64_32KEY, 0); }, "nothing" },
        { System(WIN9X, 4, 10, 1998, X86), IsWithoutUsers, "nothing" },
        { System(WIN9X, 4, 0, 950, X86), [] { return &COvOsProcessApi::GetApi() == nullptr; },
          "Info Msg: Unsupported Os . \\(long\\)ePlatform: 3" },
    };
    for (const auto& row : rows)
        EXPECT_EXIT(ExitOn(row.record, row.pCheck),
                    testing::ExitedWithCode(std::string(row.szRaised) == "nothing" ? 0 : 1), row.szRaised)
            << &row - rows;
}
