#include "Platform/Dom/Tree.h"
#include "Platform/Text/Text.h"

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <new>

namespace OvPlatform::Dom
{

namespace
{

struct CFreeContext
{
    void operator()(xmlXPathContextPtr pContext) const { xmlXPathFreeContext(pContext); }
};

struct CFreeResult
{
    void operator()(xmlXPathObjectPtr pResult) const { xmlXPathFreeObject(pResult); }
};

void OnReport(void* pReports, xmlErrorPtr pError)
{
    static_cast<CLibraryReports*>(pReports)->Note(pError);
}

/// What the selected nodes are here; the library's own form of a declaration has no place in the tree.
std::vector<xmlNodePtr> NodesOf(const xmlXPathObject& result)
{
    std::vector<xmlNodePtr> nodes;
    const xmlNodeSet* const pSet = result.nodesetval;
    for (int i = 0; pSet != nullptr && i < pSet->nodeNr; ++i)
    {
        if (pSet->nodeTab[i]->type != XML_NAMESPACE_DECL)
            nodes.push_back(pSet->nodeTab[i]);
    }
    return nodes;
}

} // namespace

std::vector<xmlNodePtr> Select(const CTree& tree, xmlNodePtr pNode, const std::wstring& wzExpression)
{
    if (!tree.m_spSettings->m_bXPath)
        throw CFailure{ E_FAIL, L"Queries in XSLPattern are not provided; set SelectionLanguage to XPath." };
    CLibraryReports reports;
    const std::unique_ptr<xmlXPathContext, CFreeContext> spContext(xmlXPathNewContext(tree.m_spDoc.get()));
    xmlXPathContext* const pContext = reports.Required(spContext.get());
    pContext->node = pNode;
    pContext->userData = &reports;
    pContext->error = &OnReport;
    for (const auto& [szPrefix, szUri] : tree.m_spSettings->m_namespaces)
    {
        if (xmlXPathRegisterNs(pContext, AsXml(szPrefix.c_str()), AsXml(szUri.c_str())) != 0)
            throw std::bad_alloc();
    }
    const std::string szExpression = Utf8FromWide(wzExpression);
    const std::unique_ptr<xmlXPathObject, CFreeResult> spResult(xmlXPathEval(AsXml(szExpression.c_str()), pContext));
    reports.Check();
    if (!spResult)
        throw CFailure{ E_FAIL, L"The query is not valid: " + wzExpression };
    if (spResult->type != XPATH_NODESET)
        throw CFailure{ E_FAIL, L"The query does not give nodes." };
    return NodesOf(*spResult);
}

std::vector<std::pair<std::string, std::string>> ParseDeclarations(const std::wstring& wzDeclarations)
{
    CParseFault fault;
    const CTreePtr spTree = Parse(L"<x " + wzDeclarations + L"/>", std::make_shared<CSettings>(0), fault);
    const xmlNode* const pElement = spTree ? xmlDocGetRootElement(spTree->m_spDoc.get()) : nullptr;
    if (pElement == nullptr || pElement->children != nullptr)
        throw CFailure{ E_FAIL, L"Not a list of namespace declarations." };
    for (const xmlAttr* pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
    {
        if (!IsDeclaration(reinterpret_cast<const xmlNode*>(pAttr)))
            throw CFailure{ E_FAIL, L"Not a list of namespace declarations." };
    }
    std::vector<std::pair<std::string, std::string>> result;
    for (const xmlNs* pNs = pElement->nsDef; pNs != nullptr; pNs = pNs->next)
    {
        if (pNs->prefix != nullptr) // queries know no default namespace
            result.emplace_back(AsText(pNs->prefix), AsText(pNs->href));
    }
    return result;
}

} // namespace OvPlatform::Dom
