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

void CTraceSink::Write(int nKind, const char* format, va_list arguments)
{
    if (nKind > m_nLevel)
        return;
    const std::string line = std::string(s_kinds[nKind]) + ": " + Format(format, arguments) + "\n";
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
