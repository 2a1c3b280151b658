#include "PatchHost/Session.h"

#include "PatchHost/Callbacks.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Output.h"

CAdapterSession::CAdapterSession(const CAdapterLibrary& library, ILogSink* sink)
    : m_pFactory(library.MakeFactory()), m_pAdapter(m_pFactory->Initialise(nullptr, nullptr, sink, nullptr))
{
    if (m_pAdapter != nullptr)
        return;
    DeleteAdapterFactory(m_pFactory);
    throw std::runtime_error("the library made no adapter; run again with --trace trace to see why");
}

CAdapterSession::~CAdapterSession()
{
    Stop();
    DeleteAdapterFactory(m_pFactory);
}

void CAdapterSession::Stop()
{
    if (m_pAdapter != nullptr)
        m_pFactory->Uninitialise(m_pAdapter);
    m_pAdapter = nullptr;
}

StateKind StateFor(ServiceKind kind)
{
    return kind == ServiceKind::Installed ? StateKind::Machine : StateKind::Kept;
}

std::string ReadScript(const COptions& options)
{
    if (options.serviceScript.empty())
        return std::string();
    const std::string script = ReadDocument(options.serviceScript, ExitUsage);
    if (script.empty())
        throw CCommandError(ExitUsage, options.serviceScript + " is empty; a service script is a JSON object");
    return script;
}

CSession::CSession(const COptions& options, ServiceKind kind, StateKind state)
    : m_nTimeoutMs(options.nTimeoutMs),
      m_state(state, options.stateFolder),
      m_service(kind, ReadScript(options)),
      m_sink(options.nTraceLevel),
      m_library(options.library),
      m_adapter(m_library, &m_sink)
{
}

CSession::CSession(const COptions& options) : CSession(options, options.service, StateFor(options.service)) {}

CSession::~CSession()
{
    Note("stopping the adapter, which can take ten seconds");
    m_adapter.Stop();
}

void CSession::Register(IStateObserver& observer)
{
    Call("RegisterStateObserver", [&](IAdapter& adapter) { adapter.RegisterStateObserver(&observer); });
}

void CSession::Deregister(IStateObserver& observer)
{
    Call("DeRegisterStateObserver", [&](IAdapter& adapter) { adapter.DeRegisterStateObserver(&observer); });
}

std::vector<CTraceLine> CSession::SetConfiguration(const std::string& document)
{
    const CCallTrace trace(m_sink);
    Call("SetConfiguration", [&](IAdapter& adapter) { adapter.SetConfiguration(document.c_str()); });
    return trace.GetLines();
}

std::optional<std::string> CSession::GetStatus()
{
    CStatusReceiver receiver;
    Call("GetStatus", [&](IAdapter& adapter) { adapter.GetStatus(&receiver); });
    return receiver.GetStatus();
}
