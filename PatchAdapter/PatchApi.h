// The client of the patch service.
#pragma once

#include "ovCore/OvCallOut.h"
#include "ovCore/OvEvent.h"
#include "PatchAdapter/PatchTrace.h"
#include "TrevokPatchApi.h"

#include <memory>
#include <string>

/// Makes one use of the service: pushing settings or reading its state. Short-lived: made on the stack for one call on
/// one thread, which must have entered a COM apartment and must not leave it while the object lives.
///
/// No operation lets an exception out. A failure is written to the trace as a report (kind 1) and the result is false.
/// That holds for whatever the service's object does in this process, except a machine fault on a thread without a
/// translator.
class CPatchApi
{
public:
    /// @param pTrace  not null, not owned.
    explicit CPatchApi(CPatchTrace* pTrace) : m_pTrace(pTrace) {}
    ~CPatchApi();
    CPatchApi(const CPatchApi&) = delete;
    CPatchApi& operator=(const CPatchApi&) = delete;

    /// Creates the service's COM object, once. A creation that fails writes no line: the other operations report it.
    bool Connect() noexcept;

    /// Connects and hands the settings document to the service.
    bool SetPolicySettings(const std::wstring& settingsXml) noexcept;

    /// Connects and reads the six states in this order, until one fails. *pbWuaInstalled is false before; every other
    /// output is written only when its own read succeeds and keeps its value otherwise. Version texts come in the form
    /// that COvVersion gives them.
    bool GetStatusInfo(bool* pbWuaInstalled, bool* pbWuaCompatible, std::wstring* pstrWuaCurrentVersion,
                       std::wstring* pstrWuaRequiredVersion, bool* pbAssessmentEnabled,
                       bool* pbServerKeyStatus) noexcept;

    /// A text about the calling thread's COM error object, which is taken from the thread. Empty without memory for it.
    static std::wstring ObtainErrorInfo() noexcept;

private:
    template <class Work>
    bool Guard(const wchar_t* szFailure, Work&& work) noexcept;
    bool CreateApi();
    bool ConnectOrReport() noexcept;
    bool PushSettings(const std::wstring& settingsXml);
    bool ReadState(PatchApiStateId stateId, VARTYPE vtExpected, const wchar_t* szFailure, VARIANT* pValue);
    bool ReadBool(PatchApiStateId stateId, const wchar_t* szFailure, bool* pbValue);
    bool ReadVersion(PatchApiStateId stateId, const wchar_t* szFailure, std::wstring* pstrVersion);

    COvForeignPtr<ITrevokPatchApi> m_spApi; // empty until Connect succeeds
    CPatchTrace* m_pTrace;                  // not owned
};

/// Opens the service's event, as COvEvent::OpenWithWait does, but in the caller's own memory.
COvEvent OpenServiceEvent(DWORD dwTotalMs, DWORD dwIntervalMs);

/// Whether the service runs: its event exists and is signalled. One attempt, no waiting. Any thread, without COM.
bool IsServiceRunning();
