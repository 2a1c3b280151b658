#include "ovCore/OvXmlNode.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvXmlNodeList.h"
#include "OVTemplates.h"

#include <utility>
#include <vector>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvXmlNode";

/// The XML text of a node without its content; empty for a document. False when the DOM fails.
bool ReadOutline(IXMLDOMNode* pNode, std::wstring& wzOutline)
{
    DOMNodeType nType = NODE_INVALID;
    if (FAILED(pNode->get_nodeType(&nType)))
        return false;
    if (nType == NODE_DOCUMENT) // there are parsers whose shallow copy of a document is the whole document
        return true;
    COvComPtr<IXMLDOMNode> spCopy;
    COvBstr strXml;
    if (FAILED(pNode->cloneNode(VARIANT_FALSE, spCopy.Receive())) || !spCopy ||
        FAILED(spCopy->get_xml(strXml.Receive())))
        return false;
    const std::wstring wzXml = COvStringUtil::FromBSTR(strXml);
    wzOutline = wzXml.substr(0, wzXml.find(L"</"));
    return true;
}

/// The node and its ancestors, innermost first. False when the DOM fails.
bool ReadAncestors(const COvComPtr<IXMLDOMNode>& spNode, std::vector<COvComPtr<IXMLDOMNode>>& path)
{
    COvComPtr<IXMLDOMNode> spCurrent = spNode;
    while (spCurrent)
    {
        COvComPtr<IXMLDOMNode> spParent;
        if (FAILED(spCurrent->get_parentNode(spParent.Receive())))
            return false;
        path.push_back(std::move(spCurrent));
        spCurrent = std::move(spParent);
    }
    return true;
}

/// From the outermost ancestor to the node, each a blank further to the right. False when the DOM fails.
bool ReadNodePath(const COvComPtr<IXMLDOMNode>& spNode, std::wstring& wzPath)
{
    std::vector<COvComPtr<IXMLDOMNode>> path;
    if (!ReadAncestors(spNode, path))
        return false;
    wzPath = L"\n";
    size_t nWritten = 0;
    for (auto it = path.rbegin(); it != path.rend(); ++it)
    {
        std::wstring wzOutline;
        if (!ReadOutline(it->Get(), wzOutline))
            return false;
        if (!wzOutline.empty())
            wzPath.append(nWritten++, L' ').append(wzOutline);
    }
    return true;
}

/// The names alone: there are parsers that free an attribute which is removed, although its node is still held.
std::vector<COvBstr> AttributeNames(const COvXmlNode& node)
{
    std::vector<COvBstr> names;
    for (const COvXmlNode& attribute : node.SearchForNodes(COvBstr(L"@*").Get()))
        names.push_back(attribute.GetNodeName());
    return names;
}

const wchar_t* TextOf(BSTR str)
{
    return str;
}

} // namespace

COvXmlNode::COvXmlNode(IXMLDOMNode* pNode) : m_spNode(pNode) {}

COvXmlNode::COvXmlNode(COvComPtr<IXMLDOMNode> spNode) : m_spNode(std::move(spNode)) {}

COvBstr COvXmlNode::GetNodeName() const
{
    OV_SCOPE(L"COvXmlNode::GetNodeName");
    return ReadText(&IXMLDOMNode::get_nodeName, L"IXMLDOMNode::get_nodeName", __LINE__);
}

COvBstr COvXmlNode::GetNodeBaseName() const
{
    OV_SCOPE(L"COvXmlNode::GetNodeBaseName");
    return ReadText(&IXMLDOMNode::get_baseName, L"IXMLDOMNode::get_baseName()", __LINE__);
}

COvBstr COvXmlNode::GetText() const
{
    OV_SCOPE(L"COvXmlNode::GetText");
    return ReadText(&IXMLDOMNode::get_text, L"IXMLDOMNode::get_text", __LINE__);
}

COvBstr COvXmlNode::GetXML() const
{
    OV_SCOPE(L"COvXmlNode::GetXML");
    return ReadText(&IXMLDOMNode::get_xml, L"IXMLDOMNode::get_xml", __LINE__);
}

bool COvXmlNode::GetOptParent(COvXmlNode& parent) const
{
    OV_SCOPE(L"COvXmlNode::GetOptParent");
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMNode> spParent;
    const HRESULT hr = m_spNode->get_parentNode(spParent.Receive());
    if (FAILED(hr))
        RaiseDomFailure(hr, __LINE__, L"IXMLDOMNode::get_parentNode");
    parent.m_spNode = std::move(spParent);
    return hr != S_FALSE && parent.m_spNode;
}

COvXmlNodeList COvXmlNode::GetChildNodes() const
{
    OV_SCOPE(L"COvXmlNode::GetChildNodes");
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMNodeList> spList;
    const HRESULT hr = m_spNode->get_childNodes(spList.Receive());
    if (FAILED(hr))
        RaiseDomFailure(hr, __LINE__, L"IXMLDOMNode::get_childNodes");
    COvXmlNodeList children;
    children.Populate(spList.Get());
    return children;
}

COvXmlNodeList COvXmlNode::GetElems(BSTR bstrPattern, bool bRequired) const
{
    OV_SCOPE(L"COvXmlNode::GetElems");
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMNodeList> spList;
    const HRESULT hr = m_spNode->selectNodes(bstrPattern, spList.Receive());
    if (FAILED(hr) || (bRequired && (hr == S_FALSE || !spList)))
        RaiseDomFailure(hr, __LINE__, L"IXMLDOMNode::selectNodes",
                        COvEvidence(L"bstrPattern", TextOf(bstrPattern)) + COvEvidence(L"bRequired", bRequired));
    COvXmlNodeList found;
    found.Populate(spList.Get());
    return found;
}

COvXmlNodeList COvXmlNode::SearchForNodes(BSTR bstrPattern) const
{
    OV_SCOPE(L"COvXmlNode::SearchForNodes");
    constexpr bool bRequired = false;
    return GetElems(bstrPattern, bRequired);
}

COvComPtr<IXMLDOMNamedNodeMap> COvXmlNode::GetAttrs() const
{
    OV_SCOPE(L"COvXmlNode::GetAttrs");
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMNamedNodeMap> spMap;
    const HRESULT hr = m_spNode->get_attributes(spMap.Receive());
    if (FAILED(hr) || !spMap)
        RaiseDomFailure(hr, __LINE__, L"IXMLDOMElement::get_attributes");
    return spMap;
}

COvXmlNode COvXmlNode::GetAttr(BSTR bstrAttrNm, bool bRequired) const
{
    OV_SCOPE(L"COvXmlNode::GetAttr");
    const COvComPtr<IXMLDOMNamedNodeMap> spMap = GetAttrs();
    COvComPtr<IXMLDOMNode> spAttr;
    const HRESULT hr = spMap->getNamedItem(bstrAttrNm, spAttr.Receive());
    if (SUCCEEDED(hr) && spAttr)
        return COvXmlNode(std::move(spAttr));
    if (bRequired)
        RaiseDomFailure(hr, __LINE__, COvEvidence(L"Method", L"IXMLDOMNamedNodeMap::getNamedItem"),
                        COvEvidence(L"bstrAttrNm", TextOf(bstrAttrNm)) + COvEvidence(L"bRequired", bRequired),
                        spMap.Get(), IID_IXMLDOMNamedNodeMap);
    return COvXmlNode();
}

bool COvXmlNode::GetOptAttrValueVar(BSTR name, VARIANT* value) const
{
    OV_SCOPE(L"COvXmlNode::GetOptAttrValueVar");
    RequireNode(__LINE__);
    ::VariantClear(value);
    constexpr bool bRequired = false;
    const COvXmlNode attribute = GetAttr(name, bRequired);
    if (attribute.Get() == nullptr)
        return false;
    *value = ReadValue(attribute).Detach();
    return true;
}

_variant_t COvXmlNode::GetAttrValueVar(BSTR strAttrName) const
{
    OV_SCOPE(L"COvXmlNode::GetAttrValueVar");
    _variant_t value;
    if (GetOptAttrValueVar(strAttrName, &value))
        return value;
    const HRESULT hr = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    COvEvidence evidence = COvEvidence(L"Win32 Error", hr, true) + COvEvidence(L"strAttrName", TextOf(strAttrName));
    AddDiagnosticEvidence(evidence);
    OvRaise(hr, s_szSource, __LINE__, evidence);
}

COvBstr COvXmlNode::GetAttrValueStr(BSTR name) const
{
    OV_SCOPE(L"COvXmlNode::GetAttrValueStr");
    _variant_t value = ConvertedValue(name, VT_BSTR);
    if (value.vt != VT_BSTR)
        return COvBstr(L"");
    COvBstr strValue;
    strValue.Attach(value.Detach().bstrVal);
    return strValue;
}

bool COvXmlNode::GetAttrValueBool(BSTR name) const
{
    OV_SCOPE(L"COvXmlNode::GetAttrValueBool");
    const _variant_t value = ConvertedValue(name, VT_BOOL);
    return value.vt == VT_BOOL && value.boolVal == VARIANT_TRUE;
}

LONG COvXmlNode::GetAttrValueLong(BSTR name) const
{
    OV_SCOPE(L"COvXmlNode::GetAttrValueLong");
    const _variant_t value = ConvertedValue(name, VT_I4);
    return value.vt == VT_I4 ? value.lVal : 0;
}

void COvXmlNode::CloneNode(COvXmlNode& copy, OvXmlCloneType cloneType) const
{
    OV_SCOPE(L"COvXmlNode::CloneNode");
    copy.m_spNode = (cloneType == CloneElementOnly ? CloneNodeElementOnly() : Copy(cloneType)).m_spNode;
}

COvXmlNode COvXmlNode::CloneNodeElementOnly() const
{
    OV_SCOPE(L"COvXmlNode::CloneNodeElementOnly");
    const COvXmlNode copy = Copy(CloneElementOnly);
    for (const COvBstr& strName : AttributeNames(copy))
        if (COvStringUtil::FromBSTR(strName) != L"xmlns")
            RemoveAttribute(copy, strName);
    return copy;
}

void COvXmlNode::AddDiagnosticEvidence(COvEvidence& evidence) const noexcept
{
    try
    {
        std::wstring wzPath;
        if (ReadNodePath(m_spNode, wzPath))
            evidence += COvEvidence(L"Node Path", wzPath);
    }
    catch (...)
    {
        // The failure that is being reported matters more than where it happened.
    }
}

void COvXmlNode::RequireNode(LONG nLine) const
{
    if (m_spNode)
        return;
    OvRaise(E_FAIL, s_szSource, nLine,
            COvEvidence(L"Info Msg", L"No node available.") + COvEvidence(L"m_spNode", PointerValue(m_spNode.Get())));
}

COvBstr COvXmlNode::ReadText(TextGetter pGetter, const wchar_t* szMethod, LONG nLine) const
{
    RequireNode(nLine);
    COvBstr strText;
    const HRESULT hr = (m_spNode.Get()->*pGetter)(strText.Receive());
    if (FAILED(hr))
        RaiseDomFailure(hr, nLine, szMethod);
    return strText;
}

COvXmlNode COvXmlNode::Copy(OvXmlCloneType cloneType) const
{
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMNode> spCopy;
    const HRESULT hr = m_spNode->cloneNode(cloneType == CloneDeep ? VARIANT_TRUE : VARIANT_FALSE, spCopy.Receive());
    if (FAILED(hr))
        RaiseDomFailure(hr, __LINE__, L"IXMLDOMNode::cloneNode",
                        COvEvidence(L"cloneType", static_cast<LONG>(cloneType)));
    return COvXmlNode(std::move(spCopy));
}

void COvXmlNode::RemoveAttribute(const COvXmlNode& copy, const COvBstr& strAttrName) const
{
    COvComPtr<IXMLDOMElement> spElement;
    QueryInterfaceChecked(copy.Get(), spElement, IID_IXMLDOMElement, L"IXMLDOMElement");
    const HRESULT hr = spElement->removeAttribute(strAttrName.Get());
    if (FAILED(hr))
        RaiseDomFailure(hr, __LINE__, COvEvidence(L"Method", L"IXMLDOMElement::removeAttribute"),
                        COvEvidence(L"strAttrName", strAttrName), spElement.Get(), IID_IXMLDOMElement);
}

_variant_t COvXmlNode::ReadValue(const COvXmlNode& attribute) const
{
    _variant_t value;
    const HRESULT hr = attribute.m_spNode->get_nodeTypedValue(&value);
    if (SUCCEEDED(hr))
        return value;
    COvBstr strText;
    if (FAILED(attribute.m_spNode->get_text(strText.Receive())))
        RaiseDomFailure(hr, __LINE__,
                        COvEvidence(L"Method", L"IXMLDOMNode::get_nodeTypedValue()") +
                            COvEvidence(L"Method", L"IXMLDOMNode::get_nodeValue()"),
                        COvEvidence(), attribute.Get(), IID_IXMLDOMNode);
    VARIANT text;
    text.vt = VT_BSTR;
    text.bstrVal = strText.Detach();
    value.Attach(text);
    return value;
}

_variant_t COvXmlNode::ConvertedValue(BSTR name, VARTYPE vtType) const
{
    const _variant_t value = GetAttrValueVar(name);
    if (value.vt == VT_EMPTY || value.vt == VT_NULL)
        return _variant_t();
    return COvStringUtil::VariantChangeType(value, vtType, 0);
}

void COvXmlNode::RaiseDomFailure(HRESULT hr, LONG nLine, const wchar_t* szMethod, const COvEvidence& arguments) const
{
    RaiseDomFailure(hr, nLine, COvEvidence(L"Method", szMethod), arguments, m_spNode.Get(), IID_IXMLDOMNode);
}

void COvXmlNode::RaiseDomFailure(HRESULT hr, LONG nLine, const COvEvidence& method, const COvEvidence& arguments,
                                 IUnknown* pFailed, REFIID iid) const
{
    const COvEvidence errorInfo(L"Error Object Info", pFailed, iid); // first: the calls below may replace it
    COvEvidence evidence = method + COvEvidence(L"Win32 Error", hr, true) + arguments;
    AddDiagnosticEvidence(evidence);
    OvRaise(hr, s_szSource, nLine, evidence + errorInfo);
}
