// Every operation with arguments and callbacks that mean harm: afterwards the adapter works, on any thread.
#include "EdgeText.h"
#include "HostThrow.h"
#include "ovCore/OvHostCall.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "tests/PatchAdapter/AdapterFixture.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>

namespace
{

using Throw = void (*)();

/// A host that throws in every call while it is told to. Keeps no text: there are large ones.
class CHostile final : public ILogSink, public IStateObserver, public IStatusReceiver, public IConfigurationReceiver
{
public:
    void LogError(const char*, ...) override { ++m_nErrors, MayThrow(); }
    void LogWarning(const char*, ...) override { MayThrow(); }
    void LogInfo(const char*, ...) override { MayThrow(); }
    void LogDetail(const char*, ...) override { MayThrow(); }
    void LogTrace(const char*, ...) override { MayThrow(); }
    void OnStateChange(int32_t, const char*) override
    {
        ++m_nTold;
        m_told.SetEvent();
        MayThrow();
    }
    void OnStatus(const char*) override { ++m_nTold, MayThrow(); }
    void OnConfiguration(const char*) override { ++m_nTold, MayThrow(); }

    std::atomic<Throw> m_pfnThrow = nullptr;
    std::atomic<unsigned> m_nErrors = 0;
    std::atomic<unsigned> m_nTold = 0; // documents
    COvEvent m_told{ false, false, nullptr, nullptr };

private:
    void MayThrow() const
    {
        if (const Throw pfnThrow = m_pfnThrow)
            pfnThrow();
    }
};

const struct
{
    const char* szWhat;
    Throw pfnThrow;
} s_throws[] = {
    { "a standard exception", [] { throw std::runtime_error("caf\xE9 %s%n"); } },
    { "one of ours", [] { throw COvException(E_INVALIDARG, L"Host", 1, COvEvidence(L"n", LONG{ 1 })); } },
    { "a number", [] { throw 5; } },
    { "something unknown", [] { throw std::unique_ptr<int>(new int); } },
    { "the host's compiler's", [] { ThrowAsHost(); } },
};

class HostileArguments : public CAdapterTest
{
protected:
    /// Lets the monitor tell of the service first, so that it tells nobody later on.
    void Start()
    {
        m_pAdapter = m_factory.Initialise(nullptr, nullptr, &m_host, nullptr);
        ASSERT_NE(nullptr, m_pAdapter);
        m_pAdapter->RegisterStateObserver(&m_observer);
        m_observer.m_told.Lock(0); // not the status at registration
        ASSERT_TRUE(m_agent.Start());
        ASSERT_TRUE(m_observer.m_told.Lock(60'000));
    }

    void Stop()
    {
        m_factory.Uninitialise(m_pAdapter);
        m_agent.Stop();
    }

    ~HostileArguments() override { Stop(); }

    /// Every operation, with the same argument where it is looked at by none.
    void CallAll(CHostile* pCallback, const char* szText, void* pValue)
    {
        m_pAdapter->GetStatus(pCallback);
        m_pAdapter->RegisterStateObserver(pCallback);
        m_pAdapter->SetConfiguration(szText);
        m_pAdapter->DeRegisterStateObserver(pCallback);
        m_pAdapter->RegisterEventObserver(pValue);
        m_pAdapter->DeRegisterEventObserver(pValue);
        m_pAdapter->RegisterConfigStateObserver(pValue);
        m_pAdapter->DeRegisterConfigStateObserver(pValue);
        m_pAdapter->DoAction(pValue, pValue);
        m_pAdapter->RegisterActionOutcomeObserver(pValue);
        m_pAdapter->DeRegisterActionOutcomeObserver(pValue);
        m_pAdapter->SetFeature(pValue);
        m_factory.Uninitialise(static_cast<IAdapter*>(pValue));
        EXPECT_EQ(m_pAdapter, m_factory.Initialise(pValue, pValue, &m_host, pValue));
    }

    /// Another thread gets every lock, and the observer from the start is still there.
    void ExpectUnharmed(const std::string& what)
    {
        SCOPED_TRACE(what);
        m_host.m_pfnThrow = m_observer.m_pfnThrow = nullptr;
        m_observer.m_nTold = 0;
        StoreRevision(L"old");
        auto told = std::async(std::launch::async, [&] {
            const CComApartment apartment;
            CHostile other;
            m_pAdapter->GetStatus(&other);
            m_pAdapter->RegisterStateObserver(&other);
            m_pAdapter->SetConfiguration(PolicyConfiguring("").c_str());
            m_pAdapter->DeRegisterStateObserver(&other);
            ::SetErrorInfo(0, nullptr);
            return other.m_nTold.load();
        });
        ASSERT_EQ(std::future_status::ready, told.wait_for(std::chrono::minutes(1)));
        EXPECT_LE(3u, told.get());
        EXPECT_LE(1u, m_observer.m_nTold);
        EXPECT_EQ(L"rev-1", StoredRevision());
    }

    CHostile m_host;
    CHostile m_observer;
    PatchAdapterFactory m_factory;
    IAdapter* m_pAdapter = nullptr;
};

} // namespace

TEST_F(HostileArguments, NullsAndAddressesThatNobodyMayRead)
{
    const CEdgeText edge("");
    Start();
    for (void* const pValue : { static_cast<void*>(nullptr), edge.Behind() })
    {
        CallAll(nullptr, nullptr, pValue);
        EXPECT_TRUE(m_pAdapter->GetConfiguration(nullptr));
        m_pAdapter->DeRegisterStateObserver(static_cast<IStateObserver*>(pValue)); // unknown, so not called
        ExpectUnharmed("null");
    }
}

TEST_F(HostileArguments, TextsThatEndAtAPageOrAreHuge)
{
    const size_t nHuge = size_t{ std::getenv("OV_LONG") != nullptr ? 64u : 16u } << 20;
    const std::string good = PolicyConfiguring("<serverKey>K</serverKey>");
    const struct
    {
        const char* szWhat;
        std::string text;
        std::optional<bool> bApplied; // nothing: as the parser and the memory allow
    } rows[] = {
        { "an empty text", "", false },
        { "one letter", "x", false },
        { "a good one", good, true },
        { "one that is cut short", good.substr(0, good.size() - 1), false },
        { "one that ends in an attribute", good.substr(0, 40), false },
        { "a bare lead byte", good + "\xC3", false },
        { "many MB of letters", std::string(nHuge, 'x'), false },
        { "many MB of key", PolicyConfiguring("<serverKey>" + std::string(nHuge, 'k') + "</serverKey>"), std::nullopt },
        { "many MB of white space", PolicyConfiguring(std::string(nHuge, ' ')), std::nullopt },
    };
    Start();
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.szWhat);
        const CEdgeText edge(row.text);
        StoreRevision(L"old");
        m_host.m_nErrors = 0;
        m_pAdapter->SetConfiguration(edge.Get());
        const bool bApplied = StoredRevision() == L"rev-1";
        EXPECT_EQ(row.bApplied.value_or(bApplied), bApplied);
        EXPECT_TRUE(bApplied || StoredRevision() == L"old");
        EXPECT_EQ(bApplied ? 0u : 1u, m_host.m_nErrors);
        ExpectUnharmed(row.szWhat);
    }
}

TEST_F(HostileArguments, CallbacksThatThrow)
{
    Start();
    for (const auto& row : s_throws)
    {
        CHostile thrower;
        thrower.m_pfnThrow = row.pfnThrow;
        m_host.m_nErrors = 0;
        const std::string policy = PolicyConfiguring("");
        CallAll(&thrower, policy.c_str(), nullptr);
        EXPECT_EQ(5u, m_host.m_nErrors) << row.szWhat; // a receiver, two observers, Uninitialise, Initialise
        EXPECT_ANY_THROW(OvCallHost([&] { m_pAdapter->GetConfiguration(&thrower); })) << row.szWhat;
        EXPECT_EQ(4u, thrower.m_nTold) << row.szWhat;
        ExpectUnharmed(row.szWhat);
    }
}

TEST_F(HostileArguments, ALogThatThrows)
{
    Start();
    for (const auto& row : s_throws)
    {
        CHostile calm;
        m_host.m_pfnThrow = row.pfnThrow;
        const std::string policy = PolicyConfiguring("");
        CallAll(&calm, policy.c_str(), nullptr);
        EXPECT_TRUE(m_pAdapter->GetConfiguration(&calm));
        EXPECT_EQ(4u, calm.m_nTold) << row.szWhat;
        ExpectUnharmed(row.szWhat);
        m_host.m_pfnThrow = row.pfnThrow; // while it ends and begins, too
        Stop();
        Start();
        ExpectUnharmed(row.szWhat);
    }
}
