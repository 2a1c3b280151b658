// An adapter with a running service that stays from input to input.
#pragma once

#include "tests/PatchAdapter/AdapterFixture.h"

#include <optional>
#include <vector>

/// What one policy document led to.
struct CPolicyOutcome
{
    size_t nErrors;                      ///< trace lines of kind 0
    std::vector<std::wstring> settings;  ///< what the service received
    std::optional<std::wstring> wzRevId; ///< what is recorded then
};

class CFuzzAdapter final : public CAdapterTest
{
public:
    static constexpr wchar_t OLD_REVISION[] = L"old";

    static CFuzzAdapter& Get()
    {
        testing::UnitTest::GetInstance(); // it has to outlive the fixture
        static CFuzzAdapter s_adapter;
        return s_adapter;
    }

    /// Forgets what was recorded before: the trace, the service's calls, the revision.
    void Reset();

    CPolicyOutcome Configure(const char* szPolicy)
    {
        Reset();
        Adapter().SetConfiguration(szPolicy);
        return { m_sink.CountOf("0"), m_agent.GetReceivedSettings(), StoredRevision() };
    }

    /// Ends the run unless the COM objects and strings are those at the start. Handles are not counted: the monitor
    /// opens and closes one all the time.
    void DemandNothingLeft() const;

    using CAdapterTest::Adapter;
    CAgentSimulator& Service() { return m_agent; }

private:
    CFuzzAdapter();
    void TestBody() override {}

    unsigned m_nObjects;
    unsigned m_nStrings;
};
