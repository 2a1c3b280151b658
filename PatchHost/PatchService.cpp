#include "PatchHost/PatchService.h"

#include "PatchHost/Apartment.h"

namespace
{

const char* Word(CServiceStep::Action action)
{
    switch (action)
    {
    case CServiceStep::Action::Start:
        return "starts";
    case CServiceStep::Action::Stop:
        return "stops";
    case CServiceStep::Action::Hang:
        return "hangs";
    default:
        return "tells other values";
    }
}

} // namespace

AgentEvent SeenEvent()
{
    const HANDLE hEvent = ::OpenEventW(SYNCHRONIZE, FALSE, TREVOK_SERVICE_EVENT);
    if (hEvent == nullptr)
        return AgentEvent::Absent;
    const bool bSignalled = ::WaitForSingleObject(hEvent, 0) == WAIT_OBJECT_0;
    ::CloseHandle(hEvent);
    return bSignalled ? AgentEvent::Signalled : AgentEvent::NotSignalled;
}

CPatchService::CPatchService(ServiceKind kind, const std::string& script)
    : m_script(ParseServiceScript(script)), m_hEnd(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (kind == ServiceKind::Installed)
        return;
    CheckForeignEvent(kind);
    if (!m_simulator.PublishClass())
        throw CCommandError(ExitNoService, "the simulated service's class cannot be registered");
    if (kind == ServiceKind::Simulated)
    {
        for (const CAgentFault& fault : m_script.faults)
            m_simulator.AddFault(fault);
        Do({ 0, m_script.initially, m_script.values });
    }
    else
        m_simulator.Die(); // the class is there, so that no other one is asked, and answers that it cannot start
}

CPatchService::~CPatchService()
{
    ::SetEvent(m_hEnd);
    if (m_steps.joinable())
        m_steps.join();
    ::CloseHandle(m_hEnd);
}

// An event that is there already belongs to the machine's own service, and is left as it is.
void CPatchService::CheckForeignEvent(ServiceKind kind)
{
    const AgentEvent event = SeenEvent();
    m_bForeign = event != AgentEvent::Absent;
    if (!m_bForeign || kind == ServiceKind::Isolated)
        return;
    const bool bFits = kind == ServiceKind::Simulated && event == AgentEvent::Signalled && m_script.steps.empty() &&
                       m_script.initially == CServiceStep::Action::Start;
    if (!bFits)
        throw CCommandError(ExitNoService, "a patch service runs on this machine, which cannot be made to look as if "
                                           "it were gone; use --service installed or another machine");
}

void CPatchService::Do(const CServiceStep& step)
{
    for (const auto& [stateId, value] : step.values)
        m_simulator.SetValue(stateId, value);
    if (m_bForeign || step.action == CServiceStep::Action::Set)
        return;
    if (step.action == CServiceStep::Action::Start)
    {
        m_simulator.Start();
        return;
    }
    m_simulator.SetEventState(AgentEvent::NotSignalled); // for those, too, who have the event open
    if (step.action == CServiceStep::Action::Stop)
        m_simulator.Die(); // the class stays: another one of the machine must not be asked in its place
}

void CPatchService::BeginSteps(std::function<void(const std::string&)> told)
{
    if (HasSteps() && !m_steps.joinable())
        m_steps = std::thread([this, told = std::move(told)] { RunSteps(told); });
}

void CPatchService::RunSteps(const std::function<void(const std::string&)>& told)
{
    const CComApartment apartment;
    const ULONGLONG nStart = ::GetTickCount64();
    for (const CServiceStep& step : m_script.steps)
    {
        const ULONGLONG nDue = nStart + step.nAtMs;
        const ULONGLONG nNow = ::GetTickCount64();
        if (::WaitForSingleObject(m_hEnd, nDue > nNow ? static_cast<DWORD>(nDue - nNow) : 0) == WAIT_OBJECT_0)
            return;
        Do(step);
        told(Word(step.action));
    }
}

std::optional<std::wstring> CPatchService::GetLastSettings() const
{
    const std::vector<std::wstring> received = m_simulator.GetReceivedSettings();
    return received.empty() ? std::nullopt : std::optional<std::wstring>(received.back());
}
