// Too little memory and too large documents.
#include "AdapterFixture.h"
#include "FailingNew.h"
#include "PatchAdapter/PatchAdapterFactory.h"

namespace
{

class Limits : public CAdapterTest
{
};

std::string Repeated(const std::string& text, size_t nTimes)
{
    std::string result;
    while (nTimes-- > 0)
        result += text;
    return result;
}

} // namespace

TEST_F(Limits, WithoutMemoryThereIsAWholeAdapterOrNone)
{
    PatchAdapterFactory factory;
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        IAdapter* pAdapter = nullptr;
        m_sink.Clear();
        {
            const CFailingNew failing(nFail);
            pAdapter = factory.Initialise(nullptr, nullptr, &m_sink, nullptr);
            bReached = failing.Reached();
        }
        EXPECT_EQ(pAdapter != nullptr, g_bAdapterCreated) << nFail;
        factory.Uninitialise(pAdapter);
        EXPECT_FALSE(g_bAdapterCreated) << nFail;
    }
}

TEST_F(Limits, WithoutMemoryThePolicyIsAppliedOrRefused)
{
    StartWithService();
    const std::string document = PolicyConfiguring("<assessment enabled=\"1\" periodInHours=\"1\"/>");
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
        EXPECT_TRUE(stored == L"rev-1" ? nPushed == 1 : stored == L"old" && nPushed <= 1) << nFail;
        EXPECT_TRUE(bReached || stored == L"rev-1");
    }
}

TEST_F(Limits, AHugePolicyIsAppliedOrRefusedWithALine)
{
    StartWithService();
    const struct
    {
        std::string configuration;
        bool bMustApply;
    } rows[] = {
        { "<serverKey>" + std::string(10000000, 'k') + "</serverKey>", false },
        { Repeated("<x/>", 100000), true },
        { Repeated("<x>", 10000) + Repeated("</x>", 10000), false },
    };
    for (const auto& row : rows)
    {
        m_sink.Clear();
        Adapter().SetConfiguration(PolicyConfiguring(row.configuration).c_str());
        const std::string transcript = m_sink.OfThread();
        const bool bApplied = transcript.find("2 Info Msg: Configuration successfully applied\n") != std::string::npos;
        const bool bRefused = transcript.find("\n0 Error: ") != std::string::npos;
        EXPECT_NE(bApplied, bRefused) << transcript.substr(0, 200);
        EXPECT_TRUE(bApplied || !row.bMustApply);
    }
    m_sink.Clear();
    Adapter().SetConfiguration(std::string(64u << 20, ' ').c_str());
    EXPECT_NE(std::string::npos,
              m_sink.OfThread().find("Evidence: Info Msg: The received xml is too large nBytes: 67108864 nMaxBytes: "
                                     "16777216 Function: CPatchAdapter::SetConfiguration\n"));
}
