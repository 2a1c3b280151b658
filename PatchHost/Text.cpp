#include "PatchHost/Text.h"

#include "OvPlatform.h"

#include <algorithm>
#include <numeric>

namespace
{

std::wstring ToWide(UINT nCodePage, const std::string& text)
{
    const int nSource = static_cast<int>(text.size());
    const int nLength = ::MultiByteToWideChar(nCodePage, 0, text.data(), nSource, nullptr, 0);
    std::wstring wide(static_cast<size_t>(nLength > 0 ? nLength : 0), L'\0');
    ::MultiByteToWideChar(nCodePage, 0, text.data(), nSource, wide.data(), nLength);
    return wide;
}

std::string ToNarrow(UINT nCodePage, const std::wstring& text)
{
    const int nSource = static_cast<int>(text.size());
    const int nLength = ::WideCharToMultiByte(nCodePage, 0, text.data(), nSource, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(nLength > 0 ? nLength : 0), '\0');
    ::WideCharToMultiByte(nCodePage, 0, text.data(), nSource, narrow.data(), nLength, nullptr, nullptr);
    return narrow;
}

} // namespace

std::wstring Utf8ToWide(const std::string& text)
{
    return ToWide(CP_UTF8, text);
}

std::string WideToUtf8(const std::wstring& text)
{
    return ToNarrow(CP_UTF8, text);
}

std::wstring AnsiToWide(const std::string& text)
{
    return ToWide(CP_ACP, text);
}

std::string AnsiToUtf8(const std::string& text)
{
    return WideToUtf8(AnsiToWide(text));
}

std::string Utf8ToAnsi(const std::string& text)
{
    return ToNarrow(CP_ACP, Utf8ToWide(text));
}

namespace
{

std::string Escaped(unsigned char c)
{
    static constexpr char s_szDigits[] = "0123456789ABCDEF";
    switch (c)
    {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return { '\\', 'x', s_szDigits[c >> 4], s_szDigits[c & 0xF] };
    }
}

} // namespace

std::string Shown(const std::string& text)
{
    std::string shown;
    for (size_t n = 0; n < text.size(); ++n)
    {
        const auto c = static_cast<unsigned char>(text[n]);
        const auto next = static_cast<unsigned char>(n + 1 < text.size() ? text[n + 1] : 0);
        if (c == 0xC2 && next >= 0x80 && next <= 0x9F) // C1, two bytes in UTF-8
            shown += Escaped(static_cast<unsigned char>(text[++n]));
        else if (c < 0x20 || c == 0x7F)
            shown += Escaped(c);
        else
            shown += text[n];
    }
    return shown;
}

std::string SystemText(unsigned long dwError)
{
    wchar_t buffer[512] = {};
    const DWORD nLength = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                           static_cast<DWORD>(dwError), 0, buffer, 512, nullptr);
    const std::string text = Trimmed(WideToUtf8(std::wstring(buffer, nLength)));
    const std::string code = "error " + std::to_string(dwError);
    return text.empty() ? code : text + " (" + code + ")";
}

std::string Trimmed(const std::string& text)
{
    const size_t nStart = text.find_first_not_of(" \t\r\n");
    return nStart == std::string::npos ? "" : text.substr(nStart, text.find_last_not_of(" \t\r\n") - nStart + 1);
}

std::string Count(size_t nCount, const std::string& noun)
{
    return std::to_string(nCount) + " " + noun + (nCount == 1 ? "" : "s");
}

namespace
{

/// Letters to insert, delete, replace or exchange with the next one to make one word of the other.
size_t Distance(const std::string& from, const std::string& to)
{
    std::vector<size_t> before; // the row of two letters ago
    std::vector<size_t> last(to.size() + 1);
    std::iota(last.begin(), last.end(), size_t{ 0 });
    for (size_t i = 0; i < from.size(); ++i)
    {
        std::vector<size_t> row = { i + 1 };
        for (size_t j = 0; j < to.size(); ++j)
        {
            const size_t nReplaced = last[j] + (from[i] == to[j] ? 0 : 1);
            row.push_back(std::min({ nReplaced, row[j] + 1, last[j + 1] + 1 }));
            if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
                row.back() = std::min(row.back(), before[j - 1] + 1);
        }
        before = std::move(last);
        last = std::move(row);
    }
    return last.back();
}

/// The nearest known word; empty when none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& known)
{
    std::string nearest;
    size_t nBest = word.size() / 3 + 1; // no more than a third of the letters may be wrong
    for (const std::string& candidate : known)
    {
        const size_t nDistance = Distance(word, candidate);
        if (nDistance >= nBest)
            continue;
        nBest = nDistance;
        nearest = candidate;
    }
    return nearest;
}

} // namespace

std::string Suggestion(const std::string& word, const std::vector<std::string>& known)
{
    const std::string nearest = Nearest(word, known);
    return nearest.empty() ? nearest : "; did you mean '" + nearest + "'?";
}

namespace
{

const std::string s_cdataStart = "<![CDATA[";
const std::string s_cdataEnd = "]]>";

/// Walks a document piece by piece (a tag, a CDATA section, the text between them) and writes each on its line.
class CIndenter
{
public:
    CIndenter(const std::string& xml, unsigned nIndent) : m_xml(xml), m_nBase(nIndent) {}

    std::string Render()
    {
        while (m_nPos < m_xml.size())
            Step();
        return m_out;
    }

private:
    void Step()
    {
        if (StartsWith(s_cdataStart))
            Cdata();
        else if (StartsWith("</"))
            EndTag();
        else if (StartsWith("<"))
            StartTag();
        else
            Line(Take(m_xml.find('<', m_nPos)));
    }

    void Cdata()
    {
        m_nPos += s_cdataStart.size();
        const std::string inner = Take(m_xml.find(s_cdataEnd, m_nPos));
        m_nPos += s_cdataEnd.size();
        Line(s_cdataStart);
        m_out += IndentXml(inner, m_nBase + m_nDepth + 1);
        Line(s_cdataEnd);
    }

    void EndTag()
    {
        m_nDepth -= m_nDepth > 0 ? 1 : 0;
        Line(Take(PastTag()));
    }

    /// An element that holds text alone, or nothing, stays on one line.
    void StartTag()
    {
        std::string line = Take(PastTag());
        const bool bOpens = line.compare(0, 2, "<?") != 0 && line.compare(0, 2, "<!") != 0 &&
                            line.compare(line.size() - 2, 2, "/>") != 0;
        const size_t nNext = m_xml.find('<', m_nPos);
        if (bOpens && nNext != std::string::npos && m_xml.compare(nNext, 2, "</") == 0)
        {
            line += Take(nNext);
            line += Take(PastTag());
            Line(line);
            return;
        }
        Line(line);
        m_nDepth += bOpens ? 1 : 0;
    }

    bool StartsWith(const std::string& text) const { return m_xml.compare(m_nPos, text.size(), text) == 0; }

    size_t PastTag() const
    {
        const size_t nEnd = m_xml.find('>', m_nPos);
        return nEnd == std::string::npos ? nEnd : nEnd + 1;
    }

    /// The text up to a position, or to the end, and steps past it.
    std::string Take(size_t nEnd)
    {
        const size_t nStop = nEnd == std::string::npos ? m_xml.size() : nEnd;
        std::string text = m_xml.substr(m_nPos, nStop - m_nPos);
        m_nPos = nStop;
        return text;
    }

    void Line(const std::string& text)
    {
        if (text.find_first_not_of(" \t\r\n") != std::string::npos)
            m_out += std::string(2 * (m_nBase + m_nDepth), ' ') + Shown(text) + "\n";
    }

    const std::string& m_xml;
    const unsigned m_nBase;
    size_t m_nPos = 0;
    unsigned m_nDepth = 0;
    std::string m_out;
};

} // namespace

std::string IndentXml(const std::string& xml, unsigned nIndent)
{
    return CIndenter(xml, nIndent).Render();
}
