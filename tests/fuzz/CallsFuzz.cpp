// The thirteen operations in any order, with observers that come, go, ask for status while they are told, and throw,
// and a service whose calls fail: everyone is told as often as a plain list says, and nothing is left behind.
#include "Fuzz.h"
#include "FuzzAdapter.h"
#include "Operations.h"

#include <algorithm>
#include <array>
#include <list>

namespace
{

class CAskingObserver final : public IStateObserver, public IStatusReceiver, public IConfigurationReceiver
{
public:
    void OnStateChange(int32_t value, const char* status) override
    {
        Demand(value == 1, "the value is always 1");
        Told(status);
        if (m_bAsks)
            CFuzzAdapter::Get().Adapter().GetStatus(this);
        if (m_bThrows)
            throw 1;
    }
    void OnStatus(const char* status) override { Told(status); }
    void OnConfiguration(const char* configuration) override { Demand(*configuration == '\0', "there is none"); }

    /// To be told of a change once, or of the status alone.
    void ExpectChange() { m_nExpected += m_bAsks ? 2 : 1; }
    void ExpectStatus() { ++m_nExpected; }
    void DemandAsExpected() const { Demand(m_nTold == m_nExpected, "everyone is told as often as the list says"); }

    bool m_bAsks = false;
    bool m_bThrows = false;

private:
    void Told(const char* status)
    {
        const std::string_view text = status;
        Demand(text.size() > 9 && text.substr(text.size() - 9) == "</status>", "a status document comes whole");
        ++m_nTold;
    }

    unsigned m_nTold = 0;
    unsigned m_nExpected = 0;
};

/// One host's calls, with the list of observers as the adapter should have it.
class CCalls
{
public:
    explicit CCalls(CFuzzInput& input) : m_input(input) { m_fixture.Reset(); }

    ~CCalls()
    {
        for (CAskingObserver* const pObserver : m_registered)
            m_adapter.DeRegisterStateObserver(pObserver);
    }

    void Call()
    {
        static constexpr void (CCalls::*s_calls[])(CAskingObserver&) = {
            &CCalls::GetStatus, &CCalls::Register,   &CCalls::DeRegister, &CCalls::GetConfiguration,
            &CCalls::Apply,     &CCalls::Refuse,     &CCalls::Configure,  &CCalls::CallTheRest,
            &CCalls::LetItAsk,  &CCalls::LetItThrow, &CCalls::Fail,       &CCalls::Recover,
        };
        const auto pCall = s_calls[m_input.Below(std::size(s_calls))];
        (this->*pCall)(m_observers[m_input.Below(static_cast<unsigned>(m_observers.size()))]);
        for (const CAskingObserver& observer : m_observers)
            observer.DemandAsExpected();
    }

private:
    void GetStatus(CAskingObserver& observer)
    {
        observer.ExpectStatus();
        m_adapter.GetStatus(&observer);
        m_adapter.GetStatus(nullptr);
    }

    void Register(CAskingObserver& observer)
    {
        m_registered.push_back(&observer); // though it throws
        observer.ExpectChange();
        m_adapter.RegisterStateObserver(&observer);
        m_adapter.RegisterStateObserver(nullptr);
    }

    void DeRegister(CAskingObserver& observer)
    {
        const auto it = std::find(m_registered.begin(), m_registered.end(), &observer);
        if (it != m_registered.end())
            m_registered.erase(it);
        m_adapter.DeRegisterStateObserver(&observer);
    }

    void GetConfiguration(CAskingObserver& observer) { m_adapter.GetConfiguration(&observer); }

    void Apply(CAskingObserver&)
    {
        StoreRevision(CFuzzAdapter::OLD_REVISION);
        for (auto it = m_registered.begin(); !m_bFails && it != m_registered.end(); ++it)
        {
            (*it)->ExpectChange();
            if ((*it)->m_bThrows)
                break; // those behind it are not told
        }
        m_adapter.SetConfiguration("<?xml version='1.0'?><policy type='patch'><Comp RevID='new' policyType='1'/>"
                                   "<configuration/></policy>");
        Demand(StoredRevision() == (m_bFails ? CFuzzAdapter::OLD_REVISION : L"new"), "the revision is old or new");
    }

    void Refuse(CAskingObserver&)
    {
        m_adapter.SetConfiguration("<?xml version='1.0'?><policy type='patch'><configuration/></policy>");
    }

    void Configure(CAskingObserver&) { m_adapter.SetConfiguration("<?xml version='1.0'?><config/>"); }

    void CallTheRest(CAskingObserver& observer) { CallUnimplemented(m_adapter, &observer); }

    void LetItAsk(CAskingObserver& observer) { observer.m_bAsks = !observer.m_bAsks; }
    void LetItThrow(CAskingObserver& observer) { observer.m_bThrows = !observer.m_bThrows; }

    void Fail(CAskingObserver&)
    {
        static constexpr AgentCall s_calls[] = { AgentCall::Create, AgentCall::Query, AgentCall::SetState,
                                                 AgentCall::GetState };
        CAgentFault fault;
        fault.call = s_calls[m_input.Below(4)];
        m_fixture.Service().AddFault(fault);
        m_bFails = m_bFails || fault.call != AgentCall::GetState; // which no policy needs
    }

    void Recover(CAskingObserver&)
    {
        m_fixture.Service().ClearFaults();
        m_bFails = false;
    }

    CFuzzInput& m_input;
    CFuzzAdapter& m_fixture = CFuzzAdapter::Get();
    IAdapter& m_adapter = m_fixture.Adapter();
    std::array<CAskingObserver, 4> m_observers;
    std::list<CAskingObserver*> m_registered;
    bool m_bFails = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    CFuzzInput input(pData, nSize);
    {
        CCalls calls(input);
        for (unsigned n = 0; n < 100 && !input.IsEmpty(); ++n)
            calls.Call();
    }
    CFuzzAdapter::Get().DemandNothingLeft();
    return 0;
}
