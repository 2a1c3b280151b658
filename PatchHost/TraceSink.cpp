#include "PatchHost/TraceSink.h"

#include "PatchHost/Text.h"

#include <cstdio>
#include <utility>

namespace
{

const char* const s_kinds[] = { "error", "warning", "info", "detail", "trace" };
const std::string s_name = "PatchAdapter: "; // what the library's format begins with

/// The line that a format and its arguments make; formatted twice, as its length is not known before.
std::string Format(const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int nLength = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(nLength > 0 ? static_cast<size_t>(nLength) : 0u, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace

const char* KindName(PatchTraceKind kind)
{
    return s_kinds[kind];
}

CTraceSink::CTraceSink(int nLevel) : m_nLevel(nLevel), m_hMonitorTold(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

CTraceSink::~CTraceSink()
{
    ::CloseHandle(m_hMonitorTold);
}

bool CTraceSink::AwaitMonitor(DWORD dwTimeout) const
{
    return ::WaitForSingleObject(m_hMonitorTold, dwTimeout) == WAIT_OBJECT_0;
}

void CTraceSink::SetListener(Listener listener)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listener = std::move(listener);
}

ULONGLONG CTraceSink::GetMonitorTick() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_nMonitorTick;
}

// The monitor counts anew when it starts and when it has told of a change.
void CTraceSink::Notice(const std::string& text)
{
    const bool bTold = text == "Exiting Function: CMonitorThread::NotifyObservers";
    if (bTold)
        ::SetEvent(m_hMonitorTold);
    if (bTold || text == "Entering Function: CMonitorThread::DoWork")
        m_nMonitorTick = ::GetTickCount64();
}

void CTraceSink::Write(PatchTraceKind kind, const char* format, va_list arguments)
{
    const std::string formatted = AnsiToUtf8(Format(format, arguments));
    const bool bNamed = formatted.compare(0, s_name.size(), s_name) == 0;
    const CTraceLine line = { kind, ::GetCurrentThreadId(), bNamed ? formatted.substr(s_name.size()) : formatted };
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Notice(line.text);
        if (m_listener)
            m_listener(line);
    }
    if (kind > m_nLevel)
        return;
    const std::string shown = std::string(KindName(kind)) + ": " + Shown(formatted) + "\n";
    std::fputs(shown.c_str(), stderr); // one call, so that lines of several threads do not mix
}

#define TRACE_SINK_OPERATION(name, kind)                                                                               \
    void CTraceSink::name(const char* format, ...)                                                                     \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        Write(kind, format, arguments);                                                                                \
        va_end(arguments);                                                                                             \
    }

TRACE_SINK_OPERATION(LogError, TraceError)
TRACE_SINK_OPERATION(LogWarning, TraceWarning)
TRACE_SINK_OPERATION(LogInfo, TraceInfo)
TRACE_SINK_OPERATION(LogDetail, TraceDetail)
TRACE_SINK_OPERATION(LogTrace, TraceCall)

CCallTrace::CCallTrace(CTraceSink& sink) : m_sink(sink)
{
    m_sink.SetListener([this, dwThreadId = ::GetCurrentThreadId()](const CTraceLine& line) {
        if (line.dwThreadId == dwThreadId)
            m_lines.push_back(line);
    });
}

CCallTrace::~CCallTrace()
{
    m_sink.SetListener(nullptr);
}
