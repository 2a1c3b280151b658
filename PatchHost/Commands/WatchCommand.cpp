// watch: every notification as it comes, and how long until the monitor looks again.
#include "PatchHost/Callbacks.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Console.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/Session.h"
#include "PatchHost/StatusText.h"
#include "PatchHost/Text.h"

#include <cstdio>
#include <ctime>

namespace
{

constexpr unsigned s_nLookMs = 10000; // between two looks of the monitor
constexpr DWORD s_dwSliceMs = 200;    // between two looks at Ctrl-C and the clock

std::string LocalTime()
{
    const std::time_t now = std::time(nullptr);
    char szText[16] = {};
    std::strftime(szText, sizeof(szText), "%H:%M:%S", std::localtime(&now));
    return szText;
}

/// What a notification says that the one before did not; all of it for the first one.
std::string Changes(const CJson& before, const CJson& now)
{
    std::string text;
    for (const auto& [name, value] : now.items())
        if (name != "timestamp" && name != "verdict" && (before.is_null() || before.at(name) != value))
            text += "    " + name + ": " + Shown(value.dump(-1, ' ', false, CJson::error_handler_t::replace)) + "\n";
    return text.empty() ? "    nothing has changed\n" : text;
}

class CCountdown
{
public:
    explicit CCountdown(const CTraceSink& sink) : m_sink(sink), m_bShown(IsTerminal(Stream::Error)) {}
    ~CCountdown() { Clear(); }

    CCountdown(const CCountdown&) = delete;
    CCountdown& operator=(const CCountdown&) = delete;

    /// Shows how long the monitor still waits; on a terminal alone, in one line.
    void Show()
    {
        const ULONGLONG nTick = m_sink.GetMonitorTick();
        if (!m_bShown || nTick == 0)
            return;
        const ULONGLONG nPassed = (::GetTickCount64() - nTick) % s_nLookMs;
        std::fprintf(stderr, "\rnext look at the service in %2u s ",
                     static_cast<unsigned>((s_nLookMs - nPassed) / 1000));
        std::fflush(stderr);
    }

    void Clear() const
    {
        if (m_bShown)
            std::fputs("\r                                  \r", stderr);
    }

private:
    const CTraceSink& m_sink;
    const bool m_bShown;
};

void Show(const COutput& out, CJson& before, const std::string& document)
{
    const CJson now = StatusJson(ParseStatus(document));
    out.Text(LocalTime() + " " + Shown(now.at("verdict").get<std::string>()) + "\n" + Changes(before, now));
    CJson json = { { "time", LocalTime() } };
    json.update(now);
    out.Json(json);
    before = now;
}

bool IsOver(const COptions& options, ULONGLONG nStart)
{
    return IsInterrupted() || (options.forMs && ::GetTickCount64() - nStart >= *options.forMs);
}

} // namespace

int WatchCommand(const COptions& options)
{
    const COutput out(options);
    CStatusObserver observer;
    CSession session(options);
    session.AwaitFirstLook(); // so that the first lines are the same each time
    session.Register(observer);
    session.GetService().BeginSteps([](const std::string& word) { Note("the service " + word); });
    const ULONGLONG nStart = ::GetTickCount64();
    {
        CCountdown countdown(session.GetSink());
        CJson before;
        while (!IsOver(options, nStart))
        {
            const std::optional<std::string> document = observer.Take(s_dwSliceMs);
            countdown.Clear();
            if (document)
                Show(out, before, *document);
            countdown.Show();
        }
    }
    return UnlessInterrupted(ExitDone);
}
