// The nodes that a child or XPath query found.
#pragma once

#include "ovCore/OvXmlNode.h"

#include <vector>

/// Nodes in document order. Owned by one thread at a time, as its nodes are.
class COvXmlNodeList
{
public:
    COvXmlNodeList() = default;
    COvXmlNodeList(const COvXmlNodeList&) = default;
    COvXmlNodeList(COvXmlNodeList&&) = default;
    COvXmlNodeList& operator=(const COvXmlNodeList&) = default;
    COvXmlNodeList& operator=(COvXmlNodeList&&) = default;
    virtual ~COvXmlNodeList() = default;

    /// Replaces the content by the nodes that the DOM's list still yields, in its order.
    /// @param list  stays the caller's; null makes this list empty.
    /// Raises COvException when the DOM fails (with its result) or memory runs out (with E_FAIL); the content is then
    /// what it was.
    virtual void Populate(IXMLDOMNodeList* list);

    size_t size() const { return m_nodes.size(); }
    const COvXmlNode& operator[](size_t nIndex) const { return m_nodes[nIndex]; } ///< unchecked
    std::vector<COvXmlNode>::const_iterator begin() const { return m_nodes.begin(); }
    std::vector<COvXmlNode>::const_iterator end() const { return m_nodes.end(); }

private:
    std::vector<COvXmlNode> m_nodes;
};
