// Any UTF-16 units escaped: as the plain way does it, and read back by an XML parser as they were.
#include "Fuzz.h"
#include "ovCore/OvXmlEscape.h"
#include "PlainEscape.h"
#include "Platform/Text/Utf8.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>

namespace
{

/// Whether XML can carry the unit, other than half of a pair.
bool IsOfXml(wchar_t c)
{
    return c >= 0x20 ? c <= 0xFFFD : c == L'\t' || c == L'\n' || c == L'\r';
}

using CXmlText = std::unique_ptr<xmlChar, void (*)(void*)>;

void DemandReadBack(const std::string& utf8, const std::wstring& strEscaped)
{
    const std::string escaped(strEscaped.begin(), strEscaped.end());
    const std::string document = "<a b=\"" + escaped + "\">" + escaped + "</a>";
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> pDocument(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, XML_PARSE_HUGE),
        xmlFreeDoc);
    Demand(pDocument != nullptr, "what is escaped can be parsed");
    xmlNode* const pRoot = xmlDocGetRootElement(pDocument.get());
    const CXmlText pValue(xmlGetProp(pRoot, reinterpret_cast<const xmlChar*>("b")), xmlFree);
    const CXmlText pContent(xmlNodeGetContent(pRoot), xmlFree);
    const auto* const pUtf8 = reinterpret_cast<const xmlChar*>(utf8.c_str());
    Demand(xmlStrEqual(pValue.get(), pUtf8) != 0, "an attribute's value reads back");
    Demand(xmlStrEqual(pContent.get(), pUtf8) != 0, "an element's content reads back");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    const std::wstring strText = CFuzzInput(pData, nSize).Units();
    const std::wstring strEscaped = COvXmlEscape::Escape(strText);
    Demand(strEscaped == PlainEscape(strText), "it is escaped as in the plain way");

    std::wstring strContent(EscapeXML(strText.data(), strText.size(), nullptr, 0, 0), L'\0');
    EscapeXML(strText.data(), strText.size(), strContent.data(), strContent.size(), 0);
    Demand(strContent == PlainEscape(strText, false), "quotes stay outside of attributes");

    std::string utf8;
    const bool bPaired = OvPlatform::EncodeUtf8(strText, [&](char c) { utf8 += c; });
    if (bPaired && std::all_of(strText.begin(), strText.end(), IsOfXml))
        DemandReadBack(utf8, strEscaped);
    return 0;
}
