// Observers may change their list while they are told: a walk of it that read freed memory would be the host's crash.
#include "AdapterFixture.h"

namespace
{

class ObserverLock : public CAdapterTest
{
};

} // namespace

TEST_F(ObserverLock, IsTakenAgainByObserversThatChangeTheList)
{
    const struct
    {
        std::string changes;     // by the second of three: "-n" and "+n" of an observer, or "p" for a policy
        const char* szMeanwhile; // who is told of the first change of the status, in order
        const char* szNext;      // and of the next one
    } rows[] = {
        { "+4", "1243", "1234" }, { "-1", "123", "23" },     { "-2", "123", "13" },    { "-3", "12", "12" },
        { "-1-2-3", "12", "" },   { "-2+2", "1223", "132" }, { "p", "121233", "123" },
    };
    const std::string policy = PolicyConfiguring("");
    for (const auto& row : rows)
        for (const bool bByMonitor : { false, true })
        {
            SCOPED_TRACE(row.changes + (bByMonitor ? " by the monitor" : " of a policy"));
            const auto tell = [&](bool bServiceComes) {
                m_sink.Clear();
                if (!bByMonitor)
                    return Adapter().SetConfiguration(policy.c_str());
                bServiceComes ? static_cast<void>(m_agent.Start()) : m_agent.Stop();
                m_sink.WaitForText("Exiting Function: CMonitorThread::NotifyObservers");
            };
            bByMonitor ? StartAdapter() : StartWithService();
            std::string told;
            std::string changes;
            CListener first([&] { told += '1'; });
            CListener third([&] { told += '3'; });
            CListener fourth([&] { told += '4'; });
            std::vector<CListener*> listeners;
            CListener second([&] {
                told += '2';
                const std::string mine = std::exchange(changes, "");
                for (size_t n = 0; n < mine.size(); n += 2)
                    if (mine[n] == 'p')
                        Adapter().SetConfiguration(policy.c_str());
                    else if (mine[n] == '+')
                        Adapter().RegisterStateObserver(listeners[static_cast<size_t>(mine[n + 1] - '1')]);
                    else
                        Adapter().DeRegisterStateObserver(listeners[static_cast<size_t>(mine[n + 1] - '1')]);
            });
            listeners = { &first, &second, &third, &fourth };
            for (size_t n = 0; n < 3; ++n)
                Adapter().RegisterStateObserver(listeners[n]);
            told.clear();
            changes = row.changes;
            tell(true);
            EXPECT_EQ(row.szMeanwhile, std::exchange(told, ""));
            tell(false);
            EXPECT_EQ(row.szNext, told);
            StopAdapter();
            m_agent.Stop();
        }
}
