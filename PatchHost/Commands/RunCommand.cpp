// run: the main job from end to end, against a simulated service. Takes up to 30 seconds: the adapter looks for the
// service every ten seconds.
#include "PatchHost/Callbacks.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/PolicyRevision.h"
#include "PatchHost/Refusal.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

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

void Tell(const COutput& out, const std::string& heading, const std::string& document)
{
    out.Text("\n== " + heading + "\n" + IndentXml(document));
    out.Json({ { "step", heading }, { "document", document } });
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

/// The notification that says whether the service runs, while standard error shows the seconds that pass. Nothing when
/// it is interrupted.
std::optional<std::string> AwaitService(CStatusObserver& observer, bool bRuns)
{
    std::cerr << "waiting for the monitor, which looks every ten seconds:" << std::flush;
    std::optional<std::string> status;
    for (unsigned nSecond = 1; !status && nSecond <= s_nMonitorSeconds && !IsInterrupted(); ++nSecond)
    {
        status = TakeUntil(observer, s_dwSecond, [&](const std::string& s) { return SaysServiceRuns(s, bRuns); });
        if (!status)
            std::cerr << " " << nSecond << std::flush;
    }
    std::cerr << "\n";
    Require(status || IsInterrupted(),
            bRuns ? "the observer is told that the service is back" : "the observer is told that the service is gone");
    return status;
}

void Register(CSession& session, const COutput& out, CStatusObserver& observer)
{
    session.Register(observer);
    const std::optional<std::string> first = observer.Take(0);
    Require(first.has_value(), "a new observer is told the current status");
    Tell(out, "the new observer was told", *first);
}

/// @return whether the policy was accepted.
bool HandIn(CSession& session, const std::string& policy)
{
    const std::optional<CRefusal> refusal = FindRefusal(session.SetConfiguration(policy), policy);
    if (refusal)
        Note("the policy is refused\n" + RefusalText(*refusal));
    return !refusal;
}

/// @return whether the policy was accepted.
bool Apply(CSession& session, const COutput& out, CStatusObserver& observer, const std::string& policy)
{
    Tell(out, "the policy is handed in", "");
    if (!HandIn(session, policy))
        return false;

    const std::optional<std::wstring> settings = session.GetService().GetLastSettings();
    Require(settings.has_value(), "the service receives the settings document");
    Tell(out, "the service received", WideToUtf8(*settings));

    const std::optional<std::string> revision = ReadPolicyRevision();
    Require(revision.has_value(), "the revision is recorded");
    Tell(out, "the recorded revision", *revision);

    const std::optional<std::string> status = TakeUntil(
        observer, 0, [&](const std::string& s) { return s.find("RevID=\"" + *revision + "\"") != std::string::npos; });
    Require(status.has_value(), "the observer is told the new status, with the revision");
    Tell(out, "the observer was told after the apply", *status);
    return true;
}

void AskForStatus(CSession& session, const COutput& out)
{
    const std::optional<std::string> status = session.GetStatus();
    Require(status.has_value(), "a status document comes");
    Tell(out, "the status document, asked for", *status);
}

void ChangeService(CSession& session, const COutput& out, CStatusObserver& observer, bool bRuns)
{
    if (IsInterrupted())
        return;
    session.GetService().Do({ 0, bRuns ? CServiceStep::Action::Start : CServiceStep::Action::Stop, {} });
    const std::optional<std::string> status = AwaitService(observer, bRuns);
    if (status)
        Tell(out, bRuns ? "the service came back" : "the service went away", *status);
}

} // namespace

int RunCommand(const COptions& options)
{
    const COutput out(options);
    const std::string policy = ReadDocument(options.files.front());
    COptions own = options;
    own.bOrderlyStop = true;
    own.nTraceLevel = std::max(options.nTraceLevel, 0); // what fails here must be seen
    CStatusObserver observer;
    CSession session(own);
    const CAdapterLibrary& library = session.GetLibrary();
    Tell(out,
         library.GetPath() + ", interface version " + std::to_string(library.GetMajor()) + "." +
             std::to_string(library.GetMinor()),
         "");

    Register(session, out, observer);
    if (!Apply(session, out, observer, policy))
        return UnlessInterrupted(ExitRefused);
    AskForStatus(session, out);
    Require(session.GetSink().AwaitMonitor(s_nMonitorSeconds * s_dwSecond), "the monitor sees that the service runs");
    ChangeService(session, out, observer, false);
    ChangeService(session, out, observer, true);
    return UnlessInterrupted(ExitDone);
}
