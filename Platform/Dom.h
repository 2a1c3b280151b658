// The document object model (MSXML), on libxml2: documents, their nodes, queries and parse errors.
//
// The interfaces hold the operations that are called, in the documented order, and derive from IUnknown: nothing here
// is driven by name through IDispatch, so that such a use fails when it is compiled.
//
// For all of them:
// - Texts are UTF-16, one unit in each element. A returned BSTR or interface is the caller's, who frees or releases it;
//   an output is null, empty or 0 after a failure and after S_FALSE.
// - A null output pointer gives E_INVALIDARG, lack of memory E_OUTOFMEMORY. A failed call leaves an error object
//   (ISupportErrorInfo is answered by every object) and changes nothing.
// - A node keeps its tree alive, also when its document has been released or has loaded another text. The same node is
//   the same object while someone holds it.
// - No locks: a document, its nodes, lists and maps are for one thread at a time. Different documents are independent.
//
// What differs from the platform's own DOM:
// - A document type declaration is refused whatever "ProhibitDTD" says; nothing is ever fetched from outside the text.
// - Refused with a parse error, so that a text of 1 MB is answered within a second whatever it holds: more than 1,000
//   attributes in one start tag, more than 500 namespace declarations in scope at once, more than 256 levels, one
//   text of more than 10 MB (in UTF-8).
// - Namespace declarations come before the other attributes of their element; the platform keeps the written order.
// - The XML declaration is a processing instruction without an attribute map.
#pragma once

#include "Platform/Automation.h"

enum tagDOMNodeType : LONG
{
    NODE_INVALID = 0,
    NODE_ELEMENT = 1,
    NODE_ATTRIBUTE = 2,
    NODE_TEXT = 3,
    NODE_CDATA_SECTION = 4,
    NODE_PROCESSING_INSTRUCTION = 7,
    NODE_COMMENT = 8,
    NODE_DOCUMENT = 9
};
using DOMNodeType = tagDOMNodeType;

struct IXMLDOMNodeList;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMElement;
struct IXMLDOMParseError;

/// One node: an element, attribute, text, CDATA section, comment, processing instruction or the document itself. An XML
/// declaration is a processing instruction "xml"; a namespace declaration is an attribute "xmlns" or "xmlns:prefix".
struct IXMLDOMNode : public IUnknown
{
    /// The qualified name (prefix, colon, local name); the target of a processing instruction; "#text", "#comment",
    /// "#cdata-section" and "#document" for the kinds without a name.
    virtual HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) = 0;

    /// A VT_BSTR with the value of an attribute, the characters of a text, CDATA section or comment, or what follows
    /// the target of a processing instruction. S_FALSE and VT_NULL for an element or a document.
    virtual HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) = 0;

    virtual HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) = 0;

    /// S_FALSE and null for a document, an attribute and the root of a clone.
    virtual HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) = 0;

    /// All child nodes in document order; an empty list where there are none. An attribute's child is its text.
    virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** childList) = 0;

    /// The attributes of an element; S_FALSE and null for every other kind.
    virtual HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** attributeMap) = 0;

    /// A copy without a parent: the element with its attributes or the empty document; with everything below it when
    /// deep is not VARIANT_FALSE.
    virtual HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) = 0;

    /// The texts and CDATA sections of the subtree, one after another; the value of the other kinds. Unless white space
    /// is preserved, dropped white space counts as one blank, and blanks at both ends of the result are left out.
    virtual HRESULT STDMETHODCALLTYPE get_text(BSTR* text) = 0;

    /// The value as a VT_BSTR (no document here has typed content): get_text for an element, get_nodeValue for the
    /// other kinds. S_FALSE and VT_NULL for a document.
    virtual HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* typedValue) = 0;

    /// The node and its subtree as XML text, without the encoding of an XML declaration. Line ends are CR LF. An
    /// element whose namespace is declared further up carries the declaration.
    virtual HRESULT STDMETHODCALLTYPE get_xml(BSTR* xmlString) = 0;

    /// The nodes that an XPath expression selects relative to this node, in document order; an empty list when it
    /// selects none.
    /// @return E_FAIL for an expression with a fault, one that gives no nodes, or a selection language that is not
    ///         "XPath" (a document of generation 3 starts with "XSLPattern", which is not provided).
    virtual HRESULT STDMETHODCALLTYPE selectNodes(BSTR queryString, IXMLDOMNodeList** resultList) = 0;

    /// The first node of selectNodes; S_FALSE and null when it selects none.
    virtual HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR queryString, IXMLDOMNode** resultNode) = 0;

    /// The namespace of an element or attribute, "http://www.w3.org/2000/xmlns/" for a namespace declaration; S_FALSE
    /// and null without one.
    virtual HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* namespaceURI) = 0;

    /// S_FALSE and null without a prefix. The prefix of a namespace declaration is "xmlns", also without a colon.
    virtual HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefixString) = 0;

    /// The name without its prefix; S_FALSE and null for the kinds without a name. Empty for the attribute "xmlns".
    virtual HRESULT STDMETHODCALLTYPE get_baseName(BSTR* nameString) = 0;

protected:
    ~IXMLDOMNode() = default;
};

/// Nodes in order, with a position. A list of children holds them as they were when it was asked for.
struct IXMLDOMNodeList : public IUnknown
{
    /// @param index  from 0. S_FALSE and null outside the list.
    virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) = 0;

    /// The node at the position, which then moves on; S_FALSE and null behind the last one. Takes constant time.
    virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** nextItem) = 0;

    /// Moves the position to before the first node.
    virtual HRESULT STDMETHODCALLTYPE reset() = 0;

protected:
    ~IXMLDOMNodeList() = default;
};

/// The attributes of an element as they are now.
struct IXMLDOMNamedNodeMap : public IUnknown
{
    /// @param name  the qualified name as written. S_FALSE and null when there is no such attribute.
    virtual HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** namedItem) = 0;

    /// @param index  from 0. S_FALSE and null outside the map.
    virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) = 0;

protected:
    ~IXMLDOMNamedNodeMap() = default;
};

struct IXMLDOMElement : public IXMLDOMNode
{
    /// A VT_BSTR; S_FALSE and VT_NULL when there is no such attribute. @param name  the qualified name as written.
    virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) = 0;

    /// S_FALSE when there is no such attribute. Removing a namespace declaration changes no node's namespace.
    virtual HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) = 0;

protected:
    ~IXMLDOMElement() = default;
};

struct IXMLDOMDocument : public IXMLDOMNode
{
    /// The element at the top; S_FALSE and null for a document without one.
    virtual HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** DOMElement) = 0;

    /// Replaces the content with that of a file, in the encoding that the file declares. Nothing but local files is
    /// read. @param xmlSource  a VT_BSTR with the file's path; another type gives E_INVALIDARG.
    /// @return as loadXML; a file that cannot be read is a parse error.
    virtual HRESULT STDMETHODCALLTYPE load(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) = 0;

    /// What the last load or loadXML met; error code 0 when it succeeded or there was none.
    virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** errorObj) = 0;

    /// Replaces the content with that of a text; an encoding that it declares is ignored.
    /// @return S_OK with VARIANT_TRUE; S_FALSE with VARIANT_FALSE when the text does not parse: the document is empty
    ///         then and get_parseError tells why.
    virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR bstrXML, VARIANT_BOOL* isSuccessful) = 0;

    /// Whether the next load keeps texts of nothing but white space. Where xml:space is "preserve" they are kept
    /// anyhow.
    virtual HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) = 0;

protected:
    ~IXMLDOMDocument() = default;
};

struct IXMLDOMDocument2 : public IXMLDOMDocument
{
    /// Names and values as written, letter case included:
    /// "NewParser" (VT_BOOL; generations 4 and 6 only): accepted, there is one parser;
    /// "ProhibitDTD" (VT_BOOL): VARIANT_TRUE is accepted, VARIANT_FALSE refused;
    /// "SelectionLanguage" (VT_BSTR): "XPath", which generations 4 and 6 start with; "XSLPattern" is refused;
    /// "SelectionNamespaces" (VT_BSTR): declarations as in XML (xmlns:p="u" xmlns:q='v') for the prefixes of queries.
    /// @return E_FAIL for any other name, type or value; then nothing changes.
    virtual HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT value) = 0;

protected:
    ~IXMLDOMDocument2() = default;
};

/// A parse error as it was when it was asked for. Positions count UTF-16 units of the text.
struct IXMLDOMParseError : public IUnknown
{
    /// A failing HRESULT; 0 when there was no error.
    virtual HRESULT STDMETHODCALLTYPE get_errorCode(LONG* errorCode) = 0;

    /// The path of the file; S_FALSE and null for a text.
    virtual HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) = 0;

    /// An English sentence, ended by CR LF. S_FALSE and null when there was no error.
    virtual HRESULT STDMETHODCALLTYPE get_reason(BSTR* reasonString) = 0;

    /// The whole line with the fault, without its end. S_FALSE and null when there was no error or no line.
    virtual HRESULT STDMETHODCALLTYPE get_srcText(BSTR* sourceString) = 0;

    virtual HRESULT STDMETHODCALLTYPE get_line(LONG* lineNumber) = 0;      ///< from 1; 0 without an error
    virtual HRESULT STDMETHODCALLTYPE get_linepos(LONG* linePosition) = 0; ///< from 1; 0 without an error
    virtual HRESULT STDMETHODCALLTYPE get_filepos(LONG* filePosition) = 0; ///< from 0, from the start of the text

protected:
    ~IXMLDOMParseError() = default;
};

inline constexpr IID IID_IXMLDOMNode = {
    0x2933BF80, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMDocument = {
    0x2933BF81, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMNodeList = {
    0x2933BF82, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMNamedNodeMap = {
    0x2933BF83, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMElement = {
    0x2933BF86, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMDocument2 = {
    0x2933BF95, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 }
};
inline constexpr IID IID_IXMLDOMParseError = {
    0x3EFAA426, 0x272F, 0x11D2, { 0x83, 0x6F, 0x00, 0x00, 0xF8, 0x7A, 0x77, 0x82 }
};

// The classes of a DOM document, one a generation; each creates an object with IXMLDOMDocument2.
inline constexpr CLSID CLSID_DOMDocument30 = {
    0xF5078F32, 0xC551, 0x11D3, { 0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21 }
};
inline constexpr CLSID CLSID_DOMDocument40 = {
    0x88D969C0, 0xF192, 0x11D4, { 0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5 }
};
inline constexpr CLSID CLSID_DOMDocument60 = {
    0x88D96A05, 0xF192, 0x11D4, { 0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5 }
};
