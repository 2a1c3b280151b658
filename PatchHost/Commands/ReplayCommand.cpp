// replay: the host's side of a recorded session again, and whether the library answers the same.
#include "PatchHost/Apartment.h"
#include "PatchHost/Boundary.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Console.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

#include <regex>
#include <sstream>
#include <vector>

namespace
{

constexpr size_t s_nMostBytes = 16 * size_t{ PATCHADAPTER_MAX_POLICY_BYTES }; // several policies and their traces

/// What may differ from one session to the next: GUIDs, times, line numbers and addresses.
std::string Masked(const std::string& text)
{
    static const std::pair<std::regex, std::string> masks[] = {
        { std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"), "GUID" },
        { std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.000"), "TIME" },
        { std::regex("( Line: )[0-9]+( Evidence: )"), "$1#$2" },
        { std::regex("(Source: [^ ()]*\\()[0-9]+\\)"), "$1#)" },
        { std::regex("(More Info From [^ ()]*\\()[0-9]+\\)"), "$1#)" },
        { std::regex("( \\[[^ :\\[\\]]+:)[0-9]+(\\] \\^)"), "$1#$2" },
        { std::regex("\\b(pIn|pOut|pDoc|m_spNode): -?[0-9]+"), "$1: #" },
    };
    std::string masked = text;
    for (const auto& [pattern, replacement] : masks)
        masked = std::regex_replace(masked, pattern, replacement);
    return masked;
}

/// A thread's events, masked, in their order.
std::vector<std::string> EventsOf(const std::vector<CJson>& events, const std::string& thread)
{
    std::vector<std::string> lines;
    for (const CJson& event : events)
        if (event.value("thread", "") == thread)
            lines.push_back(Masked(event.dump(-1, ' ', false, CJson::error_handler_t::replace)));
    return lines;
}

bool IsHeader(const CJson& event)
{
    return event.is_object() && event.value("patchhost", CJson()) == 1;
}

/// The code page of the recording, for its documents are narrow texts of that one.
void UseCodePage(unsigned nCodePage)
{
    if (nCodePage != ::GetACP() && !UseAnsiCodePage(nCodePage))
        throw CCommandError(ExitFailed, "this was recorded with code page " + std::to_string(nCodePage) +
                                            ", which is not available here");
}

std::vector<CJson> ReadRecording(const std::string& file)
{
    std::vector<CJson> events;
    std::istringstream stream(ReadFile(file, s_nMostBytes, ExitFailed));
    for (std::string line; std::getline(stream, line);)
    {
        events.push_back(CJson::parse(line, nullptr, false));
        if (!IsHeader(events.front()))
            throw CCommandError(ExitFailed, file + " is not a recording");
        if (!events.back().is_object())
            throw CCommandError(ExitFailed, file + " is broken in line " + std::to_string(events.size()));
    }
    if (events.size() < 2)
        throw CCommandError(ExitFailed, file + " holds no calls");
    UseCodePage(events.front().value("codePage", ::GetACP()));
    return events;
}

void Play(const std::vector<CJson>& recording, CBoundary& boundary)
{
    for (const CJson& event : recording)
    {
        if (event.contains("wait"))
            boundary.AwaitMonitor();
        const std::string call = event.value("call", "");
        if (call == "Uninitialise")
            Note("stopping the adapter, which can take ten seconds");
        if (!call.empty())
            boundary.Call(call, event.value("argument", ""));
    }
}

/// Shows the first difference of a thread's events. @return whether there is one.
bool Differs(const COutput& out, const std::string& thread, const std::vector<std::string>& recorded,
             const std::vector<std::string>& played)
{
    size_t n = 0;
    while (n < recorded.size() && n < played.size() && recorded[n] == played[n])
        ++n;
    const bool bSame = n == recorded.size() && n == played.size();
    const std::string was = n < recorded.size() ? recorded[n] : "nothing more";
    const std::string is = n < played.size() ? played[n] : "nothing more";
    CJson json = { { "thread", thread }, { "same", bSame }, { "events", recorded.size() } };
    if (!bSame)
        json.update({ { "firstDifference", n + 1 }, { "recorded", was }, { "played", is } });
    out.Json(json);
    out.Text(thread + ": " +
             (bSame ? out.Good("the same") + ", " + std::to_string(recorded.size()) + " events\n"
                    : out.Bad("different") + " from event " + std::to_string(n + 1) +
                          " on\n    recorded: " + Shown(was) + "\n    played:   " + Shown(is) + "\n"));
    return !bSame;
}

} // namespace

int ReplayCommand(const COptions& options)
{
    const COutput out(options);
    const std::vector<CJson> recording = ReadRecording(options.files.front());
    const CJson& header = recording.front();
    const CComApartment apartment;
    const CStatePlace state(StateKind::Throwaway, "");
    const CPatchService service(header.value("service", "") == "down" ? ServiceKind::Down : ServiceKind::Simulated,
                                header.value("script", ""));
    std::vector<CJson> played;
    {
        CBoundary boundary(options, [&played](const CJson& event) { played.push_back(event); });
        Play(recording, boundary);
    }
    bool bDiffers = false;
    for (const char* const szThread : { "host", "monitor" })
        bDiffers = Differs(out, szThread, EventsOf(recording, szThread), EventsOf(played, szThread)) || bDiffers;
    return UnlessInterrupted(bDiffers ? ExitFailed : ExitDone);
}
