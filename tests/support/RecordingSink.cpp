#include "RecordingSink.h"

#include "Masking.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

std::string ToTranscript(const std::vector<CTraceLine>& lines)
{
    std::string transcript;
    for (const CTraceLine& line : lines)
        transcript += std::to_string(line.nKind) + " " + line.text + "\n";
    return transcript;
}

CRecordingSink::CRecordingSink(Hook hook) : m_hook(std::move(hook)) {}

void CRecordingSink::Record(int nKind, const char* format, va_list arguments)
{
    const bool bExpected = format != nullptr && std::strcmp(format, "PatchAdapter: %s") == 0;
    const std::string text = bExpected ? va_arg(arguments, const char*)
                                       : std::string("unexpected format ") + (format == nullptr ? "<null>" : format);
    const CTraceLine line = { ::GetCurrentThreadId(), nKind, text };
    m_lines.Add(line);
    if (m_hook)
        m_hook(line);
}

// va_start belongs in the variadic function itself, and va_end has nothing to do on either target when a hook throws.
#define RECORD_KIND(operation, kind)                                                                                   \
    void CRecordingSink::operation(const char* format, ...)                                                            \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        Record(kind, format, arguments);                                                                               \
        va_end(arguments);                                                                                             \
    }

RECORD_KIND(LogError, 0)
RECORD_KIND(LogWarning, 1)
RECORD_KIND(LogInfo, 2)
RECORD_KIND(LogDetail, 3)
RECORD_KIND(LogTrace, 4)

std::string CRecordingSink::OfThread(DWORD dwThreadId) const
{
    std::vector<CTraceLine> lines = Lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const CTraceLine& line) { return line.dwThreadId != dwThreadId; }),
                lines.end());
    return ToTranscript(lines);
}

std::string CRecordingSink::OfOtherThreads(DWORD dwThreadId) const
{
    std::vector<CTraceLine> lines = Lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const CTraceLine& line) { return line.dwThreadId == dwThreadId; }),
                lines.end());
    return ToTranscript(lines);
}

bool CRecordingSink::WaitForLines(const std::string& part, unsigned nTimes) const
{
    return m_lines.WaitFor([&](const std::vector<CTraceLine>& lines) {
        return std::count_if(lines.begin(), lines.end(), [&](const CTraceLine& line) {
                   return line.text.find(part) != std::string::npos;
               }) >= static_cast<std::ptrdiff_t>(nTimes);
    });
}

std::string CRecordingSink::MaskedOfThisThread() const
{
    return Masked(OfThread());
}
