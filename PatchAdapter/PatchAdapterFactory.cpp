#include "PatchAdapter/PatchAdapterFactory.h"

#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/GuardBoundary.h"
#include "PatchAdapter/PatchAdapter.h"

HINSTANCE g_hInstance = nullptr;
bool g_bAdapterCreated = false;

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchAdapterFactory";
const wchar_t s_szInitialise[] = L"PatchAdapterFactory::Initialise";
const wchar_t s_szUninitialise[] = L"PatchAdapterFactory::Uninitialise";

[[noreturn]] void Refuse(LONG nLine, const wchar_t* szSentence, const wchar_t* szFunction)
{
    throw COvException(E_FAIL, s_szSource, nLine, InfoMsg(szSentence) + FunctionName(szFunction));
}

} // namespace

PatchAdapterFactory::~PatchAdapterFactory()
{
    DeleteThroughSlot<IAdapter>(m_pAdapter);
}

IAdapter* PatchAdapterFactory::Initialise(void*, void*, ILogSink* pSink, void*)
{
    m_Trace.SetSink(pSink);
    const CPatchTraceScope scope(&m_Trace, s_szInitialise);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szInitialise, [&] { CreateAdapter(pSink); });
    return m_pAdapter;
}

void PatchAdapterFactory::CreateAdapter(ILogSink* pSink)
{
    if (g_bAdapterCreated)
        Refuse(__LINE__, L"Attempt was made to call the factory twice. It is already intialized", s_szInitialise);
    m_Trace.Info(L"Creating PatchAdapter");
    m_pAdapter = new CPatchAdapter(pSink);
    g_bAdapterCreated = true;
}

void PatchAdapterFactory::Uninitialise(IAdapter* pAdapter)
{
    const CPatchTraceScope scope(&m_Trace, s_szUninitialise);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szUninitialise, [&] { DestroyAdapter(pAdapter); });
}

void PatchAdapterFactory::DestroyAdapter(const IAdapter* pAdapter)
{
    if (!g_bAdapterCreated)
        Refuse(__LINE__, L"Adapter has not been initialized", s_szUninitialise);
    if (m_pAdapter == nullptr)
        return; // another factory's adapter exists
    m_Trace.Info(L"Destroying PatchAdapter");
    if (pAdapter != m_pAdapter)
        Refuse(__LINE__,
               L"Passed Adapter reference was not created by this factory. Multiple adapter objects not supported in "
               L"this version",
               s_szUninitialise);
    DeleteThroughSlot<IAdapter>(m_pAdapter);
    m_pAdapter = nullptr;
    g_bAdapterCreated = false;
}
