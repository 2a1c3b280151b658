#include "Platform/Dom/Tree.h"
#include "Platform/Text/Text.h"
#include "Platform/Text/Utf8.h"

#include <algorithm>
#include <cstring>

namespace OvPlatform::Dom
{

namespace
{

/// Puts the parts of a text together. White space at both ends goes, but for what must stay as it is.
class CTextBuilder
{
public:
    void AddText(const xmlChar* pszText, bool bKeep)
    {
        std::wstring wzText = WideFromUtf8(AsText(pszText));
        if (!bKeep && !m_bBegun)
            wzText.erase(0, wzText.find_first_not_of(s_blanks));
        if (wzText.empty())
            return;
        if (m_bDropped && m_bBegun)
            m_wzResult += L' ';
        m_bDropped = false;
        m_bBegun = true;
        m_wzResult += wzText;
        if (bKeep)
            m_nKept = m_wzResult.size();
    }

    /// White space that was dropped, any amount of it, counts as one blank between two texts.
    void AddDropped() { m_bDropped = true; }

    std::wstring Take()
    {
        const size_t nEnd = m_wzResult.find_last_not_of(s_blanks) + 1; // 0 when there is nothing else
        m_wzResult.erase(std::max(nEnd, m_nKept));
        return std::move(m_wzResult);
    }

private:
    std::wstring m_wzResult;
    size_t m_nKept = 0; ///< what stands before this is not trimmed
    bool m_bDropped = false;
    bool m_bBegun = false;
};

class CTextCollector
{
public:
    explicit CTextCollector(bool bKeepAll) : m_bKeepAll(bKeepAll) {}

    void Add(const xmlNode* pNode, bool bKeep)
    {
        if (pNode->type == XML_TEXT_NODE || pNode->type == XML_CDATA_SECTION_NODE)
            m_builder.AddText(pNode->content, bKeep || m_bKeepAll || pNode->type == XML_CDATA_SECTION_NODE);
        if (pNode->type == XML_ELEMENT_NODE)
            AddElement(pNode, KeepsWhiteSpace(pNode, bKeep));
    }

    std::wstring Take() { return m_builder.Take(); }

private:
    void AddElement(const xmlNode* pElement, bool bKeep)
    {
        if (HasMark(pElement, s_nDroppedInside))
            m_builder.AddDropped();
        for (const xmlNode* pChild = pElement->children; pChild != nullptr; pChild = pChild->next)
        {
            Add(pChild, bKeep);
            if (HasMark(pChild, s_nDroppedBehind))
                m_builder.AddDropped();
        }
    }

    const bool m_bKeepAll;
    CTextBuilder m_builder;
};

/// What xml:space says where the node stands.
bool KeepsAround(const xmlNode* pNode)
{
    const xmlNode* const pParent = pNode->parent;
    if (pParent == nullptr || pParent->type != XML_ELEMENT_NODE)
        return false;
    return KeepsWhiteSpace(pParent, KeepsAround(pParent));
}

enum class Place
{
    Content,
    Attribute
};

class CXmlWriter
{
public:
    void Write(const xmlNode* pNode, size_t nDepth)
    {
        switch (pNode->type)
        {
        case XML_DOCUMENT_NODE:
            return WriteDocument(pNode);
        case XML_ELEMENT_NODE:
            return WriteElement(pNode, nDepth);
        case XML_ATTRIBUTE_NODE:
            return WriteAttribute(QualifiedName(pNode), Value(pNode));
        case XML_CDATA_SECTION_NODE:
            return WriteRaw({ "<![CDATA[", AsText(pNode->content), "]]>" });
        case XML_COMMENT_NODE:
            return WriteRaw({ "<!--", AsText(pNode->content), "-->" });
        case XML_PI_NODE:
            return WriteInstruction(pNode);
        default:
            return WriteEscaped(AsText(pNode->content), Place::Content);
        }
    }

    std::wstring Take() { return std::move(m_wzResult); }

private:
    void WriteDocument(const xmlNode* pDocument)
    {
        for (const xmlNode* pChild = pDocument->children; pChild != nullptr; pChild = pChild->next)
        {
            Write(pChild, 0);
            m_wzResult += L"\r\n";
        }
    }

    void WriteElement(const xmlNode* pElement, size_t nDepth)
    {
        const size_t nOuterDeclarations = m_declarations.size();
        const std::string szName = QualifiedName(pElement);
        WriteRaw({ "<", szName });
        EnterDeclarations(pElement);
        Declare(pElement->ns);
        for (const xmlAttr* pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
            Declare(pAttr->ns);
        for (const xmlAttr* pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
        {
            m_wzResult += L' ';
            Write(reinterpret_cast<const xmlNode*>(pAttr), nDepth);
        }
        if (pElement->children == nullptr)
            WriteRaw({ "/>" });
        else
        {
            WriteRaw({ ">" });
            WriteChildren(pElement, nDepth + 1);
            WriteRaw({ "</", szName, ">" });
        }
        m_declarations.resize(nOuterDeclarations);
    }

    /// White space that was dropped appears as a line break with the depth in tabs.
    void WriteChildren(const xmlNode* pElement, size_t nDepth)
    {
        if (HasMark(pElement, s_nDroppedInside))
            BreakLine(nDepth);
        for (const xmlNode* pChild = pElement->children; pChild != nullptr; pChild = pChild->next)
        {
            Write(pChild, nDepth);
            if (HasMark(pChild, s_nDroppedBehind))
                BreakLine(pChild->next == nullptr ? nDepth - 1 : nDepth);
        }
    }

    void BreakLine(size_t nDepth) { m_wzResult.append(L"\r\n").append(nDepth, L'\t'); }

    void EnterDeclarations(const xmlNode* pElement)
    {
        constexpr size_t nPrefix = 6; // behind "xmlns:"
        for (const xmlAttr* pAttr = pElement->properties; pAttr != nullptr; pAttr = pAttr->next)
        {
            const auto pNode = reinterpret_cast<const xmlNode*>(pAttr);
            if (!IsDeclaration(pNode))
                continue;
            const std::string szName = AsText(pNode->name);
            m_declarations.emplace_back(szName.size() < nPrefix ? std::string() : szName.substr(nPrefix), Value(pNode));
        }
    }

    /// Writes the declaration of a namespace that is used here and declared only where nothing has been written.
    void Declare(const xmlNs* pNs)
    {
        const std::string szPrefix = pNs == nullptr ? "xml" : AsText(pNs->prefix);
        if (szPrefix == "xml")
            return;
        const std::string szUri = AsText(pNs->href);
        const auto pDeclared = std::find_if(m_declarations.rbegin(), m_declarations.rend(),
                                            [&](const auto& declared) { return declared.first == szPrefix; });
        if (pDeclared != m_declarations.rend() && pDeclared->second == szUri)
            return;
        m_declarations.emplace_back(szPrefix, szUri);
        m_wzResult += L' ';
        WriteAttribute(szPrefix.empty() ? "xmlns" : "xmlns:" + szPrefix, szUri);
    }

    void WriteAttribute(const std::string& szName, const std::string& szValue)
    {
        WriteRaw({ szName, "=\"" });
        WriteEscaped(szValue, Place::Attribute);
        WriteRaw({ "\"" });
    }

    void WriteInstruction(const xmlNode* pNode)
    {
        const std::string szTarget = AsText(pNode->name);
        std::string szData = AsText(pNode->content);
        if (szTarget == "xml")
            szData = WithoutEncoding(szData);
        WriteRaw({ "<?", szTarget, szData.empty() ? "" : " ", szData, "?>" });
    }

    /// The text that is written is UTF-16, whatever the document was.
    static std::string WithoutEncoding(std::string szDeclaration)
    {
        constexpr std::string_view name = " encoding=\"";
        const size_t nBegin = szDeclaration.find(name);
        if (nBegin != std::string::npos)
            szDeclaration.erase(nBegin, szDeclaration.find('"', nBegin + name.size()) + 1 - nBegin);
        return szDeclaration;
    }

    void WriteEscaped(std::string_view text, Place place)
    {
        DecodeUtf8(text, [&](wchar_t unit) { WriteUnit(unit, place); });
    }

    void WriteUnit(wchar_t unit, Place place)
    {
        const bool bAttribute = place == Place::Attribute;
        if (unit == L'&')
            m_wzResult += L"&amp;";
        else if (unit == L'<')
            m_wzResult += L"&lt;";
        else if (unit == L'>')
            m_wzResult += L"&gt;";
        else if (unit == L'"' && bAttribute)
            m_wzResult += L"&quot;";
        else if (unit == L'\r' || (bAttribute && (unit == L'\n' || unit == L'\t')))
            m_wzResult += L"&#" + std::to_wstring(static_cast<int>(unit)) + L";";
        else
            WritePlain(unit);
    }

    void WriteRaw(std::initializer_list<std::string_view> parts)
    {
        for (const std::string_view part : parts)
            DecodeUtf8(part, [&](wchar_t unit) { WritePlain(unit); });
    }

    void WritePlain(wchar_t unit)
    {
        if (unit == L'\n')
            m_wzResult += L'\r';
        m_wzResult += unit;
    }

    std::wstring m_wzResult;
    std::vector<std::pair<std::string, std::string>> m_declarations; ///< prefixes and names in scope, innermost last
};

} // namespace

std::wstring Text(const CTree& tree, const xmlNode* pNode)
{
    if (pNode->type == XML_ATTRIBUTE_NODE || pNode->type == XML_COMMENT_NODE || pNode->type == XML_PI_NODE)
        return WideFromUtf8(Value(pNode));
    CTextCollector collector(tree.m_bPreserved);
    if (pNode->type == XML_DOCUMENT_NODE)
    {
        for (const xmlNode* pChild = pNode->children; pChild != nullptr; pChild = pChild->next)
            collector.Add(pChild, false);
    }
    else
        collector.Add(pNode, KeepsAround(pNode));
    return collector.Take();
}

std::wstring Xml(const xmlNode* pNode)
{
    CXmlWriter writer;
    writer.Write(pNode, 0);
    return writer.Take();
}

} // namespace OvPlatform::Dom
