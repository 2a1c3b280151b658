// Users of the host system as owners of processes.
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OVProcessInfo.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

namespace
{

constexpr uid_t Nobody = 65534;

std::wstring SidOf(pid_t nProcess)
{
    return COvProcessInfo(L"", static_cast<DWORD>(nProcess)).GetTextualSID(true);
}

/// Ends the process, which goes on as another user: with 0 when it sees its own owner alone and has no privilege.
[[noreturn]] void ExitAsNobody()
{
    const pid_t nParent = getppid();
    if (setresuid(Nobody, Nobody, Nobody) != 0)
        std::_Exit(2);
    const bool bDenied = ::OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(nParent)) == nullptr &&
                         ::GetLastError() == static_cast<DWORD>(ERROR_ACCESS_DENIED);
    const bool bOwners = SidOf(getpid()) == L"S-1-22-1-65534" && SidOf(nParent) == L".DEFAULT";
    std::_Exit(bDenied && bOwners && !COvOsProcessApi::EnableDebugPrivilege() ? 0 : 1);
}

} // namespace

TEST(ProcessUsersDeathTest, AUserSeesItsOwnProcessesAlone)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the superuser can become another user";
    EXPECT_EXIT(ExitAsNobody(), testing::ExitedWithCode(0), "");
}

TEST(ProcessUsers, AnOwnerIsNamedByItsNumber)
{
    EXPECT_EQ(L"S-1-22-1-" + std::to_wstring(geteuid()), SidOf(getpid()));
    EXPECT_EQ(geteuid() == 0, COvOsProcessApi::EnableDebugPrivilege());
}
