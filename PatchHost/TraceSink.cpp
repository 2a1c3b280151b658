#include "TraceSink.h"

#include <cstdio>
#include <string>

namespace
{

const char* const s_kinds[] = { "error", "warning", "info", "detail", "trace" };

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

CTraceSink::CTraceSink(int nLevel) : m_nLevel(nLevel), m_hMonitorTold(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

CTraceSink::~CTraceSink()
{
    ::CloseHandle(m_hMonitorTold);
}

bool CTraceSink::AwaitMonitor(DWORD dwTimeout) const
{
    return ::WaitForSingleObject(m_hMonitorTold, dwTimeout) == WAIT_OBJECT_0;
}

void CTraceSink::Write(int nKind, const char* format, va_list arguments)
{
    const std::string text = Format(format, arguments);
    if (text.find("Exiting Function: CMonitorThread::NotifyObservers") != std::string::npos)
        ::SetEvent(m_hMonitorTold);
    if (nKind > m_nLevel)
        return;
    const std::string line = std::string(s_kinds[nKind]) + ": " + text + "\n";
    std::fputs(line.c_str(), stderr); // one call, so that lines of several threads do not mix
}

#define TRACE_SINK_OPERATION(name, kind)                                                                               \
    void CTraceSink::name(const char* format, ...)                                                                     \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        Write(kind, format, arguments);                                                                                \
        va_end(arguments);                                                                                             \
    }

TRACE_SINK_OPERATION(LogError, 0)
TRACE_SINK_OPERATION(LogWarning, 1)
TRACE_SINK_OPERATION(LogInfo, 2)
TRACE_SINK_OPERATION(LogDetail, 3)
TRACE_SINK_OPERATION(LogTrace, 4)
