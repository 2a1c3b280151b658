#include "ovCore/OvProcesses.h"

#include "ovCore/OvFile.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvPSProcessApi.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Raised.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{

constexpr DWORD NO_SUCH_PROCESS = 0xFFFFFFF0u;

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

/// The method for a system; empty when there is none.
std::string MethodFor(LONG lFlavour, DWORD dwPlatform, const COvOsNumber& number, bool (*pEnablePrivilege)())
{
    COvOsRecord record;
    record.dwPlatform = dwPlatform;
    record.actual = number;
    record.lProductType = VER_NT_WORKSTATION;
    COVOsVersion version;
    version.Load(record);
    EXPECT_EQ(lFlavour, version.GetFlavour());
    const std::wstring failure = L"0x80004005 OvOsProcessApi | Info Msg: Unsupported Os | (long)ePlatform: ";
    std::unique_ptr<COvOsProcessApi> pApi;
    const std::wstring raised = Raised([&] { pApi = COvOsProcessApi::MakeApi(version, pEnablePrivilege); });
    EXPECT_EQ(pApi != nullptr ? L"nothing" : failure + std::to_wstring(lFlavour), raised);
    if (dynamic_cast<COvToolHelpProcessApi*>(pApi.get()) != nullptr)
        return "ToolHelp";
    if (dynamic_cast<COvSysInfoProcessApi*>(pApi.get()) != nullptr)
        return "SysInfo";
    return pApi != nullptr ? "PS" : "";
}

} // namespace

TEST(OvProcesses, EachMethodFindsThisProcess)
{
    const DWORD dwSelf = ::GetCurrentProcessId();
    std::wstring wzFolder, wzName;
    COvFile::GetFileNameParts(COvFile::GetModuleFileNameW(nullptr), &wzFolder, nullptr, nullptr, &wzName);
    const std::pair<std::unique_ptr<COvOsProcessApi>, bool> rows[] = {
        { std::make_unique<COvPSProcessApi>(), true },
        { std::make_unique<COvToolHelpProcessApi>(true), true },
        { std::make_unique<COvToolHelpProcessApi>(false), false },
        { std::make_unique<COvSysInfoProcessApi>(), false },
    };
    for (const auto& [pApi, bFolder] : rows)
    {
        pApi->Initialize();
        const COvProcessCollection processes = pApi->GetAllProcesses();
        bool bFound = false;
        const COvProcessInfo& process = processes.GetByPID(dwSelf, bFound);
        EXPECT_TRUE(bFound);
        EXPECT_EQ(wzName, process.GetName());
        EXPECT_EQ(bFolder ? wzFolder : L"", process.GetFolder());
        EXPECT_LT(1u, processes.GetCount());
        EXPECT_EQ(0u, processes.GetByPID(NO_SUCH_PROCESS, bFound).GetProcessId());
        EXPECT_FALSE(bFound);
    }
}

TEST(OvProcesses, TheMethodSuitsTheSystem)
{
    constexpr DWORD WIN9X = VER_PLATFORM_WIN32_WINDOWS;
    constexpr DWORD NT = VER_PLATFORM_WIN32_NT;
    const auto granted = [] { return true; };
    const auto refused = [] { return false; };
    EXPECT_EQ("", MethodFor(OsUnknown, 7, { 1, 0, 0 }, granted));
    EXPECT_EQ("", MethodFor(OsWin32s, VER_PLATFORM_WIN32s, { 1, 25, 0 }, granted));
    EXPECT_EQ("", MethodFor(OsWindows95, WIN9X, { 4, 0, 950 }, granted));
    EXPECT_EQ("ToolHelp", MethodFor(OsWindows98, WIN9X, { 4, 10, 1998 }, nullptr)); // asks for no privilege
    EXPECT_EQ("ToolHelp", MethodFor(OsWindowsMe, WIN9X, { 4, 90, 3000 }, nullptr));
    EXPECT_EQ("PS", MethodFor(OsWindowsNt, NT, { 4, 0, 1381 }, granted));
    EXPECT_EQ("SysInfo", MethodFor(OsWindows2000, NT, { 5, 0, 2195 }, refused));
    EXPECT_EQ("SysInfo", MethodFor(OsWindowsXp, NT, { 5, 2, 3790 }, refused));
    EXPECT_EQ("PS", MethodFor(OsVista, NT, { 6, 0, 6000 }, refused));
}

TEST(OvProcesses, AreListedOnceUntilAskedForAgain)
{
    const DWORD dwSelf = ::GetCurrentProcessId();
    COvProcesses processes;
    bool bFound = false;
    const COvProcessInfo* const pFirst = &processes.GetProcess(dwSelf, bFound);
    EXPECT_TRUE(bFound);
    EXPECT_EQ(pFirst, &processes.GetProcess(dwSelf, bFound));
    EXPECT_EQ(L"", processes.GetProcess(NO_SUCH_PROCESS, bFound).GetName());
    EXPECT_FALSE(bFound);
    const COvProcessInfo* const pAgain = &processes.GetRunning().GetByPID(dwSelf, bFound);
    EXPECT_EQ(pAgain, &processes.GetProcess(dwSelf, bFound));
}

TEST(OvProcesses, ACollectionKeepsTheFirstOfEachId)
{
    COvProcessCollection processes;
    processes.AddProcess(L"C:\\dir\\name.tar.exe", 4);
    processes.AddProcess(L"System", 8);
    processes.AddProcess(L"System", 12);
    processes.AddProcess(L"C:\\other.exe", 4);
    EXPECT_EQ(3u, processes.GetCount());
    bool bFound = false;
    EXPECT_EQ(L"name.tar.exe", processes.GetByPID(4, bFound).GetName());
    EXPECT_EQ(L"C:\\dir", processes.GetByPID(4, bFound).GetFolder());
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
        { { 0, 0, 0xFF, 0xFE, 0xFD, 0xFC }, { 1, 4294967295u }, L"S-1-4294901244-1-4294967295" },
        { { 0, 1, 0, 0, 0, 0x0A }, { 2 }, L"S-1-00010000000a-2" },
        { { 0xAB, 0, 0, 0, 0, 0 }, { 2 }, L"S-1-ab0000000000-2" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szText, COvProcessInfo::GetTextual(MakeSid(row.authority, row.parts).data()));
    EXPECT_EQ(L"0x80004005 OVProcessInfo | Info Msg: Sid invalid", Raised([] {
                  COvProcessInfo::GetTextual(MakeSid({ 0, 0, 0, 0, 0, 5 }, { 1 }, 2).data());
              }));
}

TEST(OvProcessInfo, TellsTheUserOrTheDefault)
{
    const COvProcessInfo self(L"", ::GetCurrentProcessId());
    EXPECT_EQ(0u, self.GetTextualSID(false).rfind(L"S-1-", 0));
    const COvProcessInfo gone(L"", NO_SUCH_PROCESS);
    EXPECT_EQ(L".DEFAULT", gone.GetTextualSID(true));
    EXPECT_EQ(L"", gone.GetTextualSID(false));
}
