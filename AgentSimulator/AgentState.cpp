#include "AgentSimulator/AgentState.h"

#include "AgentSimulator/AgentObjects.h"

namespace
{

constexpr HRESULT s_hrDisconnected = static_cast<HRESULT>(0x80010108); // RPC_E_DISCONNECTED
constexpr HRESULT s_hrNotStarted = static_cast<HRESULT>(0x80080005);   // CO_E_SERVER_EXEC_FAILURE

// Makes a value the content of an empty VARIANT.
struct CIntoVariant
{
    VARIANT* pVariant;

    void operator()(std::monostate) const {}
    void operator()(bool bValue) const { (*this)(static_cast<SHORT>(bValue ? VARIANT_TRUE : VARIANT_FALSE)); }
    void operator()(SHORT nValue) const
    {
        pVariant->vt = VT_BOOL;
        pVariant->boolVal = nValue;
    }
    void operator()(LONG nValue) const
    {
        pVariant->vt = VT_I4;
        pVariant->lVal = nValue;
    }
    void operator()(const std::wstring& strValue) const
    {
        pVariant->bstrVal = ::SysAllocStringLen(strValue.data(), static_cast<UINT>(strValue.size()));
        pVariant->vt = VT_BSTR;
    }
    void operator()(std::nullptr_t) const
    {
        pVariant->bstrVal = nullptr;
        pVariant->vt = VT_BSTR;
    }
};

} // namespace

CAgentState::CAgentState()
    : m_values{ { StateWuaInstalled, true },
                { StateWuaCompatible, true },
                { StateWuaCurrentVersion, L"7.4.7600.226" },
                { StateWuaRequiredVersion, L"7.2.6001.788" },
                { StateAssessmentEnabled, true },
                { StateServerKeyStatus, true } }
{
}

CAgentState::~CAgentState()
{
    CloseEvent();
}

void CAgentState::Revive()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_bAlive)
        ++m_nLife;
    m_bAlive = true;
}

void CAgentState::Disconnect()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bAlive = false;
}

void CAgentState::Die()
{
    Disconnect();
    SetEventState(AgentEvent::Absent);
}

void CAgentState::EndEvent()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_hEvent != nullptr)
        ::ResetEvent(m_hEvent);
    CloseEvent();
}

void CAgentState::CloseEvent()
{
    if (m_hEvent != nullptr)
        ::CloseHandle(m_hEvent);
    m_hEvent = nullptr;
}

bool CAgentState::SetEventState(AgentEvent state)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (state == AgentEvent::Absent)
    {
        CloseEvent();
        return true;
    }
    const bool bSignalled = state == AgentEvent::Signalled;
    if (m_hEvent == nullptr)
        m_hEvent = ::CreateEventW(nullptr, TRUE, bSignalled, TREVOK_SERVICE_EVENT);
    // A client that still has an earlier event open keeps it, and its state, alive: so the state is set in any case.
    return m_hEvent != nullptr && (bSignalled ? ::SetEvent(m_hEvent) : ::ResetEvent(m_hEvent));
}

unsigned CAgentState::GetLife() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bAlive ? m_nLife : 0;
}

bool CAgentState::IsConnected(unsigned nLife) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bAlive && (nLife == 0 || nLife == m_nLife);
}

HRESULT CAgentState::Disconnected(unsigned nLife)
{
    return nLife == 0 ? s_hrNotStarted : s_hrDisconnected;
}

void CAgentState::SetValue(LONG stateId, const CAgentValue& value)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_values[stateId] = value;
}

HRESULT CAgentState::ReadValue(LONG stateId, VARIANT* pValue) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_values.find(stateId);
    if (it == m_values.end())
        return E_INVALIDARG;
    std::visit(CIntoVariant{ pValue }, it->second);
    return S_OK;
}

void CAgentState::AddFault(const CAgentFault& fault)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_faults.push_back({ fault, 0 });
}

void CAgentState::ClearFaults()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_faults.clear();
}

// Every fault counts the calls that it matches; the first one that is due takes effect.
std::optional<CAgentFault> CAgentState::TakeFault(AgentCall call, LONG stateId)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::optional<CAgentFault> due;
    for (CPendingFault& pending : m_faults)
    {
        const CAgentFault& fault = pending.fault;
        if (fault.call != call || (fault.stateId != 0 && fault.stateId != stateId))
            continue;
        ++pending.nMatches;
        if (!due && pending.nMatches >= fault.nFirst && pending.nMatches - fault.nFirst < fault.nCount)
            due = fault;
    }
    return due;
}

HRESULT CAgentState::MeetFault(AgentCall call, LONG stateId)
{
    const std::optional<CAgentFault> fault = TakeFault(call, stateId);
    if (!fault)
        return S_OK;
    if (fault->dwDelayMs != 0)
        ::Sleep(fault->dwDelayMs);
    if (fault->bDies)
        Die();
    if (fault->action)
        fault->action();
    if (FAILED(fault->hr) && fault->errorObject)
        LeaveErrorObject(*this, *fault->errorObject);
    return fault->hr;
}

void CAgentState::AddSettings(const std::wstring& settings)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_settings.push_back(settings);
}

std::vector<std::wstring> CAgentState::GetSettings() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_settings;
}

// Without memory the call goes unrecorded: what it has done stays done.
void CAgentState::Record(const CAgentCallRecord& record) noexcept
try
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_calls.push_back(record);
}
catch (const std::bad_alloc&)
{
}

std::vector<CAgentCallRecord> CAgentState::GetCalls() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_calls;
}

void CAgentState::ClearRecords()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_settings.clear();
    m_calls.clear();
}
