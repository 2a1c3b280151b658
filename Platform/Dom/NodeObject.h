// The operations that every kind of node has.
#pragma once

#include "Platform/Dom/Object.h"

namespace OvPlatform::Dom
{

using OptText = std::optional<std::wstring>;

// What a node answers.
std::wstring NameOf(const xmlNode* pNode);
OptText BaseNameOf(const xmlNode* pNode);
OptText PrefixOf(const xmlNode* pNode);
OptText NamespaceOf(const xmlNode* pNode);
OptText ValueOf(const xmlNode* pNode);
OptText TypedValueOf(const CTree& tree, const xmlNode* pNode);
xmlNodePtr ParentOf(const CTree& tree, const xmlNode* pNode);
std::vector<xmlNodePtr> ChildrenOf(const xmlNode* pNode);

/// The object of a node: the node points to it while it lives, and it keeps the tree alive.
template <class Interface>
class CNodeObject : public CObject<Interface>
{
public:
    CNodeObject(CTreePtr spTree, xmlNodePtr pNode) : m_spTree(std::move(spTree)), m_pNode(pNode) { Bind(this); }
    ~CNodeObject() override { Bind(nullptr); }

    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override { return GiveText(name, &NameOf); }
    HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) override { return GiveText(value, &ValueOf); }
    HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override { return GiveText(text, InTree(&Text)); }
    HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* v) override { return GiveText(v, InTree(&TypedValueOf)); }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR* xmlString) override { return GiveText(xmlString, &Xml); }
    HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* uri) override { return GiveText(uri, &NamespaceOf); }
    HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefix) override { return GiveText(prefix, &PrefixOf); }
    HRESULT STDMETHODCALLTYPE get_baseName(BSTR* name) override { return GiveText(name, &BaseNameOf); }

    HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) override
    {
        return Answer([&] {
            Output(type) = static_cast<DOMNodeType>(m_pNode->type); // the library numbers them alike
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) override
    {
        return Answer([&] {
            Output(parent);
            return GiveNode(ParentOf(*m_spTree, m_pNode), *parent);
        });
    }

    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** childList) override
    {
        return Answer([&] {
            Output(childList);
            *childList = NewNodeList(m_spTree, ChildrenOf(m_pNode));
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** attributeMap) override
    {
        return Answer([&] {
            Output(attributeMap);
            if (m_pNode->type != XML_ELEMENT_NODE)
                return S_FALSE;
            *attributeMap = NewAttributeMap(m_spTree, m_pNode);
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) override
    {
        return Answer([&] {
            Output(cloneRoot);
            const CClone clone = Clone(*m_spTree, m_pNode, deep != VARIANT_FALSE);
            *cloneRoot = Wrap(clone.m_spTree, clone.m_pNode);
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE selectNodes(BSTR queryString, IXMLDOMNodeList** resultList) override
    {
        return Answer([&] {
            Output(resultList);
            *resultList = NewNodeList(m_spTree, Select(*m_spTree, m_pNode, Input(queryString)));
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR queryString, IXMLDOMNode** resultNode) override
    {
        return Answer([&] {
            Output(resultNode);
            const std::vector<xmlNodePtr> nodes = Select(*m_spTree, m_pNode, Input(queryString));
            return GiveNode(nodes.empty() ? nullptr : nodes.front(), *resultNode);
        });
    }

protected:
    const CTreePtr& Tree() const { return m_spTree; }
    xmlNodePtr Node() const { return m_pNode; }

    /// Makes the object stand for another node.
    void MoveTo(CTreePtr spTree, xmlNodePtr pNode)
    {
        Bind(nullptr);
        m_spTree = std::move(spTree);
        m_pNode = pNode;
        Bind(this);
    }

    HRESULT GiveNode(xmlNodePtr pNode, IXMLDOMNode*& pResult) const
    {
        if (pNode == nullptr)
            return S_FALSE;
        pResult = Wrap(m_spTree, pNode);
        return S_OK;
    }

    bool Offers(REFIID riid) const override { return riid == IID_IXMLDOMNode; }

private:
    void Bind(IXMLDOMNode* pObject) { m_pNode->_private = pObject; }

    template <class T>
    auto InTree(T (*pGetter)(const CTree&, const xmlNode*)) const
    {
        return [this, pGetter](const xmlNode* pNode) { return pGetter(*m_spTree, pNode); };
    }

    template <class Result, class Getter>
    HRESULT GiveText(Result* pResult, Getter&& getter) const
    {
        return Answer([&] {
            Output(pResult);
            return Give(getter(m_pNode), pResult);
        });
    }

    CTreePtr m_spTree;
    xmlNodePtr m_pNode;
};

} // namespace OvPlatform::Dom
