#include "OvXmlWriterNode.h"

#include "OvXmlEscape.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <new>

namespace
{

constexpr size_t MIN_BLOCK = 4 * 1024;
constexpr size_t MAX_BLOCK = 256 * 1024;

bool StandsInStartTag(COvXmlWriterNodeType nType)
{
    return nType == typeAttr || nType == typeNameSpace;
}

/// The value string, the one that may be escaped.
const COvXmlWriterText& ValueOf(const COvXmlWriterNode& node)
{
    return node.strings[StandsInStartTag(node.nType) ? 1 : 0];
}

void Link(COvXmlWriterList& list, COvXmlWriterNode* pNode)
{
    (list.pLast != nullptr ? list.pLast->pNext : list.pFirst) = pNode;
    list.pLast = pNode;
}

/// Adds up the lengths of the pieces of a rendering.
class CPieceCounter
{
public:
    void Piece(const wchar_t*, size_t nLength) { m_nTotal += nLength; }
    void Escaped(const COvXmlWriterText&, size_t nEscaped) { m_nTotal += nEscaped; }
    uint64_t Total() const { return m_nTotal; }

private:
    uint64_t m_nTotal = 0;
};

/// Writes the pieces of a rendering one after the other to memory that a counter has found to suffice.
class CPieceWriter
{
public:
    explicit CPieceWriter(wchar_t* pOut) : m_pOut(pOut) {}
    void Piece(const wchar_t* pText, size_t nLength) { m_pOut = std::copy_n(pText, nLength, m_pOut); }

    void Escaped(const COvXmlWriterText& text, size_t nEscaped)
    {
        m_pOut += EscapeXML(text.pText, text.nLength, m_pOut, nEscaped, ESCAPE_ATTRIBUTE);
    }

private:
    wchar_t* m_pOut;
};

template <class Output, size_t N>
void Mark(Output& output, const wchar_t (&szMark)[N])
{
    output.Piece(szMark, N - 1);
}

template <class Output>
void String(Output& output, const COvXmlWriterText& text)
{
    output.Piece(text.pText, text.nLength);
}

template <class Output>
void Value(Output& output, const COvXmlWriterNode& node)
{
    const COvXmlWriterText& text = ValueOf(node);
    if (node.nValueLength == text.nLength)
        String(output, text); // nothing in it to escape: that only ever adds
    else
        output.Escaped(text, node.nValueLength);
}

template <class Output>
void QualifiedName(Output& output, const COvXmlWriterNode& node)
{
    if (node.strings[1].pText != nullptr)
    {
        String(output, node.strings[1]);
        Mark(output, L":");
    }
    String(output, node.strings[0]);
}

template <class Output>
void Instruction(Output& output, const COvXmlWriterNode& node)
{
    Mark(output, L"<?");
    String(output, node.strings[0]);
    Mark(output, L" ");
    String(output, node.strings[1]);
    Mark(output, L"?>");
}

/// An attribute or a namespace declaration.
template <class Output>
void Attribute(Output& output, const COvXmlWriterNode& node)
{
    Mark(output, L" ");
    if (node.nType == typeNameSpace)
        Mark(output, L"xmlns");
    if (node.nType == typeNameSpace && node.strings[0].nLength != 0)
        Mark(output, L":");
    String(output, node.strings[0]);
    Mark(output, L"=\"");
    Value(output, node);
    Mark(output, L"\"");
}

template <class Output>
void CData(Output& output, const COvXmlWriterNode& node)
{
    Mark(output, L"<![CDATA[");
    String(output, node.strings[0]);
    Mark(output, L"]]>");
}

/// The part of a node before its children and, of an element, without what else stands in the start tag.
template <class Output>
void Head(Output& output, const COvXmlWriterNode& node)
{
    switch (node.nType)
    {
    case typePI:
        Instruction(output, node);
        break;
    case typeElemStart:
        Mark(output, L"<");
        QualifiedName(output, node);
        break;
    case typeAttr:
    case typeNameSpace:
        Attribute(output, node);
        break;
    case typeCData:
        CData(output, node);
        break;
    case typeStr:
        Value(output, node);
        break;
    case typeDocStart:
    case typeComment:
        break;
    }
}

template <class Output>
void EndOfStartTag(Output& output)
{
    Mark(output, L">");
}

template <class Output>
void EndTag(Output& output, const COvXmlWriterNode& node)
{
    Mark(output, L"</");
    QualifiedName(output, node);
    Mark(output, L">");
}

/// The length of what a node adds to the rendering, its children not counted.
uint64_t RenderedLength(const COvXmlWriterNode& node)
{
    CPieceCounter counter;
    Head(counter, node);
    if (node.nType == typeElemStart)
    {
        EndOfStartTag(counter);
        EndTag(counter, node);
    }
    return counter.Total();
}

void WriteWithAttributes(CPieceWriter& writer, const COvXmlWriterNode& node)
{
    Head(writer, node);
    for (const COvXmlWriterNode* p = node.attributes.pFirst; p != nullptr; p = p->pNext)
        Head(writer, *p);
    if (node.nType == typeElemStart)
        EndOfStartTag(writer);
}

/// The node to write after pNode and all below it; writes the end tags in between. Null at the end of the document.
const COvXmlWriterNode* EndAndStep(CPieceWriter& writer, const COvXmlWriterNode* pNode)
{
    for (; pNode->nType != typeDocStart; pNode = pNode->pParent)
    {
        if (pNode->nType == typeElemStart)
            EndTag(writer, *pNode);
        if (pNode->pNext != nullptr)
            return pNode->pNext;
    }
    return nullptr;
}

} // namespace

COvXmlWriterTree::COvXmlWriterTree() : m_pDocument(NewNode(typeDocStart)) {}

COvXmlWriterNode* COvXmlWriterTree::Append(COvXmlWriterNode* pParent, COvXmlWriterNodeType nType, const wchar_t* sz0,
                                           const wchar_t* sz1, bool bEscape)
{
    COvXmlWriterNode* const pNode = NewNode(nType);
    pNode->pParent = pParent;
    pNode->strings[0] = CopyText(sz0);
    pNode->strings[1] = CopyText(sz1);
    pNode->dwFlags = bEscape ? COvXmlWriterNode::FLAG_ESCAPE : 0;
    const COvXmlWriterText& value = ValueOf(*pNode);
    pNode->nValueLength = bEscape ? EscapeXML(value.pText, value.nLength, nullptr, 0, ESCAPE_ATTRIBUTE) : value.nLength;

    m_nRendered += RenderedLength(*pNode);
    Link(StandsInStartTag(nType) ? pParent->attributes : pParent->children, pNode);
    return pNode;
}

std::wstring COvXmlWriterTree::Render() const
{
    if (m_pDocument->children.pFirst == nullptr)
        return std::wstring();
    std::wstring result;
    if (m_nRendered > result.max_size())
        throw std::bad_alloc();
    result.resize(static_cast<size_t>(m_nRendered));
    CPieceWriter writer(result.data());
    for (const COvXmlWriterNode* p = m_pDocument->children.pFirst; p != nullptr;)
    {
        WriteWithAttributes(writer, *p);
        p = p->children.pFirst != nullptr ? p->children.pFirst : EndAndStep(writer, p);
    }
    return result;
}

COvXmlWriterNode* COvXmlWriterTree::NewNode(COvXmlWriterNodeType nType)
{
    COvXmlWriterNode* const pNode = new (Allocate(sizeof(COvXmlWriterNode))) COvXmlWriterNode{};
    pNode->nType = nType;
    return pNode;
}

COvXmlWriterText COvXmlWriterTree::CopyText(const wchar_t* sz)
{
    if (sz == nullptr)
        return { nullptr, 0 };
    const size_t nLength = std::wcslen(sz);
    wchar_t* const pText = static_cast<wchar_t*>(Allocate(nLength * sizeof(wchar_t)));
    std::memcpy(pText, sz, nLength * sizeof(wchar_t));
    return { pText, nLength };
}

void* COvXmlWriterTree::Allocate(size_t nBytes)
{
    constexpr size_t ALIGNMENT = alignof(COvXmlWriterNode);
    nBytes = (nBytes + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    if (nBytes > MIN_BLOCK)
        return NewBlock(nBytes); // a long text gets a block of its own, and the one in use stays in use
    if (nBytes > m_nFree)
    {
        const size_t nBlock = std::clamp(m_nBlock * 2, MIN_BLOCK, MAX_BLOCK);
        m_pFree = NewBlock(nBlock);
        m_nFree = m_nBlock = nBlock;
    }
    std::byte* const pResult = m_pFree;
    m_pFree += nBytes;
    m_nFree -= nBytes;
    return pResult;
}

std::byte* COvXmlWriterTree::NewBlock(size_t nBytes)
{
    std::unique_ptr<std::byte[]> pBlock(new std::byte[nBytes]);
    m_blocks.push_back(std::move(pBlock));
    return m_blocks.back().get();
}
