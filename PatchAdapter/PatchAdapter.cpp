// The adapter object: construction, the registry of observers, what is not implemented, the library's version.
#include "PatchAdapter/PatchAdapter.h"

#include "ovCore/OvCallOut.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvVersionResource.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/GuardBoundary.h"
#include "PatchAdapter/PatchAdapterFactory.h"

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchAdapter";
const wchar_t s_szRegister[] = L"CPatchAdapter::RegisterStateObserver";
const wchar_t s_szDeRegister[] = L"CPatchAdapter::DeRegisterStateObserver";
const wchar_t s_szGetBinaryVersion[] = L"CPatchAdapter::GetBinaryVersion";

constexpr bool s_bAsync = true;
constexpr bool s_bWait = true;
constexpr bool s_bPumpMessages = false;

} // namespace

CPatchAdapter::CPatchAdapter(ILogSink* pSink)
{
    m_Trace.SetSink(pSink);
    const CPatchTraceScope scope(&m_Trace, L"CPatchAdapter::CPatchAdapter");
    LoadPolicyRevId();
    m_MonitorThread.SetAdapter(this);
    m_MonitorThread.Start(s_bAsync);
}

CPatchAdapter::~CPatchAdapter()
{
    m_MonitorThread.Stop(s_bWait, s_bPumpMessages);
}

// @return true after it has reported a null argument.
bool CPatchAdapter::RefuseNull(const void* pArgument, const wchar_t* szSentence, const wchar_t* szFunction)
{
    if (pArgument == nullptr)
        m_Trace.Warning(InfoMsg(szSentence) + FunctionName(szFunction));
    return pArgument == nullptr;
}

void CPatchAdapter::RegisterStateObserver(IStateObserver* pObserver)
{
    const CPatchTraceScope scope(&m_Trace, s_szRegister);
    COvSingleLock lock(&m_csObservers, false);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szRegister, [&] {
        lock.Lock(INFINITE);
        AddObserver(pObserver);
    });
}

void CPatchAdapter::AddObserver(IStateObserver* pObserver)
{
    if (RefuseNull(pObserver, L"A null state observer was passed", s_szRegister))
        return;
    m_Trace.Info(L"Registering state observer");
    m_lstStateObservers.Append(pObserver);
    std::wstring wzStatus;
    BuildStatusXml(wzStatus);
    m_Trace.Info(L"Notifying state observer");
    const std::string status = COvStringUtil::WideToNarrow(wzStatus);
    OvCallOut([&] { pObserver->OnStateChange(STATE_CHANGED, status.c_str()); });
}

void CPatchAdapter::DeRegisterStateObserver(IStateObserver* pObserver)
{
    const CPatchTraceScope scope(&m_Trace, s_szDeRegister);
    COvSingleLock lock(&m_csObservers, false);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szDeRegister, [&] {
        lock.Lock(INFINITE);
        m_lstStateObservers.RemoveFirst(pObserver);
    });
}

void CPatchAdapter::TraceNotImplemented(const wchar_t* szFunction)
{
    const CPatchTraceScope scope(&m_Trace, szFunction);
    m_Trace.Detail(FunctionName(szFunction) + InfoMsg(L"Not implemented for PatchAdapter"));
}

void CPatchAdapter::RegisterEventObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::RegisterEventObserver");
}

void CPatchAdapter::DeRegisterEventObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::DeRegisterEventObserver");
}

void CPatchAdapter::RegisterConfigStateObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::RegisterConfigStateObserver");
}

void CPatchAdapter::DeRegisterConfigStateObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::DeRegisterConfigStateObserver");
}

void CPatchAdapter::DoAction(void*, void*)
{
    TraceNotImplemented(L"CPatchAdapter::DoAction");
}

void CPatchAdapter::RegisterActionOutcomeObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::RegisterActionOutcomeObserver");
}

void CPatchAdapter::DeRegisterActionOutcomeObserver(void*)
{
    TraceNotImplemented(L"CPatchAdapter::DeRegisterActionOutcomeObserver");
}

void CPatchAdapter::SetFeature(void*)
{
    TraceNotImplemented(L"CPatchAdapter::SetFeature");
}

COvCriticalSection* CPatchAdapter::GetObserverCS()
{
    OV_SCOPE(L"CPatchAdapter::GetObserverCS");
    return &m_csObservers;
}

CObserverList* CPatchAdapter::GetStateObservers()
{
    OV_SCOPE(L"CPatchAdapter::GetStateObservers");
    return &m_lstStateObservers;
}

const COvVersion& CPatchAdapter::GetBinaryVersion()
{
    const CPatchTraceScope scope(&m_Trace, s_szGetBinaryVersion);
    static COvVersion s_BinaryVersion; // 0.0.0.0, which is not valid, until it has been read
    COvVersionResource resource;
    if (!s_BinaryVersion.IsValid() && resource.Open(g_hInstance))
        resource.GetVersion(s_BinaryVersion);
    if (!s_BinaryVersion.IsValid())
        throw COvException(E_FAIL, s_szSource, __LINE__,
                           InfoMsg(L"Unable to determine version of binary") + FunctionName(s_szGetBinaryVersion));
    m_Trace.Detail(L"version", s_BinaryVersion.Text().sz);
    return s_BinaryVersion;
}
