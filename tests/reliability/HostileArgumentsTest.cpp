// Every operation with arguments and callbacks that mean harm: afterwards the adapter works, on any thread.
#include "HostileHost.h"
#include "HostThrow.h"
#include "Operations.h"
#include "ovCore/OvCallOut.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "TestPlatform.h"
#include "tests/PatchAdapter/AdapterFixture.h"

#include <cstdlib>
#include <future>
#include <optional>

namespace
{

const struct
{
    const char* szWhat;
    void (*pfnThrow)();
} s_throws[] = {
    { "a standard exception", [] { throw std::runtime_error("caf\xE9 %s%n"); } },
    { "one of ours", [] { throw COvException(E_INVALIDARG, L"Host", 1, COvEvidence(L"n", LONG{ 1 })); } },
    { "a number", [] { throw 5; } },
    { "something unknown", [] { throw std::unique_ptr<int>(new int); } },
    { "the host's compiler's", ThrowAsHost },
};

class HostileArguments : public CAdapterTest
{
protected:
    ~HostileArguments() override { Stop(); }

    /// Lets the monitor tell of the service first, so that it tells nobody later on.
    void Start()
    {
        m_pAdapter = m_factory.Initialise(nullptr, nullptr, &m_log, nullptr);
        ASSERT_NE(nullptr, m_pAdapter);
        m_pAdapter->RegisterStateObserver(&m_observer);
        m_observer.m_told.Lock(0); // not the status at registration
        ASSERT_TRUE(m_agent.Start());
        ASSERT_TRUE(m_observer.m_told.Lock(INFINITE)); // a limit would be scaled with the pauses
    }
    void Stop()
    {
        m_factory.Uninitialise(m_pAdapter);
        m_agent.Stop();
    }

    /// Every operation that catches what callbacks throw. @param pValue  for those that look at no argument.
    void CallAll(CHostileHost* pCallback, const char* szText, void* pValue)
    {
        const CArguments with{ pCallback, pCallback, pCallback, szText, pValue };
        m_pAdapter->RegisterStateObserver(pCallback); // to be told of the policy
        for (const COperation& operation : OPERATIONS)
            if (&operation != &OPERATIONS[GET_CONFIGURATION])
                operation.pfnCall(*m_pAdapter, with);
        m_pAdapter->DeRegisterStateObserver(pCallback);
        m_pAdapter->DeRegisterStateObserver(static_cast<IStateObserver*>(pValue)); // unknown, so not called
        m_factory.Uninitialise(static_cast<IAdapter*>(pValue));
        EXPECT_EQ(m_pAdapter, m_factory.Initialise(pValue, pValue, &m_log, pValue));
    }

    /// Another thread gets every lock, and the observer from the start is still there.
    void ExpectUnharmed(const char* szAfter)
    {
        SCOPED_TRACE(szAfter);
        m_observer.m_nTold = 0;
        StoreRevision(L"old");
        auto told = std::async(std::launch::async, [&] {
            const CComApartment apartment;
            CHostileHost other;
            m_pAdapter->GetStatus(&other);
            m_pAdapter->RegisterStateObserver(&other);
            m_pAdapter->SetConfiguration(PolicyConfiguring("").c_str());
            m_pAdapter->DeRegisterStateObserver(&other);
            return other.m_nTold.load();
        });
        ASSERT_EQ(std::future_status::ready, told.wait_for(std::chrono::minutes(1)));
        EXPECT_EQ(3u, told.get());
        EXPECT_EQ(1u, m_observer.m_nTold);
        EXPECT_EQ(L"rev-1", StoredRevision());
    }

    CHostileHost m_log;
    CHostileHost m_observer;
    PatchAdapterFactory m_factory;
    IAdapter* m_pAdapter = nullptr;
};

} // namespace

TEST_F(HostileArguments, NullsAndAddressesThatNobodyMayRead)
{
    Start();
    for (void* const pValue : { static_cast<void*>(nullptr), static_cast<void*>(PagesBeforeAWall(1) + PAGE_BYTES) })
    {
        CallAll(nullptr, nullptr, pValue);
        EXPECT_TRUE(m_pAdapter->GetConfiguration(nullptr));
        ExpectUnharmed("nulls");
    }
}

TEST_F(HostileArguments, TextsThatEndAtAWallOrAreHuge)
{
    const size_t nHuge = size_t{ std::getenv("OV_LONG") != nullptr ? 64u : 4u } << 20;
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
        { "huge letters", std::string(nHuge, 'x'), false },
        { "a huge key", PolicyConfiguring("<serverKey>" + std::string(nHuge, 'k') + "</serverKey>"), std::nullopt },
        { "huge white space", PolicyConfiguring(std::string(nHuge, ' ')), std::nullopt },
    };
    Start();
    char* const pWall = PagesBeforeAWall(nHuge / PAGE_BYTES + 1) + (nHuge / PAGE_BYTES + 1) * PAGE_BYTES;
    for (const auto& row : rows)
    {
        StoreRevision(L"old");
        m_log.m_nErrors = 0;
        char* const pText = pWall - row.text.size() - 1;
        std::copy_n(row.text.c_str(), row.text.size() + 1, pText);
        m_pAdapter->SetConfiguration(pText);
        const bool bApplied = StoredRevision() == L"rev-1";
        EXPECT_EQ(row.bApplied.value_or(bApplied), bApplied) << row.szWhat;
        EXPECT_EQ(bApplied ? 0u : 1u, m_log.m_nErrors) << row.szWhat;
        ExpectUnharmed(row.szWhat);
    }
}

TEST_F(HostileArguments, CallbacksAndALogThatThrow)
{
    const std::string policy = PolicyConfiguring("");
    Start();
    for (const auto& row : s_throws)
        for (const bool bLog : { false, true })
        {
            CHostileHost callback;
            CHostileHost& thrower = bLog ? m_log : callback;
            m_log.m_nErrors = 0;
            thrower.m_pfnThrow = row.pfnThrow;
            CallAll(&callback, policy.c_str(), nullptr);
            EXPECT_EQ(bLog ? 2u : 6u, m_log.m_nErrors) << row.szWhat; // two from the factory
            bool bThrown = false;
            try
            {
                OvCallOut([&] { m_pAdapter->GetConfiguration(&callback); }); // its receiver's is the host's own
            }
            catch (...)
            {
                bThrown = true;
            }
            EXPECT_NE(bLog, bThrown) << row.szWhat;
            EXPECT_EQ(5u, callback.m_nTold) << row.szWhat;
            if (bLog) // while it ends and begins, too
            {
                Stop();
                Start();
            }
            ExpectUnharmed(row.szWhat);
            m_log.m_pfnThrow = nullptr;
        }
}
