// Policy apply: settings go to the service, the revision to the registry, the new status to the observers.
#include "ovCore/OvCallOut.h"
#include "ovCore/OvRegKey.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStringUtil.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PatchApi.h"

namespace
{

const wchar_t s_szGetConfiguration[] = L"CPatchAdapter::GetConfiguration";

void CreateRevisionKey(COvRegKey& key)
{
    key.Create(TREVOK_REVISION_KEY, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
}

} // namespace

bool CPatchAdapter::ProcessConfiguration()
{
    const CPatchTraceScope scope(&m_Trace, L"CPatchAdapter::ProcessConfiguration");
    m_Trace.Info(L"Applying configuration");
    CPatchApi api(&m_Trace);
    if (!IsServiceRunning())
    {
        m_Trace.Warning(InfoMsg(L"Failed to apply configuration because Patch Agent Service is not running"));
        return false;
    }
    if (m_nPolicyKind == PolicyKindPatch && !ApplyPolicy(api))
        return false;
    m_Trace.Info(L"Configuration successfully applied");
    return true;
}

bool CPatchAdapter::ApplyPolicy(CPatchApi& api)
{
    if (!m_wzSettingsXml.empty() && !api.SetPolicySettings(m_wzSettingsXml))
    {
        m_Trace.Warning(InfoMsg(L"Failed to apply Patch Agent settings policy from PYX config"));
        return false;
    }
    SavePolicyRevId();
    NotifyOfPolicy();
    return true;
}

// The document is built before the lock is taken, so that a slow service does not hold registration up.
void CPatchAdapter::NotifyOfPolicy()
{
    std::wstring wzStatus;
    const std::string status = COvStringUtil::WideToNarrow(BuildStatusXml(wzStatus));
    const COvSingleLock lock(&m_csObservers, true);
    m_lstStateObservers.ForEach([&](IStateObserver* pObserver) {
        OvCallOut([&] { pObserver->OnStateChange(STATE_CHANGED, status.c_str()); });
    });
}

void CPatchAdapter::LoadPolicyRevId()
{
    COvRegKey key(RegView64);
    CreateRevisionKey(key);
    if (COvRegKey::ValueExists(L"HKLM\\" TREVOK_REVISION_KEY L"\\" TREVOK_REVISION_NAME, RegView64))
        m_wzRevId = key.GetStringValue(TREVOK_REVISION_NAME);
}

void CPatchAdapter::SavePolicyRevId()
{
    COvRegKey key(RegView64);
    CreateRevisionKey(key);
    key.SetValue(TREVOK_REVISION_NAME, m_wzRevId);
}

// Nothing is caught here: what the receiver throws goes on to the host. An exception of the host's compiler runs no
// destructor of ours on its way, so the exit line is written for it.
bool CPatchAdapter::GetConfiguration(IConfigurationReceiver* pReceiver)
{
    const CPatchTraceScope scope(&m_Trace, s_szGetConfiguration);
    if (!RefuseNull(pReceiver, L"A null configuration receiver was passed", s_szGetConfiguration))
        OvCallThrough([&] { pReceiver->OnConfiguration(""); }, [&] { m_Trace.Leave(s_szGetConfiguration); });
    return true;
}
