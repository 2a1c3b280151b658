#include "AdapterFixture.h"
#include "FailingNew.h"

namespace
{

class PolicyIntake : public CAdapterTest
{
protected:
    PolicyIntake()
    {
        StoreRevision(L"stored");
        StartWithService();
    }
};

} // namespace

TEST_F(PolicyIntake, ATypeThatCannotBeReadLeavesTheNewRevisionWithTheOldType)
{
    Configure(PolicyWith("<Comp RevID=\"new\" policyType=\"x\"/>"));
    EXPECT_NE(std::string::npos, Status().find(" policyType=\"20\" Res=\"Same\" RevID=\"new\""));
    Configure(PolicyWith("<Comp RevID=\"newer\" policyType=\"-7\"/>")); // check D comes after both
    EXPECT_NE(std::string::npos, Status().find(" policyType=\"-7\" Res=\"Same\" RevID=\"newer\""));
    EXPECT_EQ(L"stored", StoredRevision());
}

TEST_F(PolicyIntake, ADocumentWithoutAPartKeepsTheEarlierOnes)
{
    const std::string loaded = "2 Info Msg: Loaded configuration xml\n";
    const struct
    {
        std::string document;
        const char* identity;
    } rows[] = {
        { PolicyWith("", "config"), "2 Revision: stored Policy Type: 20 Group:  Policy: \n" },
        { PolicyWith("<Comp RevID=\"r1\" policyType=\"3\"/><groupRef name=\"g1\"/>"
                     "<configuration><policyType name=\"p1\"/></configuration>"),
          "2 Revision: r1 Policy Type: 3 Group: g1 Policy: p1\n" },
        { PolicyWith("<Comp RevID=\"r2\" policyType=\"4\"/><configuration/>"),
          "2 Revision: r2 Policy Type: 4 Group: g1 Policy: p1\n" },
        { PolicyWith("<Comp RevID=\"a\" policyType=\"5\"/><groupRef name=\"a\"/><configuration/><groupRef name=\"b\"/>"
                     "<Comp RevID=\"\" policyType=\"&#x20;20.5 \"/>",
                     "n:policy type=\"patch\" xmlns:n=\"urn:n\""),
          "2 Revision:  Policy Type: 20 Group: b Policy: p1\n" },
        { PolicyWith("<Comp RevID=\"r3\" policyType=\"1,000\"/><groupRef name=\"\xE9&#xE9;\"/>", "config"),
          "2 Revision: r3 Policy Type: 1000 Group: \xE9\xE9 Policy: p1\n" },
    };
    for (const auto& row : rows)
    {
        const std::string transcript = Configure(row.document);
        EXPECT_NE(std::string::npos, transcript.find(row.identity + loaded)) << transcript;
    }
    EXPECT_EQ(3u, m_agent.GetReceivedSettings().size()); // nothing is pushed for a configuration
    EXPECT_EQ(L"", StoredRevision());
}

TEST_F(PolicyIntake, WithoutMemoryThePolicyIsAppliedOrRefusedAndNothingIsLeftBehind)
{
    const std::string document = PolicyConfiguring("<assessment enabled=\"1\" periodInHours=\"1\"/>", "new");
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        StoreRevision(L"old");
        m_agent.ClearRecords();
        {
            const CFailingNew failing(nFail);
            Adapter().SetConfiguration(document.c_str());
            bReached = failing.Reached();
        }
        const std::optional<std::wstring> stored = StoredRevision();
        const size_t nPushed = m_agent.GetReceivedSettings().size();
        EXPECT_TRUE(stored == L"new" ? nPushed == 1 : stored == L"old" && nPushed <= 1) << nFail;
        EXPECT_TRUE(bReached || stored == L"new");
    }
}

TEST_F(PolicyIntake, AHugePolicyIsAppliedOrRefusedWithALine)
{
    const std::string applied = "2 Info Msg: Configuration successfully applied\n";
    const auto repeated = [](const std::string& text, size_t nTimes) {
        std::string result;
        for (size_t n = 0; n < nTimes; ++n)
            result += text;
        return result;
    };
    const struct
    {
        std::string configuration;
        bool bMustApply;
    } rows[] = {
        { "<serverKey>" + std::string(10000000, 'k') + "</serverKey>", false },
        { repeated("<x/>", 100000), true },
        { repeated("<x>", 10000) + repeated("</x>", 10000), false },
    };
    for (const auto& row : rows)
    {
        m_sink.Clear();
        Adapter().SetConfiguration(PolicyConfiguring(row.configuration).c_str());
        const std::string transcript = m_sink.OfThread();
        const bool bApplied = transcript.find(applied) != std::string::npos;
        const bool bRefused = transcript.find("\n0 Error: ") != std::string::npos;
        EXPECT_NE(bApplied, bRefused) << transcript.substr(0, 200);
        EXPECT_TRUE(bApplied || !row.bMustApply);
    }
}
