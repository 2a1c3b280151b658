// A host that is killed while it applies a policy, before every call that the library makes of Windows: what the
// registry holds is left to Windows, so that nothing in between can matter.
#include "AfterAKill.h"
#include "FaultyRun.h"
#include "TestPlatform.h"

#include <cstdlib>
#include <process.h>

namespace
{

constexpr int KILLED = 9;
const char s_szParent[] = "OV_PARENT"; // the process whose scratch registry the killed one has
const char s_szCall[] = "OV_KILLED_AT";

unsigned Variable(const char* szName)
{
    const char* const szValue = std::getenv(szName);
    return szValue == nullptr ? 0 : static_cast<unsigned>(std::strtoul(szValue, nullptr, 10));
}

void SetVariable(const char* szName, unsigned nValue)
{
    ::_putenv_s(szName, std::to_string(nValue).c_str());
}

/// Runs the test that is killed in a process of its own. @return its exit code.
int ApplyAndBeKilled(unsigned nCall)
{
    SetVariable(s_szParent, ::GetCurrentProcessId());
    SetVariable(s_szCall, nCall);
    wchar_t szProgram[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, szProgram, MAX_PATH);
    return static_cast<int>(::_wspawnl(_P_WAIT, szProgram, L"killed", L"--gtest_filter=*DISABLED_Child",
                                       L"--gtest_also_run_disabled_tests", nullptr));
}

} // namespace

TEST(KilledAtEveryCall, TheRevisionIsOldOrNewAndTheNextApplyWorks)
{
    const CScratchRegistry registry;
    unsigned nKilled = 0;
    unsigned nOld = 0;
    for (unsigned nCall = 1;; nCall += SampleStep())
    {
        StoreRevision(OLD_REVISION);
        const int nExitCode = ApplyAndBeKilled(nCall);
        nOld += ApplyAfterAKill(nCall) ? 1 : 0;
        if (nExitCode != KILLED)
        {
            EXPECT_EQ(0, nExitCode);
            break;
        }
        ++nKilled;
    }
    RecordProperty("killed", static_cast<int>(nKilled));
    EXPECT_GT(nOld, 0u);
    EXPECT_LE(nOld, nKilled); // the last one was not killed
}

TEST(KilledAtEveryCall, DISABLED_Child)
{
    HKEY hMachine = nullptr;
    const std::wstring wzPath = L"Software\\OvScratch" + std::to_wstring(Variable(s_szParent)) + L"\\Machine";
    ASSERT_EQ(ERROR_SUCCESS, ::RegOpenKeyExW(HKEY_CURRENT_USER, wzPath.c_str(), 0, KEY_ALL_ACCESS, &hMachine));
    ASSERT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, hMachine));
    CMainJob job;
    ASSERT_TRUE(job.Start());
    CCallFailure failure;
    failure.nFirst = Variable(s_szCall);
    failure.pfnInstead = [] { ::TerminateProcess(::GetCurrentProcess(), KILLED); };
    ArmFailure(failure);
    job.Apply();
    DisarmFailure();
    EXPECT_TRUE(StoredRevision() == NEW_REVISION);
    job.Stop();
}
