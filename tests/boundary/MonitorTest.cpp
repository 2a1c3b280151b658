// The monitor: who hears of the service's coming and going, and how it ends.
#include "Host.h"

#include "Masking.h"

namespace
{

class Monitor : public CHost
{
protected:
    void TearDown() override
    {
        if (m_pAdapter != nullptr)
            m_pAdapter->DeRegisterStateObserver(&m_observer);
        CHost::TearDown();
    }

    void StartWithObserver()
    {
        ASSERT_TRUE(Start());
        m_pAdapter->RegisterStateObserver(&m_observer);
    }

    /// Waits for the next notification. @return what it says of the service, or that none came.
    std::string Next()
    {
        if (!m_observer.WaitForCalls(++m_nSeen))
            return "none";
        const CCallback call = m_observer.Calls()[m_nSeen - 1];
        EXPECT_EQ(1, call.nValue);
        EXPECT_NE(::GetCurrentThreadId(), call.dwThreadId);
        const bool bRuns = call.text.find("serviceRunning=\"true\"") != std::string::npos;
        return bRuns ? "running" : "gone";
    }

    CRecordingObserver m_observer;
    size_t m_nSeen = 1; // the first one came with the registration
};

} // namespace

TEST_F(Monitor, EachChangeOfTheServiceIsToldOnce)
{
    StartWithObserver();
    for (unsigned n = 0; n < 3; ++n)
    {
        ASSERT_TRUE(m_agent.Start());
        EXPECT_EQ("running", Next());
        m_agent.Die();
        EXPECT_EQ("gone", Next());
    }
    Stop();
    EXPECT_EQ(m_nSeen, m_observer.Count());
    const std::string notify = "CMonitorThread::NotifyObservers";
    const std::string told = "2 Info Msg: Notifying state observer of status change\n";
    std::string expected = Entering("CMonitorThread::DoWork");
    for (unsigned n = 0; n < 6; ++n)
        expected += Entering(notify) + StatusLines() + told + Exiting(notify);
    expected += "3 Info Msg: \"Monitor Thread exiting\"\n" + Exiting("CMonitorThread::DoWork");
    EXPECT_EQ(expected, Masked(m_sink.OfOtherThreads()));
}

TEST_F(Monitor, AnEventThatIsNotSignalledIsNoService)
{
    ASSERT_TRUE(m_agent.SetEventState(AgentEvent::NotSignalled));
    StartWithObserver();
    EXPECT_EQ(1u, m_observer.Count());
    ASSERT_TRUE(m_agent.Start());
    EXPECT_EQ("running", Next());
    EXPECT_EQ(2u, m_observer.Count());
}

TEST_F(Monitor, AnObserverThatThrowsEndsItForGood)
{
    ASSERT_TRUE(Start());
    bool bThrow = false;
    CRecordingObserver thrower([&] {
        if (bThrow)
            ThrowAsHost();
    });
    m_pAdapter->RegisterStateObserver(&thrower);
    bThrow = true; // seen by the monitor through the event that is signalled next
    ASSERT_TRUE(m_agent.Start());
    ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::DoWork"));
    const std::string lines = m_sink.OfOtherThreads();
    EXPECT_NE(std::string::npos, lines.find("3 Info Msg: \"Monitor Thread unknown exception caught!\"\n"
                                            "3 Info Msg: \"Monitor Thread exiting\"\n"))
        << lines;
    m_agent.Stop();
    EXPECT_EQ(2u, thrower.Count());
    m_pAdapter->DeRegisterStateObserver(&thrower); // the lock is free
}
