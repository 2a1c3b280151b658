// Documents read with the platform's own DOM, as the library reads them.
#pragma once

#include "OvPlatform.h"

#include <optional>
#include <string>
#include <vector>

/// A counted reference to a COM object; may be empty.
template <class Interface>
class CComRef
{
public:
    CComRef() = default;
    CComRef(const CComRef& other) : m_p(other.m_p)
    {
        if (m_p != nullptr)
            m_p->AddRef();
    }
    CComRef& operator=(CComRef other)
    {
        std::swap(m_p, other.m_p);
        return *this;
    }
    ~CComRef()
    {
        if (m_p != nullptr)
            m_p->Release();
    }

    Interface* operator->() const { return m_p; }
    Interface* Get() const { return m_p; }

    /// For an out-parameter; the reference must be empty.
    Interface** Receive() { return &m_p; }

private:
    Interface* m_p = nullptr;
};

/// A node of a document, which lives as long as one of its nodes is held. Texts are UTF-8. The thread must be in a COM
/// apartment. A failing DOM call gives an empty text or no nodes: this is for showing, not for deciding.
class CDomNode
{
public:
    explicit CDomNode(CComRef<IXMLDOMNode> spNode) : m_spNode(std::move(spNode)) {}

    /// The document of a text; nothing when it does not parse.
    static std::optional<CDomNode> Parse(const std::wstring& text);

    std::vector<CDomNode> Children() const;

    /// The nodes that an XPath expression selects.
    std::vector<CDomNode> Select(const std::string& xpath) const;

    /// The text of the first node that an XPath expression selects; empty when there is none.
    std::string TextAt(const std::string& xpath) const;

    std::string BaseName() const;
    std::string Text() const;

    /// The node as XML, with "..." in the place of its content.
    std::string Outline() const;

    /// Where it stands in its document: "/policy/configuration/assessment[2]".
    std::string Path() const;

private:
    std::optional<CDomNode> Parent() const;
    std::string Name() const;

    CComRef<IXMLDOMNode> m_spNode;
};
