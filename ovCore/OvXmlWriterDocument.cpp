#include "ovCore/OvXmlWriterDocument.h"

#include "ovCore/OvXmlEscape.h"
#include "ovCore/OvXmlPieces.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace
{

constexpr size_t MAX_BLOCK = 64 * 1024; // units

bool StandsInStartTag(COvXmlWriterNodeType nType)
{
    return nType == typeAttr || nType == typeNameSpace;
}

/// What stands around the two strings of a node other than the document and elements.
struct CMarks
{
    std::wstring_view before;
    std::wstring_view between;
    std::wstring_view after;
};

CMarks MarksOf(COvXmlWriterNodeType nType, bool bEmptyName)
{
    switch (nType)
    {
    case typePI:
        return { L"<?", L" ", L"?>" };
    case typeAttr:
        return { L" ", L"=\"", L"\"" };
    case typeNameSpace:
        return { bEmptyName ? L" xmlns" : L" xmlns:", L"=\"", L"\"" };
    case typeCData:
        return { L"<![CDATA[", L"", L"]]>" };
    default:
        return {};
    }
}

std::wstring_view ViewOf(const wchar_t* sz)
{
    return sz != nullptr ? std::wstring_view(sz) : std::wstring_view();
}

/// Copies a text. Most are short, and a call for each would cost more than the copy. @return the end.
inline wchar_t* Put(wchar_t* p, std::wstring_view text)
{
    constexpr size_t STEP = 4;
    constexpr size_t SHORT_TEXT = 32;
    const size_t n = text.size();
    const wchar_t* const pText = text.data();
    if (n > SHORT_TEXT)
        return std::copy_n(pText, n, p);
    if (n < STEP)
    {
        for (size_t i = 0; i < n; ++i)
            p[i] = pText[i];
        return p + n;
    }
    for (size_t i = 0; i < n - STEP; i += STEP)
        std::memcpy(p + i, pText + i, STEP * sizeof(wchar_t));
    std::memcpy(p + n - STEP, pText + n - STEP, STEP * sizeof(wchar_t));
    return p + n;
}

constexpr ptrdiff_t QUICK_UNITS = 96; // of an attribute; of a longer one the lengths are worth finding out first

/// Copies units up to the text's zero. @return the end; null when another unit is not plain or would be at pLimit or
/// behind.
template <class Plain>
inline wchar_t* PutWhilePlain(wchar_t* p, const wchar_t* pLimit, const wchar_t* sz, Plain&& isPlain)
{
    for (; isPlain(static_cast<uint32_t>(*sz)); ++sz)
    {
        if (p >= pLimit)
            return nullptr;
        *p++ = *sz;
    }
    return *sz == 0 ? p : nullptr;
}

/// An attribute that is short and has nothing to escape, as most are, in the same marks as any other: its strings are
/// read only once.
/// @param p  has room for QUICK_UNITS. @return the end; null when it is none of these.
inline wchar_t* PutQuickly(wchar_t* p, const wchar_t* szName, const wchar_t* szValue)
{
    const wchar_t* const pLimit = p + QUICK_UNITS - 3; // which stand behind the name and the value
    *p++ = L' ';
    p = PutWhilePlain(p, pLimit, szName, [](uint32_t c) { return c != 0; });
    if (p == nullptr)
        return nullptr;
    *p++ = L'=';
    *p++ = L'"';
    p = PutWhilePlain(p, pLimit, szValue, [](uint32_t c) { return PIECES_WITH_QUOTES.IsPlain(c); });
    if (p == nullptr)
        return nullptr;
    *p++ = L'"';
    return p;
}

/// A value, as it will be rendered: escaped where it is to be and holds something to escape.
class CValue
{
public:
    CValue(std::wstring_view text, bool bEscape) : m_text(text)
    {
        if (!bEscape || CleanUnits(text.data(), text.size()) == text.size())
            return;
        m_strEscaped = COvXmlEscape::Escape(std::wstring(text));
        m_text = m_strEscaped;
    }

    CValue(const CValue&) = delete;
    CValue& operator=(const CValue&) = delete;

    std::wstring_view Text() const { return m_text; }

private:
    std::wstring m_strEscaped; // empty while the text stays as it is
    std::wstring_view m_text;
};

/// A node other than the document and elements: its text and the room that it takes.
class CPlainNode
{
public:
    CPlainNode(COvXmlWriterNodeType nType, const wchar_t* sz0, const wchar_t* sz1, bool bEscape)
        : m_name(sz1 != nullptr ? ViewOf(sz0) : std::wstring_view()),
          m_marks(MarksOf(nType, m_name.empty())),
          m_value(ViewOf(sz1 != nullptr ? sz1 : sz0), bEscape)
    {
    }

    uint64_t Most() const
    {
        return m_marks.before.size() + m_name.size() + m_marks.between.size() + m_value.Text().size() +
               m_marks.after.size();
    }

    wchar_t* Write(wchar_t* p) const
    {
        p = Put(Put(Put(p, m_marks.before), m_name), m_marks.between);
        return Put(Put(p, m_value.Text()), m_marks.after);
    }

    std::wstring Text() const
    {
        if (Most() > std::wstring().max_size())
            throw std::bad_alloc();
        std::wstring text(static_cast<size_t>(Most()), L'\0');
        text.resize(static_cast<size_t>(Write(text.data()) - text.data()));
        return text;
    }

private:
    std::wstring_view m_name;
    CMarks m_marks;
    CValue m_value;
};

constexpr std::wstring_view START_TAG_END = L">";
constexpr std::wstring_view END_TAG_START = L"</";

std::wstring_view NameOf(const COvXmlWriterNode& node)
{
    return { node.pName, node.nNameLength };
}

/// The end tag, and the start tag's end if that is missing.
size_t EndLength(const COvXmlWriterNode& node)
{
    return node.nNameLength + END_TAG_START.size() + (node.bInStartTag ? 2 : 1);
}

wchar_t* PutEnd(wchar_t* p, const COvXmlWriterNode& node)
{
    if (node.bInStartTag)
        p = Put(p, START_TAG_END);
    return Put(Put(Put(p, END_TAG_START), NameOf(node)), START_TAG_END);
}

} // namespace

COvXmlWriterNode* COvXmlWriterDocument::Append(COvXmlWriterNode* pParent, COvXmlWriterNodeType nType,
                                               const wchar_t* sz0, const wchar_t* sz1, bool bEscape)
{
    EndElementsIn(pParent);
    if (nType == typeElemStart)
        return AppendElement(pParent, sz0, sz1);
    if (nType == typeAttr && bEscape && pParent->bInStartTag && RoomLeft() >= QUICK_UNITS)
        if (wchar_t* const pEnd = PutQuickly(m_pEnd, sz0, sz1))
        {
            m_pEnd = pEnd;
            return nullptr;
        }
    try
    {
        AppendText(*pParent, nType, sz0, sz1, bEscape);
    }
    catch (const std::bad_alloc&)
    {
        if (bEscape)
            COvXmlEscape::RaiseNotEscaped(COvEvidence(L"strToEncode", sz1 != nullptr ? sz1 : sz0));
        throw;
    }
    return nullptr;
}

void COvXmlWriterDocument::AppendText(COvXmlWriterNode& parent, COvXmlWriterNodeType nType, const wchar_t* sz0,
                                      const wchar_t* sz1, bool bEscape)
{
    const CPlainNode node(nType, sz0, sz1, bEscape);
    const bool bAttribute = StandsInStartTag(nType);
    if (bAttribute && !parent.bInStartTag)
    {
        m_lateAttributes.emplace(parent.nStartTagEnd, node.Text());
        return;
    }
    wchar_t* p = Room(START_TAG_END.size() + node.Most());
    if (!bAttribute)
        p = EndStartTag(p, parent);
    m_pEnd = node.Write(p);
}

COvXmlWriterNode* COvXmlWriterDocument::AppendElement(COvXmlWriterNode* pParent, const wchar_t* szName,
                                                      const wchar_t* szPrefix)
{
    const std::wstring_view name = ViewOf(szName);
    const std::wstring_view prefix = ViewOf(szPrefix);
    wchar_t* p = Room(uint64_t(3) + prefix.size() + name.size()); // and the parent's ">", "<" and ":"
    COvXmlWriterNode& node = SpareElement();
    p = EndStartTag(p, *pParent);
    *p++ = L'<';
    const wchar_t* const pName = p;
    if (szPrefix != nullptr)
    {
        p = Put(p, prefix);
        *p++ = L':';
    }
    p = Put(p, name);
    node = { typeElemStart, pParent, pName, static_cast<size_t>(p - pName), true, 0 };
    m_pLast = &node;
    m_pEnd = p;
    return &node;
}

/// An element's node to be filled. When that fails nothing is changed.
COvXmlWriterNode& COvXmlWriterDocument::SpareElement()
{
    if (m_pSpare != nullptr)
    {
        COvXmlWriterNode& node = *m_pSpare;
        m_pSpare = node.pParent;
        return node;
    }
    if (m_nFirstElements < FIRST_ELEMENTS)
        return m_firstElements[m_nFirstElements++];
    return *m_moreElements.emplace_back(std::make_unique<COvXmlWriterNode>());
}

void COvXmlWriterDocument::EndElementsIn(const COvXmlWriterNode* pParent)
{
    while (m_pLast != pParent)
    {
        m_pEnd = PutEnd(Room(EndLength(*m_pLast)), *m_pLast);
        COvXmlWriterNode* const pEnded = m_pLast;
        m_pLast = pEnded->pParent;
        pEnded->pParent = m_pSpare;
        m_pSpare = pEnded;
    }
}

wchar_t* COvXmlWriterDocument::EndStartTag(wchar_t* p, COvXmlWriterNode& node) const
{
    if (!node.bInStartTag)
        return p;
    node.bInStartTag = false;
    node.nStartTagEnd = m_nFull + static_cast<size_t>(p - m_pBlock);
    return Put(p, START_TAG_END);
}

std::wstring COvXmlWriterDocument::Render() const
{
    const uint64_t nLength = RenderedLength();
    std::wstring result;
    if (nLength > result.max_size())
        throw std::bad_alloc();
    result.reserve(static_cast<size_t>(nLength));
    auto late = m_lateAttributes.begin();
    uint64_t nPlace = 0; // in the text, of the block's first unit
    const auto addBlock = [&](const wchar_t* pUnits, size_t nUsed) {
        size_t nDone = 0;
        for (; late != m_lateAttributes.end() && late->first < nPlace + nUsed; ++late)
        {
            const size_t nUpTo = static_cast<size_t>(late->first - nPlace);
            result.append(pUnits + nDone, nUpTo - nDone).append(late->second);
            nDone = nUpTo;
        }
        result.append(pUnits + nDone, nUsed - nDone);
        nPlace += nUsed;
    };
    if (!m_blocks.empty())
        addBlock(m_first.data(), m_nFirstUsed);
    for (size_t i = 0; i + 1 < m_blocks.size(); ++i)
        addBlock(m_blocks[i].pUnits.get(), m_blocks[i].nUsed);
    addBlock(m_pBlock, static_cast<size_t>(m_pEnd - m_pBlock));
    for (const COvXmlWriterNode* p = m_pLast; p->pParent != nullptr; p = p->pParent)
        result.append(p->bInStartTag ? L"></" : L"</").append(NameOf(*p)).append(START_TAG_END);
    return result;
}

uint64_t COvXmlWriterDocument::RenderedLength() const
{
    uint64_t nLength = m_nFull + static_cast<size_t>(m_pEnd - m_pBlock);
    for (const auto& late : m_lateAttributes)
        nLength += late.second.size();
    for (const COvXmlWriterNode* p = m_pLast; p->pParent != nullptr; p = p->pParent)
        nLength += EndLength(*p);
    return nLength;
}

/// Room in one piece at the end of the text. It counts for nothing until m_pEnd is moved.
wchar_t* COvXmlWriterDocument::Room(uint64_t nUnits)
{
    if (nUnits > static_cast<uint64_t>(RoomLeft()))
        AddBlock(nUnits);
    return m_pEnd;
}

void COvXmlWriterDocument::AddBlock(uint64_t nUnits)
{
    const uint64_t nSize = std::max<uint64_t>(nUnits, std::clamp(m_nBlockSize * 2, FIRST_BLOCK, MAX_BLOCK));
    if (nSize > static_cast<size_t>(-1) / sizeof(wchar_t))
        throw std::bad_alloc();
    std::unique_ptr<wchar_t[]> pUnits(new wchar_t[static_cast<size_t>(nSize)]);
    m_blocks.push_back({ std::move(pUnits), 0 });
    const size_t nUsed = static_cast<size_t>(m_pEnd - m_pBlock);
    (m_blocks.size() == 1 ? m_nFirstUsed : m_blocks[m_blocks.size() - 2].nUsed) = nUsed;
    m_nFull += nUsed;
    m_pBlock = m_pEnd = m_blocks.back().pUnits.get();
    m_nBlockSize = static_cast<size_t>(nSize);
}
