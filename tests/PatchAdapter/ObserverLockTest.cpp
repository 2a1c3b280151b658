// Observers are told with their lock held, whoever tells them: the list cannot change meanwhile.
#include "AdapterFixture.h"

#include <chrono>
#include <functional>
#include <future>

namespace
{

class ObserverLock : public CAdapterTest
{
};

} // namespace

TEST_F(ObserverLock, IsHeldWhileObserversAreTold)
{
    StartWithService();
    COvEvent told(false, false, nullptr, nullptr);
    std::future<void> removal;
    bool bHeld = false;
    CListener observer([&] {
        removal = std::async(std::launch::async, [&] { Adapter().DeRegisterStateObserver(nullptr); });
        // What must not happen has no event. Were the lock free, the other thread would be done long before this.
        bHeld = removal.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
        told.SetEvent();
    });
    const std::pair<const char*, std::function<void()>> rows[] = {
        { "at registration", [&] { Adapter().RegisterStateObserver(&observer); } },
        { "of a policy", [&] { Adapter().SetConfiguration(PolicyConfiguring("").c_str()); } },
        { "by the monitor", [&] { m_agent.Stop(); } },
    };
    for (const auto& [szWhen, tell] : rows)
    {
        tell();
        told.Lock(INFINITE); // a limit would be scaled with the monitor's pauses
        removal.get();
        EXPECT_TRUE(bHeld) << szWhen;
    }
}
