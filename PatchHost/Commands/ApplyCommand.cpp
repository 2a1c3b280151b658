// apply: a policy from the host to the service, step by step.
#include "PatchHost/Callbacks.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/PolicyRevision.h"
#include "PatchHost/Refusal.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

namespace
{

struct CStep
{
    std::string name;
    std::string outcome; ///< "done", "failed", "not reached" or "not needed"
    std::string detail;
};

const char* const s_szDone = "done";
const char* const s_szFailed = "failed";
const char* const s_szNotReached = "not reached";
const char* const s_szNotNeeded = "not needed";

/// What the trace, the stored revision and the observer say of one SetConfiguration.
struct CApplied
{
    std::vector<CTraceLine> lines;
    std::optional<CRefusal> refusal; ///< also of a failure after the document was accepted
    std::string before;
    std::string after;
    bool bPatchPolicy = false;
    bool bLoaded = false;
    bool bNotRunning = false;
    bool bNotConnected = false;
    bool bNotPushed = false;
    bool bApplied = false;
    size_t nNotifications = 0;
};

bool Says(const CApplied& applied, PatchTraceKind kind, const std::string& message)
{
    for (const CTraceLine& line : applied.lines)
        if (line.kind == kind && line.text.compare(0, message.size(), message) == 0)
            return true;
    return false;
}

CApplied Apply(CSession& session, CStatusObserver& observer, const std::string& document)
{
    CApplied applied;
    applied.before = PolicyRevisionText();
    applied.lines = session.SetConfiguration(document);
    applied.after = PolicyRevisionText();
    applied.nNotifications = observer.CountOf(::GetCurrentThreadId());
    applied.refusal = FindRefusal(applied.lines, document);
    applied.bPatchPolicy =
        Says(applied, TraceInfo, "Info Msg: Translating policy XML") && Says(applied, TraceDetail, "Name: policy");
    applied.bLoaded = Says(applied, TraceInfo, "Info Msg: Loaded configuration xml");
    applied.bNotRunning = Says(applied, TraceWarning, "Info Msg: Failed to apply configuration because");
    applied.bNotConnected = Says(applied, TraceWarning, "Info Msg: Unable to connect to the Patch API");
    applied.bNotPushed = Says(applied, TraceWarning, "Info Msg: Failed to apply Patch Agent settings policy");
    applied.bApplied = Says(applied, TraceInfo, "Info Msg: Configuration successfully applied");
    return applied;
}

std::string Outcome(bool bReached, bool bNeeded, bool bDone)
{
    if (!bReached)
        return s_szNotReached;
    if (!bNeeded)
        return s_szNotNeeded;
    return bDone ? s_szDone : s_szFailed;
}

std::vector<CStep> Steps(const CApplied& applied)
{
    const bool bReached = applied.bLoaded && !applied.bNotRunning;
    const bool bPushed = bReached && !applied.bNotPushed;
    const bool bTold = applied.nNotifications > 0;
    const bool bRecorded = bPushed && (applied.bApplied || bTold);
    return { { "checked", applied.bLoaded ? s_szDone : s_szFailed, "" },
             { "translated", Outcome(applied.bLoaded, applied.bPatchPolicy, true), "" },
             { "service runs", Outcome(applied.bLoaded, true, !applied.bNotRunning), "" },
             { "pushed", Outcome(bReached, applied.bPatchPolicy, bPushed), "" },
             { "recorded", Outcome(bPushed, applied.bPatchPolicy, bRecorded),
               "'" + applied.before + "' before, '" + applied.after + "' after" },
             { "observers told", Outcome(bRecorded, applied.bPatchPolicy, bTold),
               Count(applied.nNotifications, "notification") } };
}

/// The reports of the failure, as items.
std::vector<CEvidenceItem> Evidence(const CApplied& applied, const std::string& document)
{
    std::vector<CEvidenceItem> items;
    if (applied.refusal)
        items = applied.refusal->evidence;
    if (applied.bApplied || applied.refusal)
        return items;
    for (const CTraceLine& line : applied.lines)
        if (line.kind == TraceWarning)
            for (const CEvidenceItem& item : SplitEvidence(line.text, document))
                items.push_back(item);
    return items;
}

ExitCode Result(const CApplied& applied)
{
    if (!applied.bLoaded)
        return ExitRefused;
    if (applied.bNotRunning || applied.bNotConnected)
        return ExitNoService;
    return applied.bApplied ? ExitDone : ExitFailed;
}

std::string Word(ExitCode result)
{
    switch (result)
    {
    case ExitDone:
        return "applied";
    case ExitRefused:
        return "refused";
    case ExitNoService:
        return "not applied: the patch service is not available";
    default:
        return "not applied";
    }
}

void Show(const COutput& out, const CApplied& applied, const std::string& document)
{
    const ExitCode result = Result(applied);
    const std::vector<CEvidenceItem> evidence = Evidence(applied, document);
    CJson json = { { "result", Word(result) },
                   { "revisionBefore", applied.before },
                   { "revisionAfter", applied.after },
                   { "steps", CJson::array() } };
    for (const CStep& step : Steps(applied))
    {
        json["steps"].push_back({ { "name", step.name }, { "outcome", step.outcome } });
        const std::string outcome = step.outcome == s_szFailed ? out.Bad(step.outcome) : step.outcome;
        out.Text(step.name + std::string(16 - step.name.size(), ' ') + outcome +
                 (step.detail.empty() || step.outcome == s_szNotReached ? "" : ", " + Shown(step.detail)) + "\n");
    }
    if (applied.refusal)
    {
        json["refusal"] = RefusalJson(*applied.refusal);
        out.Text(RefusalText(*applied.refusal));
    }
    else
        json["evidence"] = EvidenceJson(evidence);
    if (!evidence.empty())
        out.Text("evidence\n" + EvidenceText(evidence));
    out.Text((result == ExitDone ? out.Good(Word(result)) : out.Bad(Word(result))) + "\n");
    out.Json(json);
}

} // namespace

int ApplyCommand(const COptions& options)
{
    const COutput out(options);
    const std::string document = ReadDocument(options.files.front());
    CStatusObserver observer;
    CSession session(options);
    session.Register(observer);
    while (observer.Take(0)) // what a new observer is told
        ;
    session.GetService().BeginSteps([](const std::string& word) { Note("the service " + word); });
    const CApplied applied = Apply(session, observer, document);
    Show(out, applied, document);
    return UnlessInterrupted(Result(applied));
}
