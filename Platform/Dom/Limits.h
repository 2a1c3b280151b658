// The bounds on a text, beyond libxml2's own (256 levels, 10 MB in one text), that keep the time linear.
#pragma once

#include <array>
#include <cstddef>

namespace OvPlatform::Dom
{

/// Attributes in one start tag. libxml2 compares each with all before it, so that the time for a text goes with its
/// size times this bound: about 0.4 s for 1 MB at worst; 13 s without it.
constexpr size_t s_nMaxAttributes = 1000;

/// Namespace declarations that are in scope at once. Each prefix is looked up among them.
constexpr size_t s_nMaxNamespaces = 500;

/// Follows the markup of a text as far as is needed to count the attributes of each start tag, ahead of the parser,
/// which calls back only when it has compared them. What this takes for a tag in a text that is not well-formed does
/// not matter: the parser gets nothing more behind the first fault.
class CAttributeMeter
{
public:
    /// @return false when this unit belongs to one attribute too many.
    bool Take(wchar_t unit) { return (m_state == State::Content && unit != L'<') || TakeInMarkup(unit); }

    /// Copies the units at the front of a text that are ASCII and change nothing, which Take then need not see.
    /// @return how many.
    size_t CopyPlain(const wchar_t* p, size_t nMost, char* pOut) const
    {
        if (m_state != State::Content && m_state != State::Tag && m_state != State::Quoted)
            return 0;
        const unsigned nMark = 1u << static_cast<unsigned>(m_state);
        size_t n = 0;
        for (; n < nMost && static_cast<size_t>(p[n]) < s_marks.size(); ++n)
        {
            if ((s_marks[static_cast<size_t>(p[n])] & nMark) != 0)
                break;
            pOut[n] = static_cast<char>(p[n]);
        }
        return n;
    }

private:
    enum class State
    {
        Content,
        TagBegin,     ///< behind "<"
        Declaration,  ///< behind "<!"
        CommentBegin, ///< behind "<!-"
        Skipped,      ///< a comment, CDATA section or processing instruction, up to m_szEnd
        Tag,
        Quoted ///< a value in a tag
    };

    /// For each unit of ASCII, a bit for each state in which it may change something.
    static constexpr std::array<unsigned char, 0x80> s_marks = [] {
        constexpr unsigned char inContent = 1u << static_cast<unsigned>(State::Content);
        constexpr unsigned char inTag = 1u << static_cast<unsigned>(State::Tag);
        constexpr unsigned char inQuotes = 1u << static_cast<unsigned>(State::Quoted);
        std::array<unsigned char, 0x80> marks{};
        marks['\0'] = 0xFF; // which the parser must not see
        marks['<'] = inContent;
        marks['='] = marks['>'] = inTag;
        marks['"'] = marks['\''] = inTag | inQuotes;
        return marks;
    }();

    bool TakeInMarkup(wchar_t unit);
    void BeginTag(wchar_t unit);
    bool TakeInTag(wchar_t unit);
    void SkipTo(const wchar_t* szEnd);
    void Skip(wchar_t unit);

    State m_state = State::Content;
    wchar_t m_quote = 0;
    const wchar_t* m_szEnd = nullptr;
    size_t m_nMatched = 0; ///< units of m_szEnd that the last units equal
    size_t m_nAttributes = 0;
};

} // namespace OvPlatform::Dom
