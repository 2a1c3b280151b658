// What the simulated service is at the moment, shared by its COM objects. Internal to the simulator.
#pragma once

#include "AgentSimulator/AgentSimulator.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>

/// Any thread may call any operation.
class CAgentState : public std::enable_shared_from_this<CAgentState>
{
public:
    CAgentState();
    ~CAgentState();

    void Revive();
    void Disconnect();
    void Die();

    bool SetEventState(AgentEvent state);

    /// Clears the event, for those who have it open too, and closes it.
    void EndEvent();

    /// Which life of the service this is; 0 while it is dead. An object of an earlier life is disconnected.
    unsigned GetLife() const;

    void SetValue(LONG stateId, const CAgentValue& value);

    /// Puts the state's value into an empty VARIANT. @return E_INVALIDARG for a state without a value.
    HRESULT ReadValue(LONG stateId, VARIANT* pValue) const;

    void AddFault(const CAgentFault& fault);
    void ClearFaults();
    void AddSettings(const std::wstring& settings);
    std::vector<std::wstring> GetSettings() const;
    std::vector<CAgentCallRecord> GetCalls() const;
    void ClearRecords();

    /// Runs one call of a client: with the fault that it has, or else the work; then records it.
    /// @param nLife  of the object that is called; 0 for the class itself.
    /// @return what the client gets.
    template <class Work>
    HRESULT RunCall(AgentCall call, LONG stateId, unsigned nLife, Work&& work)
    {
        HRESULT hr = S_OK;
        try
        {
            hr = MeetFault(call, stateId);
            if (SUCCEEDED(hr))
                hr = IsConnected(nLife) ? work() : Disconnected(nLife);
        }
        catch (const std::bad_alloc&) // only what a fault's action throws may leave a COM call
        {
            hr = E_OUTOFMEMORY;
        }
        Record({ call, stateId, hr, ::GetCurrentThreadId() });
        return hr;
    }

    std::atomic<unsigned> m_nLiveObjects{ 0 };

private:
    struct CPendingFault
    {
        CAgentFault fault;
        unsigned nMatches; // calls that it matched so far
    };

    std::optional<CAgentFault> TakeFault(AgentCall call, LONG stateId);
    HRESULT MeetFault(AgentCall call, LONG stateId);
    bool IsConnected(unsigned nLife) const;
    static HRESULT Disconnected(unsigned nLife);
    void Record(const CAgentCallRecord& record) noexcept;
    void CloseEvent();

    mutable std::mutex m_mutex; // guards all below
    unsigned m_nLife = 0;       // counts the service's starts
    bool m_bAlive = false;
    HANDLE m_hEvent = nullptr;
    std::map<LONG, CAgentValue> m_values;
    std::vector<CPendingFault> m_faults;
    std::vector<std::wstring> m_settings;
    std::vector<CAgentCallRecord> m_calls;
};
