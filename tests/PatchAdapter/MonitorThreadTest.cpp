#include "AdapterFixture.h"
#include "Masking.h"
#include "SystemText.h"

namespace
{

class MonitorThread : public CAdapterTest
{
protected:
    /// Ends the adapter. @return all that its monitor wrote, time stamps masked.
    std::string MonitorTranscript()
    {
        StopAdapter();
        return Masked(m_sink.OfOtherThreads());
    }
};

const std::string s_entering = "4 Entering Function: CMonitorThread::DoWork\n";
const std::string s_exiting = "3 Info Msg: \"Monitor Thread exiting\"\n4 Exiting Function: CMonitorThread::DoWork\n";

// One notification: the build, then as many observers.
std::string Notification(unsigned nObservers)
{
    std::string lines = "4 Entering Function: CMonitorThread::NotifyObservers\n" + StatusBuildLines();
    while (nObservers-- > 0)
        lines += "2 Info Msg: Notifying state observer of status change\n";
    return lines + "4 Exiting Function: CMonitorThread::NotifyObservers\n";
}

bool SaysRunning(const CCallback& call)
{
    EXPECT_EQ(1, call.nValue);
    return call.text.find(" serviceRunning=\"true\" ") != std::string::npos;
}

} // namespace

TEST_F(MonitorThread, TellsEveryObserverWhenTheServiceComesAndGoes)
{
    StartAdapter();
    CRecordingObserver first;
    CRecordingObserver second;
    Adapter().RegisterStateObserver(&first);
    Adapter().RegisterStateObserver(&second);
    for (size_t n = 1; n <= 3; ++n)
    {
        ASSERT_TRUE(m_agent.Start());
        ASSERT_TRUE(second.WaitForCalls(2 * n));
        if (n == 2)
            m_agent.Die(); // the event is left as it is
        else
            m_agent.Stop();
        ASSERT_TRUE(second.WaitForCalls(2 * n + 1));
    }
    std::string lines;
    for (int n = 0; n < 6; ++n)
        lines += Notification(2);
    EXPECT_EQ(s_entering + lines + s_exiting, MonitorTranscript());
    const std::vector<CCallback> calls = first.Calls();
    ASSERT_EQ(7u, calls.size());
    for (size_t i = 0; i < calls.size(); ++i)
    {
        EXPECT_EQ(i % 2 == 1, SaysRunning(calls[i])) << i;
        EXPECT_EQ(i == 0, calls[i].dwThreadId == ::GetCurrentThreadId()) << i;
    }
}

TEST_F(MonitorThread, SeesAServiceThatWasThereBefore)
{
    m_agent.Start();
    StartAdapter();
    ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::NotifyObservers"));
    EXPECT_EQ(s_entering + Notification(0) + s_exiting, MonitorTranscript());
}

TEST_F(MonitorThread, AnEventThatIsNotSignalledIsNoService)
{
    m_agent.PublishClass();
    m_agent.SetEventState(AgentEvent::NotSignalled);
    StartAdapter();
    CRecordingObserver observer;
    Adapter().RegisterStateObserver(&observer);
    for (int i = 0; i < 20; ++i) // time for the monitor to look, again and again
        Status();
    EXPECT_EQ(1u, observer.Count());
    m_agent.SetEventState(AgentEvent::Signalled);
    ASSERT_TRUE(observer.WaitForCalls(2));
    EXPECT_TRUE(SaysRunning(observer.Calls()[1]));
    m_agent.SetEventState(AgentEvent::NotSignalled); // it still exists: nothing has changed for the monitor
    for (int i = 0; i < 20; ++i)
        Status();
    EXPECT_EQ(s_entering + Notification(1) + s_exiting, MonitorTranscript());
    EXPECT_EQ(2u, observer.Count());
}

TEST_F(MonitorThread, AnObserverThatThrowsEndsItForGood)
{
    const COvEvidence evidence(L"Info Msg", L"the observer's");
    const struct
    {
        std::function<void()> fail;
        std::string line;
    } rows[] = {
        { [&] { throw COvException(E_FAIL, L"a\\Observer", 7, evidence); },
          "0 Error: 80004005 File: MonitorThread Line: # Evidence:  { *BEGIN Exception Collection*  Code: " +
              ErrorCodeText(E_FAIL) +
              " Evidence: Info Msg: the observer's Source: Observer(#)  **END Exception Collection** } Info Msg: A "
              "Monitor Thread exception was encountered Function: CMonitorThread::Error\n" },
        { [] { throw std::runtime_error("x"); }, "3 Info Msg: \"Monitor Thread unknown exception caught!\"\n" },
        { [] { throw 5; }, "3 Info Msg: \"Monitor Thread unknown exception caught!\"\n" },
    };
    for (const auto& row : rows)
    {
        m_sink.Clear();
        StartAdapter();
        CRecordingObserver failing;
        CRecordingObserver second;
        const DWORD dwThisThread = ::GetCurrentThreadId();
        CRecordingObserver first([&] {
            if (::GetCurrentThreadId() != dwThisThread)
                row.fail();
        });
        Adapter().RegisterStateObserver(&first);
        Adapter().RegisterStateObserver(&second);
        m_agent.Start();
        ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::DoWork"));
        Adapter().DeRegisterStateObserver(&first); // the lock was released
        m_agent.Stop();
        EXPECT_EQ(s_entering + Notification(1) + row.line + s_exiting, MonitorTranscript());
        EXPECT_EQ(1u, second.Count());
    }
}

TEST_F(MonitorThread, EndsAtOnceWithTheAdapter)
{
    for (int i = 0; i < 20; ++i)
    {
        m_sink.Clear();
        StartAdapter();
        EXPECT_EQ(s_entering + s_exiting, MonitorTranscript());
    }
}
