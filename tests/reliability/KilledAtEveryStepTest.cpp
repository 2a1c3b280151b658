// A host that is killed while it applies a policy: before and after every system call of the applying thread, those of
// the registry's store among them.
#include "AfterAKill.h"
#include "FaultyRun.h"

#include "Platform/Control.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// A registry file of its own.
class KilledAtEveryStep : public testing::Test
{
protected:
    void SetUp() override
    {
        char szName[] = "/tmp/KilledAtEveryStepXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(szName));
        m_folder = szName;
    }

    void TearDown() override
    {
        OvPlatform::SetRegistryInMemory();
        std::filesystem::remove_all(m_folder);
    }

    void UseFile() const { OvPlatform::SetRegistryFile((m_folder / "registry.db").c_str()); }

    /// Applies the policy in a child process that stops, for its parent, before and after the apply.
    pid_t ApplyInChild() const
    {
        OvPlatform::SetRegistryInMemory(); // no connection may be open across a fork
        const pid_t child = fork();
        if (child != 0)
            return child;
        UseFile();
        CMainJob job;
        if (!job.Start())
            _exit(1);
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        job.Apply();
        raise(SIGSTOP);
        _exit(0);
    }

    std::filesystem::path m_folder;
};

bool IsStopped(pid_t child, int nSignal)
{
    int nStatus = 0;
    return waitpid(child, &nStatus, 0) == child && WIFSTOPPED(nStatus) && WSTOPSIG(nStatus) == nSignal;
}

/// Lets the child go on to its n-th stop at a system call, where each has two, and kills it. @return whether it got
/// there before the apply was done.
bool KillAtStop(pid_t child, unsigned nStops)
{
    constexpr int nSystemCall = SIGTRAP | 0x80; // as PTRACE_O_TRACESYSGOOD marks it
    bool bThere = IsStopped(child, SIGSTOP);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
    for (unsigned n = 0; bThere && n < nStops; ++n)
    {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        bThere = IsStopped(child, nSystemCall);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return bThere;
}

} // namespace

TEST_F(KilledAtEveryStep, TheRevisionIsOldOrNewAndTheNextApplyWorks)
{
    unsigned nKilled = 0;
    unsigned nOld = 0;
    for (unsigned nStops = 1;; nStops += SampleStep())
    {
        UseFile();
        StoreRevision(OLD_REVISION);
        if (!KillAtStop(ApplyInChild(), nStops))
            break;
        ++nKilled;
        UseFile();
        nOld += ApplyAfterAKill(nStops) ? 1 : 0;
    }
    RecordProperty("killed", static_cast<int>(nKilled));
    EXPECT_GT(nOld, 0u);
    EXPECT_LT(nOld, nKilled); // some were killed after the record was made
}
