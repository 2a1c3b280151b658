// A patch service to run against: its COM class, its event, its state, its faults.
#pragma once

#include "TrevokPatchApi.h"

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What a read of a state yields: VT_EMPTY, VT_BOOL, VT_BOOL with that very number, VT_I4, VT_BSTR, or a VT_BSTR that
/// is null.
using CAgentValue = std::variant<std::monostate, bool, SHORT, LONG, std::wstring, std::nullptr_t>;

/// The service's event, as the rest of the system sees it.
enum class AgentEvent
{
    Absent,
    NotSignalled,
    Signalled
};

/// The calls of a client: creating the COM object, asking it for ITrevokPatchApi, and that interface's operations.
enum class AgentCall
{
    Create,
    Query,
    SetState,
    GetState
};

/// The COM error object that a failing call leaves on its thread.
struct CAgentErrorObject
{
    std::optional<std::wstring> description; ///< without one GetDescription gives a null text
    HRESULT hrDescription = S_OK;            ///< what GetDescription returns; after a failure it gives no text
};

/// A fault: which calls have it and what it does to them.
struct CAgentFault
{
    AgentCall call;
    HRESULT hr = E_FAIL; ///< what the call returns; with a success code the call goes on as usual
    LONG stateId = 0;    ///< SetState and GetState: the one state that has the fault; 0: each has
    unsigned nFirst = 1; ///< the first such call that has it, counted from 1 when the fault is added
    unsigned nCount = std::numeric_limits<unsigned>::max(); ///< how many calls in a row have it
    DWORD dwDelayMs = 0;                                    ///< the call takes this long, in milliseconds
    bool bDies = false;                                     ///< the service dies in the call, as by Die()
    std::function<void()>
        action = {}; ///< run in the call on the client's thread; may throw, but not std::bad_alloc, nor for Create
    std::optional<CAgentErrorObject> errorObject = std::nullopt; ///< set only when the call fails
};

/// One call that a client made.
struct CAgentCallRecord
{
    AgentCall call;
    LONG stateId; ///< 0 for Create and Query
    HRESULT hr;   ///< what it returned
    DWORD dwThreadId;
};

/// The simulated service, in this process. At first it is not there: no class and no event; every state has the value
/// of a healthy, up-to-date agent. One at a time in a process, as the names are the service's.
///
/// Start, Stop, PublishClass and WithdrawClass are to be called by a thread in the multithreaded apartment, which some
/// thread must stay in while the class is published; clients in that apartment then create the service's objects
/// directly. Everything else may be called from any thread, also while clients are in a call.
class CAgentSimulator
{
public:
    CAgentSimulator();
    ~CAgentSimulator(); ///< stops the service; objects that clients still hold stay valid and disconnected
    CAgentSimulator(const CAgentSimulator&) = delete;
    CAgentSimulator& operator=(const CAgentSimulator&) = delete;

    /// Publishes the class and signals the event. @return whether both could be done.
    bool Start();

    /// Clears and closes the event and withdraws the class; objects that clients still hold are disconnected.
    void Stop();

    /// Ends the service as a crash would: the event is closed as it is, objects are disconnected, and no more can be
    /// created until Start or PublishClass.
    void Die();

    // The halves of Start and Stop.
    bool PublishClass();
    void WithdrawClass();
    bool SetEventState(AgentEvent state);

    void SetValue(LONG stateId, const CAgentValue& value);

    void AddFault(const CAgentFault& fault);
    void ClearFaults();

    /// Every settings document that was received and accepted, oldest first.
    std::vector<std::wstring> GetReceivedSettings() const;

    /// Every call, oldest first, failed ones too.
    std::vector<CAgentCallRecord> GetCalls() const;

    /// Forgets the received documents and the calls.
    void ClearRecords();

    /// The service's objects, error objects included, that clients hold.
    unsigned GetLiveObjects() const;

private:
    std::shared_ptr<class CAgentState> m_pState; // shared with the objects that clients hold
    DWORD m_dwCookie = 0;                        // of the published class; 0 for none
};
