#include "PatchHost/Boundary.h"

#include "PatchHost/Text.h"
#include "PatchHost/TimeLimit.h"

#include <map>

namespace
{

constexpr DWORD s_dwMonitorMs = 15000;

using Unused = void (IAdapter::*)(void*);

const std::map<std::string, Unused> s_notImplemented = {
    { "RegisterEventObserver", &IAdapter::RegisterEventObserver },
    { "DeRegisterEventObserver", &IAdapter::DeRegisterEventObserver },
    { "RegisterConfigStateObserver", &IAdapter::RegisterConfigStateObserver },
    { "DeRegisterConfigStateObserver", &IAdapter::DeRegisterConfigStateObserver },
    { "RegisterActionOutcomeObserver", &IAdapter::RegisterActionOutcomeObserver },
    { "DeRegisterActionOutcomeObserver", &IAdapter::DeRegisterActionOutcomeObserver },
    { "SetFeature", &IAdapter::SetFeature },
};

} // namespace

CBoundary::CBoundary(const COptions& options, Listener listener)
    : m_dwHostThread(::GetCurrentThreadId()),
      m_nTimeoutMs(options.nTimeoutMs),
      m_listener(std::move(listener)),
      m_sink(options.nTraceLevel),
      m_library(options.library)
{
    m_sink.SetListener([this](const CTraceLine& line) {
        Tell({ { "trace", KindName(line.kind) }, { "text", line.text } });
    });
}

CBoundary::~CBoundary()
{
    if (m_pAdapter != nullptr)
        m_pFactory->Uninitialise(m_pAdapter);
    DeleteAdapterFactory(m_pFactory);
}

void CBoundary::Tell(CJson event)
{
    CJson whole = { { "thread", ::GetCurrentThreadId() == m_dwHostThread ? "host" : "monitor" } };
    whole.update(event);
    Record(whole);
}

void CBoundary::Record(const CJson& event)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listener(event);
}

void CBoundary::Call(const std::string& name, const std::string& argument)
{
    CJson call = { { "call", name } };
    if (name == "SetConfiguration")
        call["argument"] = argument;
    Tell(call);
    const CTimeLimit limit(m_nTimeoutMs, name);
    const CJson value = Make(name, argument);
    Tell({ { "return", name }, { "value", value } });
}

CJson CBoundary::Make(const std::string& name, const std::string& argument)
{
    if (name == "GetAdapterVersion")
        return { m_library.GetMajor(), m_library.GetMinor() };
    if (name == "GetAdapterFactory1_0" && m_pFactory == nullptr)
        m_pFactory = m_library.MakeFactory();
    else if (name == "Initialise" && m_pFactory != nullptr)
        m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
    else if (name == "Uninitialise" && m_pAdapter != nullptr)
    {
        m_pFactory->Uninitialise(m_pAdapter);
        m_pAdapter = nullptr;
    }
    else if (name == "DeleteFactory" && m_pFactory != nullptr && m_pAdapter == nullptr)
    {
        DeleteAdapterFactory(m_pFactory);
        m_pFactory = nullptr;
        return CJson();
    }
    else if (m_pAdapter != nullptr)
        return MakeOnAdapter(name, argument);
    else
        throw CCommandError(ExitFailed, "the call " + name + " is not possible here");
    return name == "Initialise" ? CJson(m_pAdapter != nullptr) : CJson();
}

CJson CBoundary::MakeOnAdapter(const std::string& name, const std::string& argument)
{
    const auto unused = s_notImplemented.find(name);
    if (name == "GetStatus")
        return m_pAdapter->GetStatus(this);
    if (name == "GetConfiguration")
        return m_pAdapter->GetConfiguration(this);
    if (name == "RegisterStateObserver")
        m_pAdapter->RegisterStateObserver(this);
    else if (name == "DeRegisterStateObserver")
        m_pAdapter->DeRegisterStateObserver(this);
    else if (name == "SetConfiguration")
        m_pAdapter->SetConfiguration(Utf8ToAnsi(argument).c_str());
    else if (name == "DoAction")
        m_pAdapter->DoAction(nullptr, nullptr);
    else if (unused != s_notImplemented.end())
        (m_pAdapter->*unused->second)(nullptr);
    else
        throw CCommandError(ExitFailed, "the call " + name + " is not known");
    return CJson();
}

void CBoundary::AwaitMonitor()
{
    Record({ { "wait", "monitor" } });
    m_sink.AwaitMonitor(s_dwMonitorMs);
}

void CBoundary::OnStateChange(int32_t value, const char* status)
{
    Tell({ { "notified", value }, { "status", AnsiToUtf8(status) } });
}

void CBoundary::OnStatus(const char* status)
{
    Tell({ { "received", "status" }, { "status", AnsiToUtf8(status) } });
}

void CBoundary::OnConfiguration(const char* configuration)
{
    Tell({ { "received", "configuration" }, { "configuration", AnsiToUtf8(configuration) } });
}
