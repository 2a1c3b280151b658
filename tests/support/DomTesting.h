// Documents, nodes and their outlines for the tests of the DOM.
#pragma once

#include "OvComPtr.h"
#include "ovCore/OvBstr.h"
#include "OvPlatform.h"
#include "Wine.h"

#include <algorithm>
#include <string>
#include <vector>

using CDocumentPtr = COvComPtr<IXMLDOMDocument2>;
using CNodePtr = COvComPtr<IXMLDOMNode>;

template <class T>
COvComPtr<T> As(IUnknown* pUnknown, REFIID riid)
{
    COvComPtr<T> spResult;
    if (pUnknown != nullptr)
        pUnknown->QueryInterface(riid, reinterpret_cast<void**>(spResult.Receive()));
    return spResult;
}

/// An empty document; null when the class cannot be created.
inline CDocumentPtr NewDocument(REFCLSID rclsid = CLSID_DOMDocument60)
{
    COvComPtr<IUnknown> spUnknown;
    ::CoCreateInstance(rclsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                       reinterpret_cast<void**>(spUnknown.Receive()));
    return As<IXMLDOMDocument2>(spUnknown.Get(), IID_IXMLDOMDocument2);
}

inline HRESULT LoadText(const CDocumentPtr& spDocument, const std::wstring& wzText)
{
    VARIANT_BOOL bLoaded = VARIANT_FALSE;
    const HRESULT hr = spDocument->loadXML(COvBstr(wzText).Get(), &bLoaded);
    return hr == S_OK && bLoaded == VARIANT_FALSE ? E_UNEXPECTED : hr;
}

/// A document with that text in it; an empty one when it does not parse.
inline CDocumentPtr Loaded(const std::wstring& wzText, bool bPreserve = false)
{
    CDocumentPtr spDocument = NewDocument();
    spDocument->put_preserveWhiteSpace(bPreserve ? VARIANT_TRUE : VARIANT_FALSE);
    LoadText(spDocument, wzText);
    return spDocument;
}

using CTextGetter = HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*)(BSTR*);
using CValueGetter = HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*)(VARIANT*);

inline std::wstring TextOf(const COvBstr& strText)
{
    return std::wstring(strText.IsNull() ? L"" : strText.Get(), ::SysStringLen(strText.Get()));
}

/// What a getter answers; "-" for none with S_FALSE, "!" for anything else that is not a text with S_OK.
inline std::wstring Told(IXMLDOMNode* pNode, CTextGetter pGetter)
{
    COvBstr strText;
    const HRESULT hr = (pNode->*pGetter)(strText.Receive());
    if (hr == S_FALSE && strText.IsNull())
        return L"-";
    return hr == S_OK && !strText.IsNull() ? TextOf(strText) : L"!";
}

inline std::wstring Told(IXMLDOMNode* pNode, CValueGetter pGetter)
{
    VARIANT value;
    ::VariantInit(&value);
    const HRESULT hr = (pNode->*pGetter)(&value);
    std::wstring wzResult = hr == S_FALSE && value.vt == VT_NULL ? L"-" : L"!";
    if (hr == S_OK && value.vt == VT_BSTR)
        wzResult.assign(value.bstrVal, ::SysStringLen(value.bstrVal));
    ::VariantClear(&value);
    return wzResult;
}

inline std::wstring NameOf(IXMLDOMNode* pNode)
{
    return Told(pNode, &IXMLDOMNode::get_nodeName);
}

inline std::vector<CNodePtr> NodesOf(IXMLDOMNodeList* pList)
{
    std::vector<CNodePtr> nodes;
    CNodePtr spNode;
    while (pList != nullptr && pList->nextNode(spNode.Receive()) == S_OK)
        nodes.push_back(spNode);
    return nodes;
}

inline std::vector<CNodePtr> ChildrenOf(IXMLDOMNode* pNode)
{
    COvComPtr<IXMLDOMNodeList> spList;
    pNode->get_childNodes(spList.Receive());
    return NodesOf(spList.Get());
}

/// The nodes that a query selects; none when it fails.
inline std::vector<CNodePtr> Selected(IXMLDOMNode* pNode, const wchar_t* szQuery, HRESULT* phr = nullptr)
{
    COvComPtr<IXMLDOMNodeList> spList;
    const HRESULT hr = pNode->selectNodes(COvBstr(szQuery).Get(), spList.Receive());
    if (phr != nullptr)
        *phr = hr;
    return NodesOf(spList.Get());
}

/// The first node that a query selects; null when there is none.
inline CNodePtr First(IXMLDOMNode* pNode, const wchar_t* szQuery)
{
    const std::vector<CNodePtr> nodes = Selected(pNode, szQuery);
    return nodes.empty() ? CNodePtr() : nodes.front();
}

inline std::vector<std::wstring> AttributesOf(IXMLDOMNode* pElement)
{
    std::vector<std::wstring> attributes;
    COvComPtr<IXMLDOMNamedNodeMap> spMap;
    LONG nLength = 0;
    if (pElement->get_attributes(spMap.Receive()) == S_OK)
        spMap->get_length(&nLength);
    for (LONG i = 0; i < nLength; ++i)
    {
        CNodePtr spAttribute;
        if (spMap->get_item(i, spAttribute.Receive()) == S_OK)
            attributes.push_back(NameOf(spAttribute.Get()) + L"=" +
                                 Told(spAttribute.Get(), &IXMLDOMNode::get_nodeValue));
    }
    std::sort(attributes.begin(), attributes.end());
    return attributes;
}

inline std::wstring Outline(IXMLDOMNode* pNode);

inline std::wstring OutlineOfChildren(IXMLDOMNode* pNode)
{
    std::wstring wzResult;
    for (const CNodePtr& spChild : ChildrenOf(pNode))
        wzResult += (wzResult.empty() ? L"" : L" ") + Outline(spChild.Get());
    return wzResult;
}

/// An element as name{namespace}[attributes](children), without its namespace declarations; a text in single quotes, a
/// CDATA section in angle brackets, a comment behind "!", a processing instruction behind "?".
inline std::wstring Outline(IXMLDOMNode* pNode)
{
    DOMNodeType type = NODE_INVALID;
    pNode->get_nodeType(&type);
    const std::wstring wzValue = Told(pNode, &IXMLDOMNode::get_nodeValue);
    if (type == NODE_DOCUMENT)
        return OutlineOfChildren(pNode);
    if (type == NODE_TEXT)
        return L"'" + wzValue + L"'";
    if (type == NODE_CDATA_SECTION)
        return L"<" + wzValue + L">";
    if (type == NODE_COMMENT)
        return L"!" + wzValue;
    if (type == NODE_PROCESSING_INSTRUCTION)
        return L"?" + NameOf(pNode) + L" " + wzValue;
    const std::wstring wzNamespace = Told(pNode, &IXMLDOMNode::get_namespaceURI);
    std::wstring wzAttributes;
    for (const std::wstring& wzAttribute : AttributesOf(pNode))
        wzAttributes += wzAttribute.compare(0, 5, L"xmlns") == 0 ? L"" : L"[" + wzAttribute + L"]";
    const std::wstring wzChildren = OutlineOfChildren(pNode);
    return NameOf(pNode) + (wzNamespace == L"-" ? L"" : L"{" + wzNamespace + L"}") + wzAttributes +
           (wzChildren.empty() ? L"" : L"(" + wzChildren + L")");
}
