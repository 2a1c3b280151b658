#include "PatchHost/Session.h"

#include "PatchHost/Callbacks.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Evidence.h"
#include "PatchHost/Output.h"
#include "PatchHost/Text.h"

#include <algorithm>

namespace
{

constexpr DWORD s_dwFirstLookMs = 15000; // far more than it needs on a machine that is busy

const std::string s_evidence = " Evidence: ";

bool s_bAdapterLeft = false;

/// What the library logged as errors, a line each.
std::string Errors(const std::vector<CTraceLine>& lines)
{
    std::string errors;
    for (const CTraceLine& line : lines)
        if (line.kind == TraceError)
        {
            const size_t nEnd = std::min(line.text.find(s_evidence), line.text.size());
            errors += "    " + Shown(line.text.substr(0, nEnd)) + "\n";
            if (nEnd < line.text.size())
                errors += EvidenceText(SplitEvidence(line.text.substr(nEnd + s_evidence.size()), ""));
        }
    return errors.empty() ? "; it logged no error" : ":\n" + errors;
}

} // namespace

CAdapterSession::CAdapterSession(const CAdapterLibrary& library, CTraceSink& sink) : m_pFactory(library.MakeFactory())
{
    if (m_pFactory == nullptr)
        throw std::runtime_error("the library made no factory: not enough memory");
    const CCallTrace trace(sink);
    m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &sink, nullptr);
    if (m_pAdapter != nullptr)
        return;
    DeleteAdapterFactory(m_pFactory);
    throw std::runtime_error("the library made no adapter" + Errors(trace.GetLines()));
}

CAdapterSession::~CAdapterSession()
{
    m_pFactory->Uninitialise(m_pAdapter);
    DeleteAdapterFactory(m_pFactory);
}

StateKind StateFor(ServiceKind kind)
{
    return kind == ServiceKind::Installed ? StateKind::Machine : StateKind::Kept;
}

std::string ReadScript(const COptions& options)
{
    if (options.serviceScript.empty())
        return std::string();
    const std::string script = ReadFile(options.serviceScript, PATCHADAPTER_MAX_POLICY_BYTES, ExitUsage);
    if (script.empty())
        throw CCommandError(ExitUsage, options.serviceScript + " is empty; a service script is a JSON object");
    return script;
}

CSession::CParts::CParts(const COptions& options, ServiceKind kind)
    : service(kind, ReadScript(options)), sink(options.nTraceLevel), library(options.library), adapter(library, sink)
{
}

CSession::CSession(const COptions& options, ServiceKind kind, StateKind state)
    : m_nTimeoutMs(options.nTimeoutMs),
      m_bOrderlyStop(options.bOrderlyStop),
      m_state(state, options.stateFolder),
      m_parts(std::make_unique<CParts>(options, kind))
{
    if (!GetLibrary().GetRemark().empty())
        Note(GetLibrary().GetRemark());
}

CSession::CSession(const COptions& options) : CSession(options, options.service, StateFor(options.service)) {}

CSession::~CSession()
{
    for (IStateObserver* const pObserver : m_observers)
        Call("DeRegisterStateObserver", [&](IAdapter& adapter) { adapter.DeRegisterStateObserver(pObserver); });
    if (m_bOrderlyStop)
    {
        Note("stopping the adapter, which can take ten seconds");
        return;
    }
    m_parts.release(); // its monitor thread works on with all of them
    s_bAdapterLeft = true;
}

bool CSession::IsAdapterLeft()
{
    return s_bAdapterLeft;
}

void CSession::AwaitFirstLook()
{
    if (SeenEvent() == AgentEvent::Signalled)
        GetSink().AwaitMonitor(s_dwFirstLookMs);
}

void CSession::Register(IStateObserver& observer)
{
    m_observers.push_back(&observer);
    Call("RegisterStateObserver", [&](IAdapter& adapter) { adapter.RegisterStateObserver(&observer); });
}

std::vector<CTraceLine> CSession::SetConfiguration(const std::string& document)
{
    const CCallTrace trace(GetSink());
    Call("SetConfiguration", [&](IAdapter& adapter) { adapter.SetConfiguration(document.c_str()); });
    return trace.GetLines();
}

std::optional<std::string> CSession::GetStatus()
{
    CStatusReceiver receiver;
    Call("GetStatus", [&](IAdapter& adapter) { adapter.GetStatus(&receiver); });
    return receiver.GetStatus();
}
