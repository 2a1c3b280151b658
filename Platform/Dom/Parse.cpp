#include "Platform/Dom/Feed.h"
#include "Platform/Dom/ParseError.h"
#include "Platform/Dom/Tree.h"
#include "Platform/Text/Text.h"

#include <algorithm>
#include <cstring>
#include <libxml/parser.h>
#include <libxml/SAX2.h>
#include <new>

namespace OvPlatform::Dom
{

namespace
{

// No document type declaration gets past OnDoctype, so that there are no entities but the five that XML brings. The
// names are those of the fourth edition, as the platform's.
constexpr int s_nOptions = XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_OLD10;

struct CFreeParser
{
    void operator()(xmlParserCtxtPtr pContext) const { xmlFreeParserCtxt(pContext); }
};

/// One run of the library's parser. The first fault counts; those after it may follow from it, and are not looked at:
/// finding the place of each in the text would cost time that goes with the square of the size.
class CParser
{
public:
    explicit CParser(std::wstring_view text) : m_feed(text) {}

    /// @return what the library made of the text, also when there is a fault. Throws std::bad_alloc.
    CDocOwner Run();

    const std::optional<CRawFault>& Fault() const { return m_fault; }

private:
    static CParser& Of(xmlParserCtxtPtr pContext) { return *static_cast<CParser*>(pContext->_private); }

    // The library's calls, through which nothing may be thrown.
    static int OnRead(void* pSelf, char* pBuffer, int nRoom);
    static int OnClose(void*) { return 0; }
    static void OnError(void* pContext, xmlErrorPtr pError);
    static void OnDoctype(void* pContext, const xmlChar* pName, const xmlChar* pExternal, const xmlChar* pSystem);
    static void OnStartElement(void* pContext, const xmlChar* pName, const xmlChar* pPrefix, const xmlChar* pUri,
                               int nNamespaces, const xmlChar** ppNamespaces, int nAttributes, int nDefaulted,
                               const xmlChar** ppAttributes);

    void Refuse(CRawFault fault);
    void RefuseHere(int nCode, xmlParserCtxtPtr pContext) { Refuse({ nCode, {}, {}, {}, Position(pContext) }); }

    size_t Position(xmlParserCtxtPtr pContext) const
    {
        return m_feed.PositionOfByte(static_cast<unsigned long>(std::max(0L, xmlByteConsumed(pContext))));
    }

    CLibraryReports m_reports;
    CFeed m_feed;
    std::optional<CRawFault> m_fault;
};

bool IsFault(const xmlError& error)
{
    // A namespace's name need not be a URI for the platform.
    return error.level >= XML_ERR_ERROR && error.code != XML_WAR_NS_URI;
}

CDocOwner CParser::Run()
{
    const std::unique_ptr<xmlParserCtxt, CFreeParser> spContext(xmlNewParserCtxt());
    xmlParserCtxt* const pContext = m_reports.Required(spContext.get());
    pContext->_private = this;
    pContext->sax->serror = &OnError;
    pContext->sax->internalSubset = &OnDoctype;
    pContext->sax->startElementNs = &OnStartElement;
    CDocOwner spDoc(xmlCtxtReadIO(pContext, &OnRead, &OnClose, this, nullptr, nullptr, s_nOptions));
    if (!m_fault)
        m_reports.Check();
    return spDoc;
}

void CParser::Refuse(CRawFault fault)
{
    if (!m_fault && !m_reports.HasNoMemory())
        m_fault = std::move(fault);
    m_feed.Stop();
}

int CParser::OnRead(void* pSelf, char* pBuffer, int nRoom)
{
    CParser& self = *static_cast<CParser*>(pSelf);
    const int nRead = self.m_feed.Read(pBuffer, nRoom);
    if (self.m_feed.HasTooManyAttributes())
        self.Refuse({ s_nTooManyAttributes, {}, {}, {}, self.m_feed.Position() });
    return nRead;
}

void CParser::OnError(void* pContext, xmlErrorPtr pError)
{
    const auto pParser = static_cast<xmlParserCtxtPtr>(pContext);
    CParser& self = Of(pParser);
    self.m_reports.Contain([&] {
        if (pError->code == XML_ERR_NO_MEMORY && !IsTextTooLong(*pError))
            self.m_reports.Note(pError);
        else if (!self.m_fault && IsFault(*pError))
            self.Refuse(NewRawFault(*pError, self.Position(pParser)));
    });
}

void CParser::OnDoctype(void* pContext, const xmlChar*, const xmlChar*, const xmlChar*)
{
    const auto pParser = static_cast<xmlParserCtxtPtr>(pContext);
    Of(pParser).RefuseHere(s_nDoctype, pParser);
    xmlStopParser(pParser);
}

void InsertBehind(xmlNodePtr pElement, xmlAttrPtr pPrevious, xmlAttrPtr pAttr)
{
    pAttr->parent = pElement;
    pAttr->prev = pPrevious;
    xmlAttrPtr& pLink = pPrevious == nullptr ? pElement->properties : pPrevious->next;
    pAttr->next = pLink;
    if (pLink != nullptr)
        pLink->prev = pAttr;
    pLink = pAttr;
}

/// Puts the declarations of an element in front of its attributes, as attributes.
void AddDeclarations(xmlNodePtr pElement)
{
    xmlAttrPtr pPrevious = nullptr;
    for (const xmlNs* pNs = pElement->nsDef; pNs != nullptr; pNs = pNs->next)
    {
        const std::string szName = pNs->prefix == nullptr ? "xmlns" : std::string("xmlns:") + AsText(pNs->prefix);
        const xmlAttrPtr pAttr = xmlNewNsProp(nullptr, nullptr, AsXml(szName.c_str()), pNs->href);
        if (pAttr == nullptr)
            return; // for lack of memory, which was reported
        InsertBehind(pElement, pPrevious, pAttr);
        pAttr->doc = pElement->doc;
        if (pAttr->children != nullptr)
            pAttr->children->doc = pElement->doc;
        pPrevious = pAttr;
    }
}

void CParser::OnStartElement(void* pContext, const xmlChar* pName, const xmlChar* pPrefix, const xmlChar* pUri,
                             int nNamespaces, const xmlChar** ppNamespaces, int nAttributes, int nDefaulted,
                             const xmlChar** ppAttributes)
{
    const auto pParser = static_cast<xmlParserCtxtPtr>(pContext);
    CParser& self = Of(pParser);
    if (static_cast<size_t>(pParser->nsNr) / 2 > s_nMaxNamespaces) // pairs of prefix and name
        self.RefuseHere(s_nTooManyNamespaces, pParser);
    if (self.m_fault)
        return xmlStopParser(pParser);
    const xmlNode* const pParent = pParser->node;
    xmlSAX2StartElementNs(pContext, pName, pPrefix, pUri, nNamespaces, ppNamespaces, nAttributes, nDefaulted,
                          ppAttributes);
    if (pParser->node != pParent)
        self.m_reports.Contain([&] { AddDeclarations(pParser->node); });
}

bool IsBlank(const xmlChar* psz)
{
    return AsText(psz)[std::strspn(AsText(psz), " \t\r\n")] == '\0';
}

void DropWhiteSpace(xmlNodePtr pElement, bool bParentKeeps)
{
    const bool bKeep = KeepsWhiteSpace(pElement, bParentKeeps);
    xmlNodePtr pNext = nullptr;
    for (xmlNodePtr pChild = pElement->children; pChild != nullptr; pChild = pNext)
    {
        pNext = pChild->next;
        if (pChild->type == XML_ELEMENT_NODE)
            DropWhiteSpace(pChild, bKeep);
        if (bKeep || pChild->type != XML_TEXT_NODE || !IsBlank(pChild->content))
            continue;
        if (pChild->prev != nullptr)
            SetMark(pChild->prev, s_nDroppedBehind);
        else
            SetMark(pElement, s_nDroppedInside);
        xmlUnlinkNode(pChild);
        xmlFreeNode(pChild);
    }
}

/// The XML declaration as a processing instruction in front of everything.
void AddXmlDeclaration(const CTree& tree, std::wstring_view text)
{
    std::wstring wzDeclaration;
    for (const auto& [wzName, wzValue] : XmlDeclaration(text))
        wzDeclaration += (wzDeclaration.empty() ? L"" : L" ") + wzName + L"=\"" + wzValue + L"\"";
    if (wzDeclaration.empty())
        return;
    const CLibraryReports reports;
    const std::string szDeclaration = Utf8FromWide(wzDeclaration);
    const xmlNodePtr pNode = xmlNewDocPI(tree.m_spDoc.get(), AsXml("xml"), AsXml(szDeclaration.c_str()));
    if (pNode != nullptr)
        xmlAddPrevSibling(tree.m_spDoc->children, pNode);
    reports.Required(pNode);
}

} // namespace

NamedTexts XmlDeclaration(std::wstring_view text)
{
    constexpr std::wstring_view beginning = L"<?xml";
    constexpr wchar_t byteOrderMark = L'\xFEFF';
    if (!text.empty() && text.front() == byteOrderMark)
        text.remove_prefix(1);
    NamedTexts result;
    if (text.substr(0, beginning.size()) != beginning || text.size() == beginning.size() ||
        s_blanks.find(text[beginning.size()]) == std::wstring_view::npos)
        return result;
    text = text.substr(beginning.size(), text.find(L"?>") - beginning.size());
    for (;;)
    {
        const size_t nName = text.find_first_not_of(s_blanks);
        const size_t nOpen = text.find_first_of(L"\"'");
        if (nName >= nOpen || nOpen == std::wstring_view::npos)
            return result;
        const size_t nClose = std::min(text.find(text[nOpen], nOpen + 1), text.size());
        const std::wstring_view name = text.substr(nName, text.find_first_of(L" \t\r\n=", nName) - nName);
        result.emplace_back(name, text.substr(nOpen + 1, nClose - nOpen - 1));
        text.remove_prefix(std::min(nClose + 1, text.size()));
    }
}

CTreePtr Parse(std::wstring_view text, const std::shared_ptr<CSettings>& spSettings, CParseFault& fault)
{
    CParser parser(text);
    CDocOwner spDoc = parser.Run();
    if (!parser.Fault() && spDoc)
    {
        const CTreePtr spTree = std::make_shared<CTree>(std::move(spDoc), spSettings, false);
        AddXmlDeclaration(*spTree, text);
        if (!spTree->m_bPreserved)
            DropWhiteSpace(xmlDocGetRootElement(spTree->m_spDoc.get()), false);
        return spTree;
    }
    fault = Describe(parser.Fault().value_or(CRawFault{}), text);
    return nullptr;
}

} // namespace OvPlatform::Dom
