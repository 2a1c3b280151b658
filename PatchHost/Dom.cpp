#include "PatchHost/Dom.h"

#include "PatchHost/Text.h"

namespace
{

std::wstring TakeText(BSTR bstrText)
{
    const std::wstring text = bstrText == nullptr ? L"" : std::wstring(bstrText, ::SysStringLen(bstrText));
    ::SysFreeString(bstrText);
    return text;
}

using TextGetter = HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*)(BSTR*);

std::string Read(IXMLDOMNode* pNode, TextGetter pGetter)
{
    BSTR bstrText = nullptr;
    (pNode->*pGetter)(&bstrText);
    return WideToUtf8(TakeText(bstrText));
}

std::vector<CDomNode> ReadList(IXMLDOMNodeList* pList)
{
    std::vector<CDomNode> nodes;
    while (pList != nullptr)
    {
        CComRef<IXMLDOMNode> spNode;
        if (pList->nextNode(spNode.Receive()) != S_OK)
            break;
        nodes.emplace_back(spNode);
    }
    return nodes;
}

} // namespace

std::optional<CDomNode> CDomNode::Parse(const std::wstring& text)
{
    CComRef<IXMLDOMDocument> spDocument;
    if (FAILED(::CoCreateInstance(CLSID_DOMDocument60, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                  reinterpret_cast<void**>(spDocument.Receive()))))
        return std::nullopt;
    const BSTR bstrText = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    VARIANT_BOOL bLoaded = VARIANT_FALSE;
    const HRESULT hr = spDocument->loadXML(bstrText, &bLoaded);
    ::SysFreeString(bstrText);
    CComRef<IXMLDOMNode> spNode;
    if (hr != S_OK || bLoaded == VARIANT_FALSE ||
        FAILED(spDocument->QueryInterface(IID_IXMLDOMNode, reinterpret_cast<void**>(spNode.Receive()))))
        return std::nullopt;
    return CDomNode(spNode);
}

std::vector<CDomNode> CDomNode::Children() const
{
    CComRef<IXMLDOMNodeList> spList;
    m_spNode->get_childNodes(spList.Receive());
    return ReadList(spList.Get());
}

std::vector<CDomNode> CDomNode::Select(const std::string& xpath) const
{
    const BSTR bstrQuery = ::SysAllocString(Utf8ToWide(xpath).c_str());
    CComRef<IXMLDOMNodeList> spList;
    m_spNode->selectNodes(bstrQuery, spList.Receive());
    ::SysFreeString(bstrQuery);
    return ReadList(spList.Get());
}

std::string CDomNode::TextAt(const std::string& xpath) const
{
    const std::vector<CDomNode> nodes = Select(xpath);
    return nodes.empty() ? std::string() : nodes.front().Text();
}

std::string CDomNode::Name() const
{
    return Read(m_spNode.Get(), &IXMLDOMNode::get_nodeName);
}

std::string CDomNode::BaseName() const
{
    return Read(m_spNode.Get(), &IXMLDOMNode::get_baseName);
}

std::string CDomNode::Text() const
{
    return Read(m_spNode.Get(), &IXMLDOMNode::get_text);
}

std::string CDomNode::Outline() const
{
    CComRef<IXMLDOMNode> spCopy;
    if (FAILED(m_spNode->cloneNode(VARIANT_FALSE, spCopy.Receive())) || spCopy.Get() == nullptr)
        return std::string();
    std::string outline = Read(spCopy.Get(), &IXMLDOMNode::get_xml);
    const size_t nEnd = outline.rfind("/>");
    if (nEnd != std::string::npos && !Children().empty())
        outline.replace(nEnd, std::string::npos, ">...");
    return outline;
}

std::optional<CDomNode> CDomNode::Parent() const
{
    CComRef<IXMLDOMNode> spParent;
    if (m_spNode->get_parentNode(spParent.Receive()) != S_OK)
        return std::nullopt;
    return CDomNode(spParent);
}

std::string CDomNode::Path() const
{
    const std::optional<CDomNode> parent = Parent();
    if (!parent)
        return std::string(); // the document
    const std::string name = Name();
    const std::string alike = "-sibling::*[name()='" + name + "']";
    const size_t nBefore = Select("preceding" + alike).size();
    const bool bOnly = nBefore == 0 && Select("following" + alike).empty();
    return parent->Path() + "/" + name + (bOnly ? "" : "[" + std::to_string(nBefore + 1) + "]");
}
