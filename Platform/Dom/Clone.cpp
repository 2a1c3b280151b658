#include "Platform/Dom/Tree.h"

#include <cstring>
#include <new>

namespace OvPlatform::Dom
{

namespace
{

bool SameText(const xmlChar* pA, const xmlChar* pB)
{
    return std::strcmp(AsText(pA), AsText(pB)) == 0;
}

/// Builds the copy from the top down. Each node is part of the new tree before the next call that can fail, so that
/// nothing is left over when one does.
class CCopier
{
public:
    CCopier(CTree& target, const CLibraryReports& reports) : m_target(target), m_reports(reports) {}

    xmlNodePtr Copy(const xmlNode* pSource, xmlNodePtr pParent, bool bDeep)
    {
        const xmlNodePtr pCopy = Attach(Create(pSource), pParent);
        pCopy->psvi = pSource->psvi;
        if (pSource->type == XML_ELEMENT_NODE)
            FillElement(pSource, pCopy);
        if (bDeep && pSource->type == XML_ELEMENT_NODE)
            CopyChildren(pSource, pCopy);
        return pCopy;
    }

    xmlNodePtr Attach(xmlNodePtr pNew, xmlNodePtr pParent) const
    {
        if (pNew != nullptr)
            xmlAddChild(pParent, pNew);
        return m_reports.Required(pNew);
    }

    void CopyChildren(const xmlNode* pSource, xmlNodePtr pCopy)
    {
        for (const xmlNode* pChild = pSource->children; pChild != nullptr; pChild = pChild->next)
            Copy(pChild, pCopy, true);
    }

    xmlNodePtr CopyAttribute(const xmlNode* pSource, xmlNodePtr pElement)
    {
        const xmlNsPtr pNs = pSource->ns == nullptr ? nullptr : Namespace(pSource->ns, pElement);
        const std::string szValue = Value(pSource);
        return AsNode(m_reports.Required(xmlNewNsProp(pElement, pNs, pSource->name, AsXml(szValue.c_str()))));
    }

private:
    xmlNodePtr Create(const xmlNode* pSource) const
    {
        const xmlDocPtr pDoc = m_target.m_spDoc.get();
        switch (pSource->type)
        {
        case XML_ELEMENT_NODE:
            return xmlNewDocNode(pDoc, nullptr, pSource->name, nullptr);
        case XML_CDATA_SECTION_NODE:
            return xmlNewCDataBlock(pDoc, pSource->content, xmlStrlen(pSource->content));
        case XML_COMMENT_NODE:
            return xmlNewDocComment(pDoc, pSource->content);
        case XML_PI_NODE:
            return xmlNewDocPI(pDoc, pSource->name, pSource->content);
        default:
            return xmlNewDocText(pDoc, pSource->content);
        }
    }

    void FillElement(const xmlNode* pSource, xmlNodePtr pCopy)
    {
        for (const xmlNs* pNs = pSource->nsDef; pNs != nullptr; pNs = pNs->next)
            m_reports.Required(xmlNewNs(pCopy, pNs->href, pNs->prefix));
        if (pSource->ns != nullptr)
            pCopy->ns = Namespace(pSource->ns, pCopy);
        for (const xmlAttr* pAttr = pSource->properties; pAttr != nullptr; pAttr = pAttr->next)
            CopyAttribute(reinterpret_cast<const xmlNode*>(pAttr), pCopy);
    }

    /// The declaration that counts at the element, which gets one of its own when the copy has none so far.
    xmlNsPtr Namespace(const xmlNs* pSource, xmlNodePtr pElement) const
    {
        for (const xmlNode* pNode = pElement; pNode->type == XML_ELEMENT_NODE; pNode = pNode->parent)
        {
            for (xmlNsPtr pNs = pNode->nsDef; pNs != nullptr; pNs = pNs->next)
            {
                if (SameText(pNs->prefix, pSource->prefix) && SameText(pNs->href, pSource->href))
                    return pNs;
            }
        }
        return m_reports.Required(xmlNewNs(pElement, pSource->href, pSource->prefix));
    }

    CTree& m_target;
    const CLibraryReports& m_reports;
};

/// An attribute cannot stand alone: its copy sits on an element that nobody sees.
xmlNodePtr CopyLoneAttribute(CCopier& copier, const xmlNode* pAttr, CTree& target)
{
    const xmlNodePtr pHolder = xmlNewDocNode(target.m_spDoc.get(), nullptr, AsXml("holder"), nullptr);
    return copier.CopyAttribute(pAttr, copier.Attach(pHolder, target.Document()));
}

} // namespace

CClone Clone(const CTree& source, const xmlNode* pNode, bool bDeep)
{
    const CLibraryReports reports;
    const bool bDocument = pNode->type == XML_DOCUMENT_NODE;
    const CTreePtr spTree = NewTree(source.m_spSettings, !bDocument);
    spTree->m_bPreserved = source.m_bPreserved;
    CCopier copier(*spTree, reports);
    const xmlNodePtr pDocument = spTree->Document();
    if (pNode->type == XML_ATTRIBUTE_NODE)
        return { spTree, CopyLoneAttribute(copier, pNode, *spTree) };
    if (!bDocument)
        return { spTree, copier.Copy(pNode, pDocument, bDeep) };
    if (bDeep)
        copier.CopyChildren(pNode, pDocument);
    return { spTree, pDocument };
}

} // namespace OvPlatform::Dom
