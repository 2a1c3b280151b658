// What the files of the DOM share.
#pragma once

#include "Platform/Automation.h"
#include "Platform/Dom.h"
#include "Platform/Kernel/Counters.h"

#include <atomic>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace OvPlatform::Dom
{

/// A failure on its way to the border, where it becomes a result code and an error object.
struct CFailure
{
    HRESULT m_hr;
    std::wstring m_wzDescription;
};

/// While it lives, what libxml2 reports on this thread is kept here, and nothing goes to standard error. What was set
/// before is back afterwards. The library says "no memory" only so; its results read the same as "absent".
class CLibraryReports
{
public:
    CLibraryReports();
    ~CLibraryReports();
    CLibraryReports(const CLibraryReports&) = delete;
    CLibraryReports& operator=(const CLibraryReports&) = delete;

    bool HasNoMemory() const { return m_bNoMemory; }

    /// Throws std::bad_alloc when the library has run out of memory since this began.
    void Check() const;

    /// A result of the library that must not be null. Throws std::bad_alloc when it is, or as Check does.
    template <class T>
    T* Required(T* pResult) const
    {
        Check();
        if (pResult == nullptr)
            throw std::bad_alloc();
        return pResult;
    }

    void Note(const xmlError* pError) { m_bNoMemory = m_bNoMemory || pError->code == XML_ERR_NO_MEMORY; }

    /// Runs work inside a call that the library makes, through which nothing may be thrown.
    template <class Work>
    void Contain(Work&& work) noexcept
    {
        try
        {
            work();
        }
        catch (const std::bad_alloc&)
        {
            m_bNoMemory = true;
        }
    }

private:
    bool m_bNoMemory = false;
    const xmlStructuredErrorFunc m_pPreviousFunction;
    void* const m_pPreviousContext;
    const xmlGenericErrorFunc m_pPreviousPrinter;
    void* const m_pPreviousPrinterContext;
};

/// What a document is set to; its clones, and the trees of its earlier loads, share it.
struct CSettings
{
    unsigned m_nGeneration;
    bool m_bPreserveWhiteSpace = false;
    bool m_bXPath;
    std::vector<std::pair<std::string, std::string>> m_namespaces; ///< prefixes and names for queries

    explicit CSettings(unsigned nGeneration) : m_nGeneration(nGeneration), m_bXPath(nGeneration != 3) {}
};

struct CFreeDoc
{
    void operator()(xmlDocPtr pDoc) const { xmlFreeDoc(pDoc); }
};
using CDocOwner = std::unique_ptr<xmlDoc, CFreeDoc>;

/// Owns a libxml2 tree. Each node's _private points to the IXMLDOMNode that stands for it now, if any. Namespace
/// declarations are in it twice: as libxml2 keeps them, and as attributes without a namespace that are named "xmlns" or
/// "xmlns:prefix".
struct CTree
{
    CTree(CDocOwner spDoc, std::shared_ptr<CSettings> spSettings, bool bFragment);
    ~CTree();
    CTree(const CTree&) = delete;
    CTree& operator=(const CTree&) = delete;

    xmlNodePtr Document() const { return reinterpret_cast<xmlNodePtr>(m_spDoc.get()); }

    const CDocOwner m_spDoc;
    const std::shared_ptr<CSettings> m_spSettings;
    const bool m_bFragment;            ///< the document only holds a clone of one of its nodes
    bool m_bPreserved;                 ///< white space was preserved when this was loaded
    std::vector<xmlAttrPtr> m_removed; ///< attributes that were taken out and that someone may still hold
};
using CTreePtr = std::shared_ptr<CTree>;

/// A parse error; m_hr is S_OK when there is none.
struct CParseFault
{
    HRESULT m_hr = S_OK;
    std::wstring m_wzReason;
    std::wstring m_wzSource;
    std::wstring m_wzUrl;
    LONG m_nLine = 0;
    LONG m_nLinePos = 0;
    LONG m_nFilePos = 0;
};

// Tree.cpp

inline xmlNodePtr AsNode(xmlAttrPtr pAttr)
{
    return reinterpret_cast<xmlNodePtr>(pAttr);
}
inline const xmlChar* AsXml(const char* psz)
{
    return reinterpret_cast<const xmlChar*>(psz);
}
inline const char* AsText(const xmlChar* psz)
{
    return psz == nullptr ? "" : reinterpret_cast<const char*>(psz);
}

/// An empty document.
CTreePtr NewTree(const std::shared_ptr<CSettings>& spSettings, bool bFragment = false);

bool IsDeclaration(const xmlNode* pNode); ///< a namespace declaration
std::string QualifiedName(const xmlNode* pNode);
xmlAttrPtr FindAttribute(const xmlNode* pElement, const std::string& szQualifiedName);
void RemoveAttribute(CTree& tree, xmlAttrPtr pAttr);
std::string Value(const xmlNode* pNode); ///< of every kind but elements and documents

// White space that was dropped, as marks on the elements, texts, comments and so on that stay.
constexpr uintptr_t s_nDroppedBehind = 1; ///< between this node and the next one or the end of the parent
constexpr uintptr_t s_nDroppedInside = 2; ///< between the start tag and the first child
bool HasMark(const xmlNode* pNode, uintptr_t nMark);
void SetMark(xmlNodePtr pNode, uintptr_t nMark);

/// xml:space where it is stated on this element, else as the parent has it.
bool KeepsWhiteSpace(const xmlNode* pElement, bool bParentKeeps);

// Clone.cpp

/// A copy of the node, in a tree of its own.
struct CClone
{
    CTreePtr m_spTree;
    xmlNodePtr m_pNode;
};
CClone Clone(const CTree& source, const xmlNode* pNode, bool bDeep);

// Parse.cpp

using NamedTexts = std::vector<std::pair<std::wstring, std::wstring>>;
constexpr std::wstring_view s_blanks = L" \t\r\n";

/// The names and values of an XML declaration in a text that is well-formed; none when it has no declaration.
NamedTexts XmlDeclaration(std::wstring_view text);

/// @return null when the text does not parse; then fault tells why. Throws std::bad_alloc.
CTreePtr Parse(std::wstring_view text, const std::shared_ptr<CSettings>& spSettings, CParseFault& fault);

// File.cpp

/// The text of a file; nothing, with the fault, when it cannot be read or decoded.
std::optional<std::wstring> ReadTextFile(std::wstring_view path, CParseFault& fault);

// Serialize.cpp

std::wstring Text(const CTree& tree, const xmlNode* pNode);
std::wstring Xml(const xmlNode* pNode);

// Query.cpp

std::vector<xmlNodePtr> Select(const CTree& tree, xmlNodePtr pNode, const std::wstring& wzExpression);
std::vector<std::pair<std::string, std::string>> ParseDeclarations(const std::wstring& wzDeclarations);

// Node.cpp, Lists.cpp, Document.cpp: objects, each with one reference

IXMLDOMNode* Wrap(const CTreePtr& spTree, xmlNodePtr pNode);
IXMLDOMNode* NewDocumentObject(const CTreePtr& spTree);
IXMLDOMNodeList* NewNodeList(const CTreePtr& spTree, std::vector<xmlNodePtr> nodes);
IXMLDOMNamedNodeMap* NewAttributeMap(const CTreePtr& spTree, xmlNodePtr pElement);
IXMLDOMParseError* NewParseError(const CParseFault& fault);

// The border

/// Leaves an error object for the failure, as far as memory allows, and gives its code.
HRESULT Report(const CFailure& failure) noexcept;

/// Runs a call's work: failures and lack of memory become result codes.
template <class Work>
HRESULT Answer(Work&& work)
{
    try
    {
        return work();
    }
    catch (const CFailure& failure)
    {
        return Report(failure);
    }
    catch (const std::bad_alloc&)
    {
        return Report({ E_OUTOFMEMORY, {} });
    }
}

} // namespace OvPlatform::Dom
