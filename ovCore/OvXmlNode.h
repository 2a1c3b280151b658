// One node of an XML document, with failures raised as COvException.
#pragma once

#include "OvComPtr.h"
#include "ovCore/OvBstr.h"
#include "ovCore/OvEvidence.h"
#include "OvPlatform.h"

#include <cstdint>

class COvXmlNodeList;

/// What COvXmlNode::CloneNode copies.
enum OvXmlCloneType : LONG
{
    CloneElementOnly = 0, ///< the node without its content and without attributes, a default namespace excepted
    CloneShallow = 1,     ///< the node with its attributes, without its content
    CloneDeep = 2         ///< the node and all below it
};

/// A counted reference to one DOM node, possibly empty. Copying shares the node.
///
/// Texts that are passed in are BSTRs and stay the caller's; texts that are returned belong to the receiver, and a text
/// that the node does not have (the base name of a comment) comes back as a null BSTR. Every operation but the
/// constructors, the assignments and Get() raises COvException on an empty node, and when a call of the DOM fails:
/// with the call's result as code and the method, the result, the node's path and the COM error object as evidence.
/// A failure leaves the node as it was; out-parameters may have been cleared.
/// A node is used on the thread, and in the COM apartment, that loaded its document. Nothing is locked.
class COvXmlNode
{
public:
    COvXmlNode() = default;
    explicit COvXmlNode(IXMLDOMNode* pNode); ///< adds a reference; null makes an empty node
    explicit COvXmlNode(COvComPtr<IXMLDOMNode> spNode);
    COvXmlNode(const COvXmlNode&) = default;
    COvXmlNode(COvXmlNode&&) = default;
    COvXmlNode& operator=(const COvXmlNode&) = default;
    COvXmlNode& operator=(COvXmlNode&&) = default;
    virtual ~COvXmlNode() = default;

    /// The node; not counted for the caller. Null when empty.
    IXMLDOMNode* Get() const { return m_spNode.Get(); }

    COvBstr GetNodeName() const;     ///< the qualified name: prefix, colon, local name
    COvBstr GetNodeBaseName() const; ///< the local name
    COvBstr GetText() const;         ///< the text of all that is below the node, joined
    COvBstr GetXML() const;          ///< the node and all below it, serialised

    /// @return false, with an empty parent, when the node has none (a document, an attribute).
    bool GetOptParent(COvXmlNode& parent) const;

    /// All children in document order: elements, texts, comments, processing instructions. Takes time linear in their
    /// number.
    COvXmlNodeList GetChildNodes() const;

    /// The nodes that an XPath query relative to this node selects, in document order.
    /// @param bRequired  raise also when the DOM answers without a list. A query that matches nothing is no failure.
    COvXmlNodeList GetElems(BSTR bstrPattern, bool bRequired) const;

    /// GetElems that is not required.
    COvXmlNodeList SearchForNodes(BSTR bstrPattern) const;

    /// The node's attributes. Raises for a node that cannot have any (a text, a comment), with code 1 (S_FALSE).
    COvComPtr<IXMLDOMNamedNodeMap> GetAttrs() const;

    /// The attribute of that name as a node. Raises as GetAttrs does, whatever bRequired says.
    /// @param bRequired  raise when the attribute is absent, with code 1 (S_FALSE), or when it cannot be looked up;
    ///                   otherwise the result is an empty node then.
    COvXmlNode GetAttr(BSTR bstrAttrNm, bool bRequired) const;

    /// The attribute's typed value, or its text where it has none.
    /// @param value  initialised by the caller, who also clears it; cleared when the attribute is absent.
    /// @return false when the attribute is absent.
    bool GetOptAttrValueVar(BSTR name, VARIANT* value) const;

    /// GetOptAttrValueVar that raises with code 0x80070490 when the attribute is absent, as do the next three.
    _variant_t GetAttrValueVar(BSTR strAttrName) const;

    COvBstr GetAttrValueStr(BSTR name) const; ///< the value as text; an empty or null value is ""

    /// The value converted as the platform converts texts to booleans: "true", "false", "1", "0", "-1" and the like;
    /// an empty or null value is false. Raises the conversion's result for any other text.
    bool GetAttrValueBool(BSTR name) const;

    /// The value converted as the platform converts texts to 32-bit numbers; an empty or null value is 0.
    /// Raises the conversion's result for a text that is no number or does not fit.
    LONG GetAttrValueLong(BSTR name) const;

    /// @param copy  receives the copy, which has no parent.
    void CloneNode(COvXmlNode& copy, OvXmlCloneType cloneType) const;

    /// The node without content and attributes; only a default namespace declaration ("xmlns") stays.
    COvXmlNode CloneNodeElementOnly() const;

protected:
    /// Appends the item that says where this node is: "Node Path", its ancestors and itself without their contents.
    /// Appends nothing when that cannot be found out.
    virtual void AddDiagnosticEvidence(COvEvidence& evidence) const noexcept;

    /// Raises "No node available." when the node is empty.
    void RequireNode(LONG nLine) const;

    /// A pointer as evidence shows it.
    static int64_t PointerValue(const void* p) { return reinterpret_cast<intptr_t>(p); }

    COvComPtr<IXMLDOMNode> m_spNode;

private:
    using TextGetter = HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*)(BSTR*);

    COvBstr ReadText(TextGetter pGetter, const wchar_t* szMethod, LONG nLine) const;
    COvXmlNode Copy(OvXmlCloneType cloneType) const;
    void RemoveAttribute(const COvXmlNode& copy, const COvBstr& strAttrName) const;
    _variant_t ReadValue(const COvXmlNode& attribute) const;
    _variant_t ConvertedValue(BSTR name, VARTYPE vtType) const;

    [[noreturn]] void RaiseDomFailure(HRESULT hr, LONG nLine, const wchar_t* szMethod,
                                      const COvEvidence& arguments = COvEvidence()) const;
    [[noreturn]] void RaiseDomFailure(HRESULT hr, LONG nLine, const COvEvidence& method, const COvEvidence& arguments,
                                      IUnknown* pFailed, REFIID iid) const;
};
