// The document that COvXmlWriter builds and renders.
#pragma once

#include "OvPlatform.h"

#include <cstddef>
#include <cstdint>
#include <deque>
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
class COvXmlWriterTree
{
public:
    /// An empty document.
    COvXmlWriterTree() = default;

    COvXmlWriterTree(const COvXmlWriterTree&) = delete;
    COvXmlWriterTree& operator=(const COvXmlWriterTree&) = delete;
    ~COvXmlWriterTree() = default;

    /// The document node.
    COvXmlWriterNode* Document() { return &m_document; }

    /// Adds a node behind the parent's others and copies its strings.
    /// @param pParent   the document or an element that is still open. What was opened in it is closed by this.
    /// @param sz0, sz1  the strings that the node's type asks for; null for one that it does not hold.
    /// @param bEscape   the value, which is the last string, is escaped.
    /// @return the node, the tree's, of an element, valid until it is closed; null of any other node.
    /// Raises std::bad_alloc; the document is then as it was.
    COvXmlWriterNode* Append(COvXmlWriterNode* pParent, COvXmlWriterNodeType nType, const wchar_t* sz0,
                             const wchar_t* sz1, bool bEscape);

    /// The text of the whole document; the depth costs no stack. Raises std::bad_alloc.
    std::wstring Render() const;

private:
    struct CBlock
    {
        std::unique_ptr<wchar_t[]> pUnits;
        size_t nUsed;
    };

    COvXmlWriterNode& Last() { return m_elements.empty() ? m_document : m_elements.back(); }
    COvXmlWriterNode* AppendElement(COvXmlWriterNode* pParent, const wchar_t* szName, const wchar_t* szPrefix);
    void EndElementsIn(const COvXmlWriterNode* pParent);
    wchar_t* EndStartTag(wchar_t* p, COvXmlWriterNode& node) const;
    wchar_t* Room(uint64_t nUnits);
    void Wrote(const wchar_t* pEnd);
    uint64_t RenderedLength() const;

    std::vector<CBlock> m_blocks;                           // the last one is in use
    size_t m_nBlockSize = 0;                                // of the block in use
    uint64_t m_nLength = 0;                                 // of the text in all blocks
    std::multimap<uint64_t, std::wstring> m_lateAttributes; // by the place in the text before which they stand
    COvXmlWriterNode m_document{};
    std::deque<COvXmlWriterNode> m_elements; // those without an end tag as yet, from the outermost on
};
