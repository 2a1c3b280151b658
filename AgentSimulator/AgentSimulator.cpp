#include "AgentSimulator/AgentSimulator.h"

#include "AgentSimulator/AgentObjects.h"
#include "OvComPtr.h"

CAgentSimulator::CAgentSimulator() : m_pState(std::make_shared<CAgentState>()) {}

CAgentSimulator::~CAgentSimulator()
{
    Stop();
}

bool CAgentSimulator::Start()
{
    return PublishClass() && SetEventState(AgentEvent::Signalled);
}

void CAgentSimulator::Stop()
{
    m_pState->EndEvent();
    WithdrawClass();
}

void CAgentSimulator::Die()
{
    m_pState->Die();
}

bool CAgentSimulator::PublishClass()
{
    m_pState->Revive();
    if (m_dwCookie != 0)
        return true;
    COvComPtr<IUnknown> spClass;
    spClass.Attach(MakeClassObject(m_pState));
    return SUCCEEDED(::CoRegisterClassObject(CLSID_TrevokPatchApi, spClass.Get(), CLSCTX_INPROC_SERVER,
                                             REGCLS_MULTIPLEUSE, &m_dwCookie));
}

void CAgentSimulator::WithdrawClass()
{
    m_pState->Disconnect();
    if (m_dwCookie != 0)
        ::CoRevokeClassObject(m_dwCookie);
    m_dwCookie = 0;
}

bool CAgentSimulator::SetEventState(AgentEvent state)
{
    return m_pState->SetEventState(state);
}

void CAgentSimulator::SetValue(LONG stateId, const CAgentValue& value)
{
    m_pState->SetValue(stateId, value);
}

void CAgentSimulator::AddFault(const CAgentFault& fault)
{
    m_pState->AddFault(fault);
}

void CAgentSimulator::ClearFaults()
{
    m_pState->ClearFaults();
}

std::vector<std::wstring> CAgentSimulator::GetReceivedSettings() const
{
    return m_pState->GetSettings();
}

std::vector<CAgentCallRecord> CAgentSimulator::GetCalls() const
{
    return m_pState->GetCalls();
}

void CAgentSimulator::ClearRecords()
{
    m_pState->ClearRecords();
}

unsigned CAgentSimulator::GetLiveObjects() const
{
    return m_pState->m_nLiveObjects;
}
