#include "PatchAdapter/PatchTrace.h"

#include "ovCore/OvCallOut.h"
#include "ovCore/OvStringUtil.h"

#include <iterator>

namespace
{

const wchar_t s_szFormat[] = L"PatchAdapter: %s";

// A switch, not a table of member pointers: GCC 12's sanitizers call the first entry of such a table whatever the
// index.
void WriteLine(ILogSink& sink, int nKind, const char* format, const char* text)
{
    switch (nKind)
    {
    case TraceError:
        return sink.LogError(format, text);
    case TraceWarning:
        return sink.LogWarning(format, text);
    case TraceInfo:
        return sink.LogInfo(format, text);
    case TraceDetail:
        return sink.LogDetail(format, text);
    default:
        return sink.LogTrace(format, text);
    }
}

/// The format in the host's code page, without memory of its own.
class CNarrowFormat
{
public:
    CNarrowFormat()
    {
        constexpr int nUnits = -1; // up to and with the zero
        if (::WideCharToMultiByte(CP_ACP, 0, s_szFormat, nUnits, m_sz, sizeof(m_sz), nullptr, nullptr) <= 0)
            throw COvStdException("WideCharToMultiByte");
    }
    const char* Get() const { return m_sz; }

private:
    char m_sz[2 * std::size(s_szFormat)];
};

std::wstring TextOrEmpty(const wchar_t* szText)
{
    return szText == nullptr ? L"" : szText;
}

} // namespace

void CPatchTrace::Write(int nKind, std::wstring_view text) noexcept
{
    if (m_pSink == nullptr || nKind < TraceError || nKind > TraceCall)
        return;
    try
    {
        const std::string narrow = COvStringUtil::WideToNarrow(text);
        const CNarrowFormat format;
        OvCallOut([&] { WriteLine(*m_pSink, nKind, format.Get(), narrow.c_str()); });
    }
    catch (...)
    {
        // a lost line must not fail the operation that it describes
    }
}

/// Writes the text that the builder returns; an unbound trace does not call it.
template <class Build>
void CPatchTrace::WriteBuilt(int nKind, Build&& build) noexcept
{
    if (m_pSink == nullptr)
        return;
    try
    {
        Write(nKind, build());
    }
    catch (...)
    {
        // as in Write
    }
}

void CPatchTrace::Exception(const COvBaseException& e) noexcept
{
    WriteBuilt(TraceError, [&] {
        std::wstring text = L"Error: " + COvStringUtil::LongToString(e.GetCode(), 16) + L" File: " +
                            TextOrEmpty(e.GetFile()) + L" Line: " + COvStringUtil::LongToString(e.GetLine(), 10) +
                            L" Evidence: ";
        if (const wchar_t* const szEvidence = e.GetEvidence(L" "))
            text += szEvidence; // which can be a whole document
        return text;
    });
}

void CPatchTrace::Warning(const COvEvidence& e) noexcept
{
    WriteBuilt(TraceWarning, [&] { return e.ToString(L" "); });
}

void CPatchTrace::Info(const COvEvidence& e) noexcept
{
    WriteBuilt(TraceInfo, [&] { return e.ToString(L" "); });
}

void CPatchTrace::Detail(const COvEvidence& e) noexcept
{
    WriteBuilt(TraceDetail, [&] { return e.ToString(L" "); });
}

void CPatchTrace::WriteCall(std::wstring_view begin, std::wstring_view name) noexcept
{
    WriteBuilt(TraceCall, [&] {
        std::wstring text;
        text.reserve(begin.size() + name.size());
        text.append(begin).append(name);
        return text;
    });
}

void CPatchTrace::Enter(const wchar_t* szName) noexcept
{
    if (m_pSink != nullptr)
        WriteCall(L"Entering Function: ", szName);
}

void CPatchTrace::Leave(const wchar_t* szName) noexcept
{
    if (m_pSink != nullptr)
        WriteCall(L"Exiting Function: ", szName);
}
