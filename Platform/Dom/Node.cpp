#include "Platform/Dom/NodeObject.h"
#include "Platform/Text/Text.h"

namespace OvPlatform::Dom
{

namespace
{

class CNode final : public CNodeObject<IXMLDOMNode>
{
public:
    using CNodeObject::CNodeObject;
};

class CElement final : public CNodeObject<IXMLDOMElement>
{
public:
    using CNodeObject::CNodeObject;

    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) override
    {
        return Answer([&] {
            Output(value);
            const xmlAttrPtr pAttr = Find(name);
            return Give(pAttr == nullptr ? std::nullopt : ValueOf(AsNode(pAttr)), value);
        });
    }

    HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) override
    {
        return Answer([&] {
            const xmlAttrPtr pAttr = Find(name);
            if (pAttr == nullptr)
                return S_FALSE;
            RemoveAttribute(*Tree(), pAttr);
            return S_OK;
        });
    }

private:
    bool Offers(REFIID riid) const override { return riid == IID_IXMLDOMElement || CNodeObject::Offers(riid); }

    xmlAttrPtr Find(BSTR bstrName) const { return FindAttribute(Node(), Utf8FromWide(Input(bstrName))); }
};

bool IsNamed(const xmlNode* pNode)
{
    return pNode->type == XML_ELEMENT_NODE || pNode->type == XML_ATTRIBUTE_NODE || pNode->type == XML_PI_NODE;
}

} // namespace

std::wstring NameOf(const xmlNode* pNode)
{
    switch (pNode->type)
    {
    case XML_TEXT_NODE:
        return L"#text";
    case XML_CDATA_SECTION_NODE:
        return L"#cdata-section";
    case XML_COMMENT_NODE:
        return L"#comment";
    case XML_DOCUMENT_NODE:
        return L"#document";
    default:
        return WideFromUtf8(QualifiedName(pNode));
    }
}

OptText BaseNameOf(const xmlNode* pNode)
{
    if (!IsNamed(pNode))
        return std::nullopt;
    std::wstring wzName = WideFromUtf8(AsText(pNode->name));
    if (!IsDeclaration(pNode))
        return wzName;
    const size_t nColon = wzName.find(L':');
    return nColon == std::wstring::npos ? std::wstring() : wzName.substr(nColon + 1);
}

OptText PrefixOf(const xmlNode* pNode)
{
    if (IsDeclaration(pNode))
        return L"xmlns";
    if (!IsNamed(pNode) || pNode->ns == nullptr || pNode->ns->prefix == nullptr)
        return std::nullopt;
    return WideFromUtf8(AsText(pNode->ns->prefix));
}

OptText NamespaceOf(const xmlNode* pNode)
{
    if (IsDeclaration(pNode))
        return L"http://www.w3.org/2000/xmlns/";
    if (!IsNamed(pNode) || pNode->ns == nullptr)
        return std::nullopt;
    return WideFromUtf8(AsText(pNode->ns->href));
}

OptText ValueOf(const xmlNode* pNode)
{
    if (pNode->type == XML_ELEMENT_NODE || pNode->type == XML_DOCUMENT_NODE)
        return std::nullopt;
    return WideFromUtf8(Value(pNode));
}

OptText TypedValueOf(const CTree& tree, const xmlNode* pNode)
{
    return pNode->type == XML_ELEMENT_NODE ? Text(tree, pNode) : ValueOf(pNode);
}

xmlNodePtr ParentOf(const CTree& tree, const xmlNode* pNode)
{
    if (pNode->type == XML_DOCUMENT_NODE || pNode->type == XML_ATTRIBUTE_NODE)
        return nullptr;
    return pNode->parent == tree.Document() && tree.m_bFragment ? nullptr : pNode->parent;
}

std::vector<xmlNodePtr> ChildrenOf(const xmlNode* pNode)
{
    std::vector<xmlNodePtr> children;
    for (xmlNodePtr pChild = pNode->children; pChild != nullptr; pChild = pChild->next)
        children.push_back(pChild);
    return children;
}

IXMLDOMNode* Wrap(const CTreePtr& spTree, xmlNodePtr pNode)
{
    if (pNode->_private != nullptr)
    {
        const auto pObject = static_cast<IXMLDOMNode*>(pNode->_private);
        pObject->AddRef();
        return pObject;
    }
    if (pNode->type == XML_DOCUMENT_NODE)
        return NewDocumentObject(spTree);
    if (pNode->type == XML_ELEMENT_NODE)
        return new CElement(spTree, pNode);
    return new CNode(spTree, pNode);
}

} // namespace OvPlatform::Dom
