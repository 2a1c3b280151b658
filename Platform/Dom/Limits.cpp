#include "Platform/Dom/Limits.h"

namespace OvPlatform::Dom
{

bool CAttributeMeter::TakeInMarkup(wchar_t unit)
{
    switch (m_state)
    {
    case State::Content:
        m_state = State::TagBegin;
        break;
    case State::TagBegin:
        BeginTag(unit);
        break;
    case State::Declaration:
        m_state = unit == L'-' ? State::CommentBegin : State::Tag;
        if (unit == L'[')
            SkipTo(L"]]>");
        break;
    case State::CommentBegin:
        SkipTo(L"-->");
        break;
    case State::Skipped:
        Skip(unit);
        break;
    case State::Tag:
        return TakeInTag(unit);
    case State::Quoted:
        if (unit == m_quote)
            m_state = State::Tag;
        break;
    }
    return true;
}

void CAttributeMeter::BeginTag(wchar_t unit)
{
    m_nAttributes = 0;
    m_state = State::Tag;
    if (unit == L'!')
        m_state = State::Declaration;
    else if (unit == L'?')
        SkipTo(L"?>");
}

bool CAttributeMeter::TakeInTag(wchar_t unit)
{
    if (unit == L'=')
        return ++m_nAttributes <= s_nMaxAttributes;
    if (unit == L'>')
        m_state = State::Content;
    if (unit == L'"' || unit == L'\'')
    {
        m_quote = unit;
        m_state = State::Quoted;
    }
    return true;
}

void CAttributeMeter::SkipTo(const wchar_t* szEnd)
{
    m_szEnd = szEnd;
    m_nMatched = 0;
    m_state = State::Skipped;
}

void CAttributeMeter::Skip(wchar_t unit)
{
    // Each end begins with one unit or the same one twice, so that what matched may still match one unit shorter.
    while (m_nMatched > 0 && m_szEnd[m_nMatched] != unit)
        --m_nMatched;
    if (m_szEnd[m_nMatched] == unit)
        ++m_nMatched;
    if (m_szEnd[m_nMatched] == L'\0')
        m_state = State::Content;
}

} // namespace OvPlatform::Dom
