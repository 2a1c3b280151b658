// What the host's callbacks throw: what is written of it, by the operation that called and by the monitor.
#include "AdapterFixture.h"
#include "HostThrow.h"
#include "Masking.h"
#include "ovCore/OvCallOut.h"
#include "Raised.h"

#include <set>
#include <thread>

namespace
{

class ForeignException : public CAdapterTest
{
};

std::string Code(LONG lCode)
{
    const std::wstring item = ErrorItem(L"Code", lCode);
    return std::string(item.begin(), item.end());
}

const std::string s_register = "Function: CPatchAdapter::RegisterStateObserver";
const std::string s_notify = "Function: CMonitorThread::NotifyObservers\n";
const std::string s_unknownToMonitor = "3 Info Msg: \"Monitor Thread unknown exception caught!\"\n";

const struct
{
    void (*pfnThrow)();
    std::string line;
    std::string monitorsLine;
} s_rows[] = {
    { [] { throw COvException(E_INVALIDARG, L"a\\Observer", 7, COvEvidence(L"n", LONG{ -1 })); },
      "0 Error: 80070057 File: Observer Line: # Evidence: n: -1\n",
      ErrorLine("MonitorThread", " { *BEGIN Exception Collection*  " + Code(E_INVALIDARG) +
                                     " Evidence: n: -1 Source: Observer(#)  **END Exception Collection** } Info Msg: A "
                                     "Monitor Thread exception was encountered Function: CMonitorThread::Error") },
    { [] { throw std::runtime_error("caf\xE9"); },
      ErrorLine("PatchAdapter", "Exception Info:  { Code: STL EXCEPTION Description: caf\xE9 } Info Msg: A runtime "
                                "exception was encountered " +
                                    s_register),
      s_unknownToMonitor },
    { [] { throw 5; }, ErrorLine("PatchAdapter", "Info Msg: An unknown exception was encountered " + s_register),
      s_unknownToMonitor },
};

} // namespace

TEST_F(ForeignException, OfAnObserverIsReportedAndItStaysRegistered)
{
    StartAdapter();
    for (const auto& row : s_rows)
    {
        CListener observer(row.pfnThrow);
        for (unsigned n = 0; n < 2; ++n)
            EXPECT_EQ("4 Entering " + s_register + "\n2 Info Msg: Registering state observer\n" + StatusBuildLines() +
                          "2 Info Msg: Notifying state observer\n" + row.line + "4 Exiting " + s_register + "\n",
                      m_sink.TranscriptOf([&] { Adapter().RegisterStateObserver(&observer); }));
        Adapter().DeRegisterStateObserver(&observer);
        Adapter().DeRegisterStateObserver(&observer);
    }
}

TEST_F(ForeignException, OfAnObserverEndsTheMonitor)
{
    for (const auto& row : s_rows)
    {
        StartAdapter();
        CListener observer(row.pfnThrow);
        Adapter().RegisterStateObserver(&observer);
        m_agent.Start();
        ASSERT_TRUE(m_sink.WaitForText("Exiting Function: CMonitorThread::DoWork"));
        Adapter().DeRegisterStateObserver(&observer); // the lock was released
        m_agent.Stop();
        EXPECT_EQ("4 Entering Function: CMonitorThread::DoWork\n4 Entering " + s_notify + StatusBuildLines() +
                      "2 Info Msg: Notifying state observer of status change\n4 Exiting " + s_notify +
                      row.monitorsLine +
                      "3 Info Msg: \"Monitor Thread exiting\"\n4 Exiting Function: CMonitorThread::DoWork\n",
                  Masked(m_sink.OfOtherThreads()));
    }
}

TEST_F(ForeignException, IsWrittenBeforeTheLockIsReleased)
{
    StartAdapter();
    std::thread other;
    CListener observer([&] {
        other = std::thread([&] { Adapter().DeRegisterStateObserver(nullptr); });
        m_sink.WaitForText("Entering Function: CPatchAdapter::DeRegisterStateObserver");
        throw 5;
    });
    Adapter().RegisterStateObserver(&observer);
    other.join();
    std::string order; // of the failure's line, the other thread's exit
    for (const CTold& told : m_sink.All())
        order += told.what == "0"                                                          ? "failure "
                 : told.text == "Exiting Function: CPatchAdapter::DeRegisterStateObserver" ? "other "
                                                                                           : "";
    EXPECT_EQ("failure other ", order);
}

TEST_F(ForeignException, OfAConfigurationReceiverIsTheHostsOwn)
{
    StartAdapter();
    CListener receiver(ThrowAsHost);
    const auto asTheHost = [&] { OvCallOut([&] { Adapter().GetConfiguration(&receiver); }); };
    const std::string name = "Function: CPatchAdapter::GetConfiguration\n";
    EXPECT_EQ("4 Entering " + name + "4 Exiting " + name, m_sink.TranscriptOf([&] { EXPECT_ANY_THROW(asTheHost()); }));
}

TEST_F(ForeignException, CarriesTheLineOfTheOperationThatCaughtIt)
{
    StartWithService();
    m_sink.Clear();
    std::set<std::string> lines;
    for (void (*const pfnThrow)() : { +[] { throw std::runtime_error("x"); }, +[] { throw 5; } })
    {
        CListener thrower(pfnThrow);
        Adapter().GetStatus(&thrower);
        Adapter().RegisterStateObserver(&thrower);
        Adapter().SetConfiguration(PolicyConfiguring("").c_str());
        Adapter().DeRegisterStateObserver(&thrower);
    }
    for (const CTold& told : m_sink.All())
        if (told.what == "0")
            lines.insert(told.text.substr(0, told.text.find(" Evidence:")));
    EXPECT_EQ(6u, m_sink.CountOf("0"));
    EXPECT_EQ(3u, lines.size());
}
