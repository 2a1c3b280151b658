// The adapter: the one object through which the host drives the system.
#pragma once

#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvVersion.h"
#include "ovCore/OvXmlNode.h"
#include "OvXmlWriter.h"
#include "PatchAdapter/MonitorThread.h"
#include "PatchAdapter/ObserverList.h"
#include "PatchAdapter/OneSlotDestructor.h"
#include "PatchAdapter/PatchTrace.h"

#include <map>
#include <string>

class CPatchApi;

/// Kind of the last policy document.
enum PolicyKind : LONG
{
    PolicyKindNone = 0,  ///< none was accepted yet
    PolicyKindPatch = 1, ///< a patch policy: its settings are pushed to the service
    PolicyKindConfig = 2 ///< a configuration: accepted, nothing is pushed
};

inline constexpr LONG STATE_CHANGED = 1; ///< the one value that observers are told

/// See IAdapter for what the host may do. Made by PatchAdapterFactory alone.
///
/// Locks: m_csObservers before m_csStatus, never the other way round. Observers are called with m_csObservers held.
class CPatchAdapter final : public COneSlotDestructor<CPatchAdapter, IAdapter>
{
public:
    /// Loads the recorded revision and starts the monitor thread. An exception of either leaves.
    /// @param pSink  the host's log, not owned; may be null.
    explicit CPatchAdapter(ILogSink* pSink);
    CPatchAdapter(const CPatchAdapter&) = delete;
    CPatchAdapter& operator=(const CPatchAdapter&) = delete;

    /// Stops the monitor thread and waits for it without a time limit: up to about ten seconds. Writes no line and
    /// tells no observer.
    ~CPatchAdapter();

    bool GetStatus(IStatusReceiver* pReceiver) override;
    void RegisterStateObserver(IStateObserver* pObserver) override;
    void DeRegisterStateObserver(IStateObserver* pObserver) override;
    bool GetConfiguration(IConfigurationReceiver* pReceiver) override;
    void SetConfiguration(const char* pszConfiguration) override;
    void RegisterEventObserver(void* value) override;
    void DeRegisterEventObserver(void* value) override;
    void RegisterConfigStateObserver(void* value) override;
    void DeRegisterConfigStateObserver(void* value) override;
    void DoAction(void* value1, void* value2) override;
    void RegisterActionOutcomeObserver(void* value) override;
    void DeRegisterActionOutcomeObserver(void* value) override;
    void SetFeature(void* value) override;

    // For the monitor thread. The list is guarded by the observer lock.
    COvCriticalSection* GetObserverCS();
    CObserverList* GetStateObservers();
    CPatchTrace* GetTrace() { return &m_Trace; }

    /// Builds the current status document; contacts the service when it runs. Any thread that has entered a COM
    /// apartment; one document at a time. Takes the status lock. Raises when the library's version cannot be read or
    /// the document cannot be written; a service that fails raises nothing.
    /// @param wzStatus  receives the document.  @return wzStatus.
    std::wstring& BuildStatusXml(std::wstring& wzStatus);

    /// The library's own file version, read once in a process. Call it with the status lock held.
    /// Raises E_FAIL when it cannot be read; the next call then tries again.
    const COvVersion& GetBinaryVersion();

private:
    using CSettings = std::map<std::wstring, std::wstring>; // from setting name to value; the first one stays
    struct CTranslation;
    struct CServiceStatus;

    // PatchAdapter.cpp
    bool RefuseNull(const void* pArgument, const wchar_t* szSentence, const wchar_t* szFunction);
    void AddObserver(IStateObserver* pObserver);
    void TraceNotImplemented(const wchar_t* szFunction);

    // PolicyIntake.cpp
    void LoadConfigurationXML(const std::wstring& strXML);
    void ReadMainNode(const COvXmlNode& mainNode, const std::wstring& strXML);
    void ReadChildren(const COvXmlNode& mainNode, const std::wstring& strXML);
    void ReadComp(const COvXmlNode& comp);

    // PolicyTranslation.cpp
    void TranslatePolicyXML(const COvXmlNode& configurationNode);
    void TranslateChild(const COvXmlNode& node, CTranslation& translation);
    static void TranslateAssessment(const COvXmlNode& node, CTranslation& translation);
    void TranslateServerKey(const COvXmlNode& node, CTranslation& translation);
    static void AddRemediationSettings(CSettings& settings, COvXmlWriter& writer);

    // PolicyApply.cpp
    bool ProcessConfiguration();
    bool ApplyPolicy(CPatchApi& api);
    void LoadPolicyRevId();
    void SavePolicyRevId();
    void NotifyOfPolicy();

    // StatusDocument.cpp
    void ReportStatus(IStatusReceiver* pReceiver);
    CServiceStatus GatherStatus();
    bool RetrieveStatusInfo(bool& bWuaInstalled, LONG& nWuaCompatibility, COvVersion& verWuaCurrent,
                            COvVersion& verWuaRequired, bool& bAssessmentEnabled, bool& bServerKeyStatus);
    void WriteCompliance(COvXmlWriter& writer, const CServiceStatus& status) const;
    void WriteMeta(COvXmlWriter& writer);
    std::wstring BuildPatchXml(const CServiceStatus& status);
    static void WriteWua(COvXmlWriter& writer, const CServiceStatus& status);

    CPatchTrace m_Trace;
    CObserverList m_lstStateObservers; // guarded by m_csObservers
    PolicyKind m_nPolicyKind = PolicyKindNone;
    std::wstring m_wzRevId;  // written under m_csStatus, by the one policy call at a time
    LONG m_lPolicyType = 20; // written under m_csStatus, together with m_wzRevId
    std::wstring m_wzCompRes = L"Same";
    std::wstring m_wzGroup;
    std::wstring m_wzPolicyName;
    std::wstring m_wzSettingsXml;
    CMonitorThread m_MonitorThread;
    COvCriticalSection m_csObservers;
    COvCriticalSection m_csStatus; // held while a status document is built
};
