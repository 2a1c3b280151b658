// The document that COvXmlWriter builds and renders.
#pragma once

#include "OvPlatform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// The kinds of nodes.
enum COvXmlWriterNodeType : int32_t
{
    typeDocStart = 0,
    typePI = 1,        ///< strings: target, text
    typeComment = 2,   ///< reserved
    typeElemStart = 3, ///< strings: name, prefix when there is one
    typeAttr = 4,      ///< strings: name, value
    typeNameSpace = 5, ///< strings: prefix, value
    typeCData = 6,     ///< strings: text
    typeStr = 7        ///< strings: text
};

/// A node that can be open: the document or an element. The others leave nothing but their text.
struct COvXmlWriterNode
{
    COvXmlWriterNodeType nType;
    COvXmlWriterNode* pParent; ///< null for the document
    const wchar_t* pName;      ///< with the prefix, in the document's memory; not terminated
    size_t nNameLength;        ///< in UTF-16 units
    bool bInStartTag;          ///< the start tag lacks its end, so that attributes can follow
    uint64_t nStartTagEnd;     ///< what stands before that end, in UTF-16 units, once it is there
};

/// A document with all nodes in it, kept as the text that it is rendered to. The text is written once, in the order of
/// the nodes, into a few blocks of memory; what belongs into a start tag that has been ended is kept beside it.
/// One thread at a time.
class COvXmlWriterDocument
{
public:
    /// An empty document.
    COvXmlWriterDocument() {} // leaves the memory for nodes and text as it is

    COvXmlWriterDocument(const COvXmlWriterDocument&) = delete;
    COvXmlWriterDocument& operator=(const COvXmlWriterDocument&) = delete;
    ~COvXmlWriterDocument() = default;

    /// The document node.
    COvXmlWriterNode* Document() { return &m_document; }

    /// Adds a node behind the parent's others and copies its strings.
    /// @param pParent   the document or an element that is still open. What was opened in it is closed by this.
    /// @param sz0, sz1  the strings that the node's type asks for; null for one that it does not hold.
    /// @param bEscape   the value, which is the last string, is escaped.
    /// @return the node, the tree's, of an element, valid until it is closed; null of any other node.
    /// Raises what COvXmlEscape::Escape does when there is no memory for an escaped value, std::bad_alloc for anything
    /// else; the document is then as it was.
    COvXmlWriterNode* Append(COvXmlWriterNode* pParent, COvXmlWriterNodeType nType, const wchar_t* sz0,
                             const wchar_t* sz1, bool bEscape);

    /// The text of the whole document; the depth costs no stack. Raises std::bad_alloc.
    std::wstring Render() const;

private:
    struct CBlock
    {
        std::unique_ptr<wchar_t[]> pUnits;
        size_t nUsed; // once it is full
    };

    static constexpr size_t FIRST_BLOCK = 1024; // units: a short document, and the depth of most, takes no memory
    static constexpr size_t FIRST_ELEMENTS = 8; // but the tree's own

    void AppendText(COvXmlWriterNode& parent, COvXmlWriterNodeType nType, const wchar_t* sz0, const wchar_t* sz1,
                    bool bEscape);
    COvXmlWriterNode* AppendElement(COvXmlWriterNode* pParent, const wchar_t* szName, const wchar_t* szPrefix);
    COvXmlWriterNode& SpareElement();
    void EndElementsIn(const COvXmlWriterNode* pParent);
    wchar_t* EndStartTag(wchar_t* p, COvXmlWriterNode& node) const;
    ptrdiff_t RoomLeft() const { return static_cast<ptrdiff_t>(m_nBlockSize) - (m_pEnd - m_pBlock); }
    wchar_t* Room(uint64_t nUnits);
    void AddBlock(uint64_t nUnits);
    uint64_t RenderedLength() const;

    std::array<wchar_t, FIRST_BLOCK> m_first;
    std::vector<CBlock> m_blocks;       // those after the first one
    size_t m_nFirstUsed = 0;            // of the first block, once it is full
    wchar_t* m_pBlock = m_first.data(); // the block in use
    wchar_t* m_pEnd = m_first.data();   // of the text in it
    size_t m_nBlockSize = FIRST_BLOCK;
    uint64_t m_nFull = 0;                                   // the length of the text in the full blocks
    std::multimap<uint64_t, std::wstring> m_lateAttributes; // by the place in the text before which they stand
    COvXmlWriterNode m_document{};
    COvXmlWriterNode* m_pLast = &m_document; // the innermost of those without an end tag as yet
    COvXmlWriterNode* m_pSpare = nullptr;    // the elements that have one, linked by their parents, to be used again
    size_t m_nFirstElements = 0;             // of m_firstElements, those that have been used
    std::vector<std::unique_ptr<COvXmlWriterNode>> m_moreElements;
    std::array<COvXmlWriterNode, FIRST_ELEMENTS> m_firstElements;
};
