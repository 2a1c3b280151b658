#include "Platform/Dom/Tree.h"

#include <cstring>
#include <libxml/parser.h>
#include <mutex>
#include <new>

namespace OvPlatform::Dom
{

namespace
{

void InitialiseLibrary()
{
    static std::once_flag s_once;
    std::call_once(s_once, [] { xmlInitParser(); });
}

/// libxml2 passes a report as a changeable one up to 2.11.
void OnReport(void* pSelf, xmlErrorPtr pError)
{
    static_cast<CLibraryReports*>(pSelf)->Note(pError);
}

void OnPrint(void*, const char*, ...) {}

bool BeginsWith(const xmlChar* psz, const char* szBeginning)
{
    return std::strncmp(AsText(psz), szBeginning, std::strlen(szBeginning)) == 0;
}

} // namespace

CLibraryReports::CLibraryReports()
    : m_pPreviousFunction((InitialiseLibrary(), xmlStructuredError)),
      m_pPreviousContext(xmlStructuredErrorContext),
      m_pPreviousPrinter(xmlGenericError),
      m_pPreviousPrinterContext(xmlGenericErrorContext)
{
    xmlSetStructuredErrorFunc(this, &OnReport);
    xmlSetGenericErrorFunc(nullptr, &OnPrint);
}

CLibraryReports::~CLibraryReports()
{
    xmlSetStructuredErrorFunc(m_pPreviousContext, m_pPreviousFunction);
    xmlSetGenericErrorFunc(m_pPreviousPrinterContext, m_pPreviousPrinter);
    xmlResetLastError();
}

void CLibraryReports::Check() const
{
    if (m_bNoMemory)
        throw std::bad_alloc();
}

CTree::CTree(CDocOwner spDoc, std::shared_ptr<CSettings> spSettings, bool bFragment)
    : m_spDoc(std::move(spDoc)),
      m_spSettings(std::move(spSettings)),
      m_bFragment(bFragment),
      m_bPreserved(m_spSettings->m_bPreserveWhiteSpace)
{
}

CTree::~CTree()
{
    for (const xmlAttrPtr pAttr : m_removed)
        xmlFreeProp(pAttr);
}

CTreePtr NewTree(const std::shared_ptr<CSettings>& spSettings, bool bFragment)
{
    const CLibraryReports reports;
    CDocOwner spDoc(xmlNewDoc(AsXml("1.0")));
    reports.Required(spDoc.get());
    return std::make_shared<CTree>(std::move(spDoc), spSettings, bFragment);
}

bool IsDeclaration(const xmlNode* pNode)
{
    return pNode->type == XML_ATTRIBUTE_NODE && pNode->ns == nullptr &&
           (std::strcmp(AsText(pNode->name), "xmlns") == 0 || BeginsWith(pNode->name, "xmlns:"));
}

std::string QualifiedName(const xmlNode* pNode)
{
    if (pNode->ns == nullptr || pNode->ns->prefix == nullptr)
        return AsText(pNode->name);
    return std::string(AsText(pNode->ns->prefix)) + ':' + AsText(pNode->name);
}

xmlAttrPtr FindAttribute(const xmlNode* pElement, const std::string& szQualifiedName)
{
    for (xmlAttrPtr pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
    {
        if (QualifiedName(AsNode(pAttr)) == szQualifiedName)
            return pAttr;
    }
    return nullptr;
}

void RemoveAttribute(CTree& tree, xmlAttrPtr pAttr)
{
    tree.m_removed.push_back(pAttr);
    xmlUnlinkNode(AsNode(pAttr));
}

std::string Value(const xmlNode* pNode)
{
    if (pNode->type != XML_ATTRIBUTE_NODE)
        return AsText(pNode->content);
    std::string szValue;
    for (const xmlNode* pText = pNode->children; pText != nullptr; pText = pText->next)
        szValue += AsText(pText->content);
    return szValue;
}

bool HasMark(const xmlNode* pNode, uintptr_t nMark)
{
    return (reinterpret_cast<uintptr_t>(pNode->psvi) & nMark) != 0;
}

void SetMark(xmlNodePtr pNode, uintptr_t nMark)
{
    pNode->psvi = reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(pNode->psvi) | nMark);
}

bool KeepsWhiteSpace(const xmlNode* pElement, bool bParentKeeps)
{
    for (const xmlAttr* pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
        if (pAttr->ns != nullptr && std::strcmp(AsText(pAttr->name), "space") == 0 &&
            std::strcmp(AsText(pAttr->ns->prefix), "xml") == 0)
            return Value(reinterpret_cast<const xmlNode*>(pAttr)) == "preserve";
    return bParentKeeps;
}

} // namespace OvPlatform::Dom
