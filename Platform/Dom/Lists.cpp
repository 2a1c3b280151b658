#include "Platform/Dom/Object.h"
#include "Platform/Text/Text.h"

namespace OvPlatform::Dom
{

namespace
{

/// Gives a node that may be absent.
HRESULT GiveNode(const CTreePtr& spTree, xmlNodePtr pNode, IXMLDOMNode** ppResult)
{
    if (pNode == nullptr)
        return S_FALSE;
    *ppResult = Wrap(spTree, pNode);
    return S_OK;
}

class CNodeList final : public CObject<IXMLDOMNodeList>
{
public:
    CNodeList(CTreePtr spTree, std::vector<xmlNodePtr> nodes) : m_spTree(std::move(spTree)), m_nodes(std::move(nodes))
    {
    }

    HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) override
    {
        return Answer([&] {
            Output(listItem);
            return GiveNode(m_spTree, index < 0 ? nullptr : At(static_cast<size_t>(index)), listItem);
        });
    }

    HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) override
    {
        return Answer([&] {
            Output(listLength) = static_cast<LONG>(m_nodes.size());
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** nextItem) override
    {
        return Answer([&] {
            Output(nextItem);
            const HRESULT hr = GiveNode(m_spTree, At(m_nNext), nextItem);
            if (hr == S_OK)
                ++m_nNext;
            return hr;
        });
    }

    HRESULT STDMETHODCALLTYPE reset() override
    {
        m_nNext = 0;
        return S_OK;
    }

private:
    bool Offers(REFIID riid) const override { return riid == IID_IXMLDOMNodeList; }

    xmlNodePtr At(size_t nIndex) const { return nIndex < m_nodes.size() ? m_nodes[nIndex] : nullptr; }

    const CTreePtr m_spTree;
    const std::vector<xmlNodePtr> m_nodes;
    size_t m_nNext = 0;
};

class CAttributeMap final : public CObject<IXMLDOMNamedNodeMap>
{
public:
    CAttributeMap(CTreePtr spTree, xmlNodePtr pElement) : m_spTree(std::move(spTree)), m_pElement(pElement) {}

    HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** namedItem) override
    {
        return Answer([&] {
            Output(namedItem);
            const xmlAttrPtr pAttr = FindAttribute(m_pElement, Utf8FromWide(Input(name)));
            return GiveNode(m_spTree, AsNode(pAttr), namedItem);
        });
    }

    HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) override
    {
        return Answer([&] {
            Output(listItem);
            xmlAttrPtr pAttr = index < 0 ? nullptr : m_pElement->properties;
            for (; pAttr != nullptr && index > 0; --index)
                pAttr = pAttr->next;
            return GiveNode(m_spTree, AsNode(pAttr), listItem);
        });
    }

    HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) override
    {
        return Answer([&] {
            LONG& nLength = Output(listLength);
            for (const xmlAttr* pAttr = m_pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
                ++nLength;
            return S_OK;
        });
    }

private:
    bool Offers(REFIID riid) const override { return riid == IID_IXMLDOMNamedNodeMap; }

    const CTreePtr m_spTree;
    const xmlNodePtr m_pElement;
};

} // namespace

IXMLDOMNodeList* NewNodeList(const CTreePtr& spTree, std::vector<xmlNodePtr> nodes)
{
    return new CNodeList(spTree, std::move(nodes));
}

IXMLDOMNamedNodeMap* NewAttributeMap(const CTreePtr& spTree, xmlNodePtr pElement)
{
    return new CAttributeMap(spTree, pElement);
}

} // namespace OvPlatform::Dom
