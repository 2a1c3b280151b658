// The tree that COvXmlWriter builds and renders.
#pragma once

#include "OvPlatform.h"

#include <cstddef>
#include <cstdint>
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

/// A text in the tree's memory, not terminated.
struct COvXmlWriterText
{
    const wchar_t* pText; ///< null: the node does not hold this string
    size_t nLength;       ///< in UTF-16 units
};

struct COvXmlWriterNode;

/// Nodes in the order in which they were added; linked through pNext.
struct COvXmlWriterList
{
    COvXmlWriterNode* pFirst;
    COvXmlWriterNode* pLast;
};

/// One node. It lives in the memory of its tree and owns nothing.
struct COvXmlWriterNode
{
    static constexpr DWORD FLAG_ESCAPE = 1; ///< the value string is escaped when it is rendered

    COvXmlWriterNodeType nType;
    DWORD dwFlags;
    COvXmlWriterNode* pParent; ///< null for the document
    COvXmlWriterNode* pNext;
    COvXmlWriterText strings[2];
    size_t nValueLength;         ///< of the value string as it is rendered, in UTF-16 units
    COvXmlWriterList attributes; ///< attributes and namespaces, which stand in the start tag
    COvXmlWriterList children;   ///< all others
};

/// A document node with all nodes below it, in a few blocks of memory that are freed together.
/// One thread at a time.
class COvXmlWriterTree
{
public:
    /// An empty document.
    COvXmlWriterTree();

    COvXmlWriterTree(const COvXmlWriterTree&) = delete;
    COvXmlWriterTree& operator=(const COvXmlWriterTree&) = delete;
    ~COvXmlWriterTree() = default;

    /// The document node.
    COvXmlWriterNode* Document() { return m_pDocument; }

    /// Adds a node behind the parent's others and copies its strings.
    /// @param sz0, sz1  the strings that the node's type asks for; null for one that it does not hold.
    /// @return the node, the tree's. Raises std::bad_alloc; the tree is then as it was.
    COvXmlWriterNode* Append(COvXmlWriterNode* pParent, COvXmlWriterNodeType nType, const wchar_t* sz0,
                             const wchar_t* sz1, bool bEscape);

    /// The text of the whole document; the depth costs no stack. Raises std::bad_alloc.
    std::wstring Render() const;

private:
    COvXmlWriterNode* NewNode(COvXmlWriterNodeType nType);
    COvXmlWriterText CopyText(const wchar_t* sz);
    void* Allocate(size_t nBytes);
    std::byte* NewBlock(size_t nBytes);

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::byte* m_pFree = nullptr; // what is left of the block in use
    size_t m_nFree = 0;
    size_t m_nBlock = 0; // size of the block in use
    COvXmlWriterNode* m_pDocument = nullptr;
    uint64_t m_nRendered = 0; // the length of the whole rendering
};
