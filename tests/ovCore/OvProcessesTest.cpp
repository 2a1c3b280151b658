#include "ovCore/OvProcesses.h"

#include "ovCore/OvFile.h"
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvPSProcessApi.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Raised.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace
{

constexpr DWORD NO_SUCH_PROCESS = 0xFFFFFFF0u;

struct CSelf
{
    CSelf() { COvFile::GetFileNameParts(COvFile::GetModuleFileNameW(nullptr), &wzFolder, nullptr, nullptr, &wzName); }

    DWORD dwId = ::GetCurrentProcessId();
    std::wstring wzName;
    std::wstring wzFolder;
};

/// A security identifier of that authority and sub-authorities, laid out as the platform does.
std::vector<DWORD> MakeSid(const std::vector<BYTE>& authority, const std::vector<DWORD>& parts, BYTE nRevision = 1)
{
    std::vector<DWORD> sid(2 + parts.size());
    BYTE* const pBytes = reinterpret_cast<BYTE*>(sid.data());
    pBytes[0] = nRevision;
    pBytes[1] = static_cast<BYTE>(parts.size());
    std::copy(authority.begin(), authority.end(), pBytes + 2);
    std::copy(parts.begin(), parts.end(), sid.begin() + 2);
    return sid;
}

bool g_bAsked = false;
bool g_bGranted = false;

bool EnablePrivilege()
{
    g_bAsked = true;
    return g_bGranted;
}

COVOsVersion SystemOf(DWORD dwPlatform, const COvOsNumber& number, LONG lProductType)
{
    COvOsRecord record;
    record.dwPlatform = dwPlatform;
    record.reported = record.actual = number;
    record.lProductType = lProductType;
    COVOsVersion version;
    version.Load(record);
    return version;
}

} // namespace

TEST(OvProcesses, EachMethodFindsThisProcess)
{
    const CSelf self;
    const struct
    {
        std::unique_ptr<COvOsProcessApi> pApi;
        bool bFolder;
    } rows[] = {
        { std::make_unique<COvPSProcessApi>(), true },
        { std::make_unique<COvToolHelpProcessApi>(true), true },
        { std::make_unique<COvToolHelpProcessApi>(false), false },
        { std::make_unique<COvSysInfoProcessApi>(), false },
    };
    for (const auto& row : rows)
    {
        row.pApi->Initialize();
        const COvProcessCollection processes = row.pApi->GetAllProcesses();
        bool bFound = false;
        const COvProcessInfo& process = processes.GetByPID(self.dwId, bFound);
        EXPECT_TRUE(bFound);
        EXPECT_EQ(self.dwId, process.GetProcessId());
        EXPECT_EQ(self.wzName, process.GetName());
        EXPECT_EQ(row.bFolder ? self.wzFolder : L"", process.GetFolder());
        EXPECT_LT(1u, processes.GetCount()) << &row - rows;
        EXPECT_EQ(0u, processes.GetByPID(NO_SUCH_PROCESS, bFound).GetProcessId());
        EXPECT_FALSE(bFound);
    }
}

TEST(OvProcesses, TheMethodSuitsTheSystem)
{
    using CCheck = bool (*)(const COvOsProcessApi&);
    const CCheck isToolHelp = [](auto& api) { return dynamic_cast<const COvToolHelpProcessApi*>(&api) != nullptr; };
    const CCheck isSysInfo = [](auto& api) { return dynamic_cast<const COvSysInfoProcessApi*>(&api) != nullptr; };
    const CCheck isPS = [](auto& api) { return dynamic_cast<const COvPSProcessApi*>(&api) != nullptr; };
    constexpr DWORD WIN9X = VER_PLATFORM_WIN32_WINDOWS;
    constexpr DWORD NT = VER_PLATFORM_WIN32_NT;
    const struct
    {
        DWORD dwPlatform;
        COvOsNumber number;
        bool bGranted;
        bool bAsked;
        CCheck pCheck; // null: not supported
        LONG lFlavour;
    } rows[] = {
        { 7, { 1, 0, 0 }, true, false, nullptr, OsUnknown },
        { VER_PLATFORM_WIN32s, { 1, 25, 0 }, true, false, nullptr, OsWin32s },
        { WIN9X, { 4, 0, 950 }, true, false, nullptr, OsWindows95 },
        { WIN9X, { 4, 10, 1998 }, true, false, isToolHelp, OsWindows98 },
        { WIN9X, { 4, 90, 3000 }, true, false, isToolHelp, OsWindowsMe },
        { NT, { 4, 0, 1381 }, true, true, isPS, OsWindowsNt },
        { NT, { 4, 0, 1381 }, false, true, isSysInfo, OsWindowsNt },
        { NT, { 5, 0, 2195 }, true, true, isPS, OsWindows2000 },
        { NT, { 5, 0, 2195 }, false, true, isSysInfo, OsWindows2000 },
        { NT, { 5, 2, 3790 }, false, true, isSysInfo, OsWindowsXp },
        { NT, { 6, 0, 6000 }, false, true, isPS, OsVista },
        { NT, { 10, 0, 19045 }, false, true, isPS, OsWindows10 },
    };
    for (const auto& row : rows)
    {
        const COVOsVersion version = SystemOf(row.dwPlatform, row.number, VER_NT_WORKSTATION);
        ASSERT_EQ(row.lFlavour, version.GetFlavour());
        g_bAsked = false;
        g_bGranted = row.bGranted;
        const std::wstring failure =
            L"0x80004005 OvOsProcessApi | Info Msg: Unsupported Os | (long)ePlatform: " + std::to_wstring(row.lFlavour);
        EXPECT_EQ(row.pCheck == nullptr ? failure : L"nothing", Raised([&] {
                      EXPECT_TRUE(row.pCheck(*COvOsProcessApi::MakeApi(version, &EnablePrivilege))) << row.lFlavour;
                  }));
        EXPECT_EQ(row.bAsked, g_bAsked) << row.lFlavour;
    }
}

TEST(OvProcesses, AreListedOnceUntilAskedForAgain)
{
    const CSelf self;
    COvProcesses processes;
    bool bFound = false;
    const COvProcessInfo* const pFirst = &processes.GetProcess(self.dwId, bFound);
    EXPECT_TRUE(bFound);
    EXPECT_EQ(self.wzName, pFirst->GetName());
    EXPECT_EQ(pFirst, &processes.GetProcess(self.dwId, bFound));
    EXPECT_EQ(L"", processes.GetProcess(NO_SUCH_PROCESS, bFound).GetName());
    EXPECT_FALSE(bFound);
    const COvProcessInfo* const pAgain = &processes.GetRunning().GetByPID(self.dwId, bFound);
    EXPECT_EQ(pAgain, &processes.GetProcess(self.dwId, bFound));
    EXPECT_TRUE(bFound);
}

TEST(OvProcesses, ACollectionKeepsTheFirstOfEachId)
{
    COvProcessCollection processes;
    processes.AddProcess(L"C:\\dir\\name.tar.exe", 4);
    processes.AddProcess(L"System", 8);
    processes.AddProcess(L"System", 12);
    processes.AddProcess(L"C:\\other.exe", 4);
    EXPECT_EQ(3u, processes.GetCount());
    const COvProcessCollection copy(processes);
    processes = COvProcessCollection();
    EXPECT_EQ(0u, processes.GetCount());
    bool bFound = false;
    EXPECT_EQ(L"name.tar.exe", copy.GetByPID(4, bFound).GetName());
    EXPECT_EQ(L"C:\\dir", copy.GetByPID(4, bFound).GetFolder());
    EXPECT_EQ(L"System", copy.GetByPID(12, bFound).GetName());
    EXPECT_EQ(L"", copy.GetByPID(12, bFound).GetFolder());
}

TEST(OvProcesses, IndexesThatDifferAreAFailure)
{
    struct CBroken : COvProcessCollection
    {
        CBroken() { m_processPIDIndex.emplace(4, nullptr); }
    };
    EXPECT_EQ(L"0x80004005 OVProcessInfo | Info Msg: Internal State Invalid | (long)m_processPIDIndex.size(): 1 | "
              L"(long)m_processNameIndex.size(): 0",
              Raised([] { CBroken().GetCount(); }));
}

TEST(OvProcessInfo, RendersSecurityIdentifiers)
{
    const struct
    {
        std::vector<BYTE> authority;
        std::vector<DWORD> parts;
        const wchar_t* szText;
    } rows[] = {
        { { 0, 0, 0, 0, 0, 5 }, { 18 }, L"S-1-5-18" },
        { { 0, 0, 0, 0, 0, 0 }, {}, L"S-1-0" },
        { { 0, 0, 0, 0, 0, 22 }, { 1, 4294967295u }, L"S-1-22-1-4294967295" },
        { { 0, 0, 0xFF, 0xFE, 0xFD, 0xFC }, { 0 }, L"S-1-4294901244-0" },
        { { 0, 1, 0, 0, 0, 0x0A }, { 2 }, L"S-1-00010000000a-2" },
        { { 0xAB, 0, 0, 0, 0, 0 }, { 2 }, L"S-1-ab0000000000-2" },
        { { 0, 0, 0, 0, 0, 5 },
          { 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15 },
          L"S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szText, COvProcessInfo::GetTextual(MakeSid(row.authority, row.parts).data()));
    const std::wstring invalid = L"0x80004005 OVProcessInfo | Info Msg: Sid invalid";
    EXPECT_EQ(invalid, Raised([] { COvProcessInfo::GetTextual(MakeSid({ 0, 0, 0, 0, 0, 5 }, { 1 }, 2).data()); }));
    EXPECT_EQ(invalid, Raised([] {
                  COvProcessInfo::GetTextual(MakeSid({ 0, 0, 0, 0, 0, 5 }, std::vector<DWORD>(16)).data());
              }));
}

TEST(OvProcessInfo, WithoutATokenTheDefaultStands)
{
    const COvProcessInfo gone(L"", NO_SUCH_PROCESS);
    EXPECT_EQ(nullptr, COvProcessInfo::GetTokenFromPID(NO_SUCH_PROCESS).Get());
    EXPECT_EQ(L".DEFAULT", gone.GetTextualSID(true));
    EXPECT_EQ(L"", gone.GetTextualSID(false));
}

TEST(OvProcessInfo, ARunningProcessHasItsUsersIdentifier)
{
    const COvProcessInfo self(L"", ::GetCurrentProcessId());
    EXPECT_EQ(0u, self.GetTextualSID(true).rfind(L"S-1-", 0));
    EXPECT_EQ(self.GetTextualSID(true), self.GetTextualSID(false));
    EXPECT_NE(nullptr, COvProcessInfo::GetTokenFromPID(::GetCurrentProcessId()).Get());
}
