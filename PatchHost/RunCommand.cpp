// run: the main job from end to end, against a simulated service. Takes up to 30 seconds: the adapter looks for the
// service every ten seconds.
#include "AdapterSession.h"
#include "AgentSimulator/AgentSimulator.h"
#include "Apartment.h"
#include "Callbacks.h"
#include "Commands.h"
#include "Documents.h"
#include "PolicyRevision.h"
#include "State.h"
#include "Text.h"
#include "TraceSink.h"

#include <algorithm>
#include <iostream>

namespace
{

constexpr DWORD s_dwSecond = 1000;
constexpr unsigned s_nMonitorSeconds = 15; // the monitor looks every ten seconds; the rest is for a busy machine

void Require(bool bHappened, const std::string& step)
{
    if (!bHappened)
        throw std::runtime_error("this did not happen: " + step);
}

void Heading(const std::string& text)
{
    std::cout << "\n== " << text << "\n" << std::flush;
}

void ShowDocument(const std::string& xml)
{
    std::cout << IndentXml(xml) << std::flush;
}

bool SaysServiceRuns(const std::string& status, bool bRuns)
{
    return status.find(bRuns ? "serviceRunning=\"true\"" : "serviceRunning=\"false\"") != std::string::npos;
}

/// Takes notifications until one is as it should be; the monitor's own ones can come between.
template <class Predicate>
std::optional<std::string> TakeUntil(CStatusObserver& observer, DWORD dwTimeout, Predicate isExpected)
{
    std::optional<std::string> status = observer.Take(dwTimeout);
    while (status && !isExpected(*status))
        status = observer.Take(dwTimeout);
    return status;
}

/// The notification that says whether the service runs, while standard error shows the seconds that pass.
std::string AwaitService(CStatusObserver& observer, bool bRuns)
{
    std::cerr << "waiting for the monitor, which looks every ten seconds:" << std::flush;
    std::optional<std::string> status;
    for (unsigned nSecond = 1; !status && nSecond <= s_nMonitorSeconds; ++nSecond)
    {
        status = TakeUntil(observer, s_dwSecond, [&](const std::string& s) { return SaysServiceRuns(s, bRuns); });
        if (!status)
            std::cerr << " " << nSecond << std::flush;
    }
    std::cerr << "\n";
    Require(status.has_value(),
            bRuns ? "the observer is told that the service is back" : "the observer is told that the service is gone");
    return *status;
}

void Apply(CAdapterSession& adapter, CAgentSimulator& service, CStatusObserver& observer, const std::string& policy)
{
    Heading("the policy is handed in");
    adapter->SetConfiguration(policy.c_str());

    const std::vector<std::wstring> received = service.GetReceivedSettings();
    Require(!received.empty(), "the service receives the settings document");
    Heading("the service received");
    ShowDocument(WideToUtf8(received.back()));

    const std::optional<std::string> revision = ReadPolicyRevision();
    Require(revision.has_value(), "the revision is recorded");
    Heading("the recorded revision");
    std::cout << *revision << "\n";

    const std::optional<std::string> status = TakeUntil(
        observer, 0, [&](const std::string& s) { return s.find("RevID=\"" + *revision + "\"") != std::string::npos; });
    Require(status.has_value(), "the observer is told the new status, with the revision");
    Heading("the observer was told after the apply");
    ShowDocument(*status);
}

void AskForStatus(CAdapterSession& adapter)
{
    CStatusReceiver receiver;
    adapter->GetStatus(&receiver);
    Require(receiver.GetStatus().has_value(), "a status document comes");
    Heading("the status document, asked for");
    ShowDocument(*receiver.GetStatus());
}

void ChangeService(CAgentSimulator& service, CStatusObserver& observer, bool bRuns)
{
    Heading(bRuns ? "the service comes back" : "the service goes away");
    if (bRuns)
        service.Start();
    else
        service.Stop();
    ShowDocument(AwaitService(observer, bRuns));
}

} // namespace

int RunCommand(const COptions& options)
{
    const std::string policy = ReadDocument(options.files.front());
    const CComApartment apartment;
    const CRecordPlace record(RecordKind::Kept, options.stateFolder);
    CTraceSink sink(std::max(options.nTraceLevel, 0)); // what fails here must be seen
    CAgentSimulator service;
    service.Start();

    const CAdapterLibrary library(options.library);
    std::cout << library.GetPath() << ", interface version " << library.GetMajor() << "." << library.GetMinor() << "\n";
    CStatusObserver observer;
    CAdapterSession adapter(library, &sink);

    adapter->RegisterStateObserver(&observer);
    const std::optional<std::string> first = observer.Take(0);
    Require(first.has_value(), "a new observer is told the current status");
    Heading("the new observer was told");
    ShowDocument(*first);

    Apply(adapter, service, observer, policy);
    AskForStatus(adapter);
    Require(sink.AwaitMonitor(s_nMonitorSeconds * s_dwSecond), "the monitor sees that the service runs");
    ChangeService(service, observer, false);
    ChangeService(service, observer, true);

    adapter->DeRegisterStateObserver(&observer);
    Heading("done");
    std::cerr << "stopping the adapter, which can take ten seconds\n";
    adapter.Stop();
    return ExitDone;
}
