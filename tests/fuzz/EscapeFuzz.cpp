// Any UTF-16 units escaped: as the plain way does it, and read back by an XML parser as they were.
#include "Fuzz.h"
#include "ovCore/OvXmlEscape.h"
#include "PlainEscape.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace
{

/// The characters of a text that XML can carry; false when there is another one.
bool ToCharacters(const std::wstring& strText, std::u32string& characters)
{
    for (size_t i = 0; i < strText.size(); ++i)
    {
        auto c = static_cast<char32_t>(strText[i]);
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < strText.size() && strText[i + 1] >= 0xDC00 &&
            strText[i + 1] <= 0xDFFF)
            c = (c - 0xD800) * 0x400 + (static_cast<char32_t>(strText[++i]) - 0xDC00) + 0x10000;
        else if ((c >= 0xD800 && c <= 0xDFFF) || c > 0xFFFD)
            return false;
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            return false;
        characters += c;
    }
    return true;
}

std::u32string FromUtf8(const xmlChar* pText)
{
    std::u32string characters;
    for (int nLength = 0; pText != nullptr && *pText != 0; pText += nLength)
    {
        nLength = 4;
        characters += static_cast<char32_t>(xmlGetUTF8Char(pText, &nLength));
        Demand(nLength > 0, "the parser gives UTF-8");
    }
    return characters;
}

using CXmlText = std::unique_ptr<xmlChar, void (*)(void*)>;

void DemandReadBack(const std::u32string& characters, const std::wstring& strEscaped)
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
    Demand(FromUtf8(pValue.get()) == characters, "an attribute's value reads back");
    Demand(FromUtf8(pContent.get()) == characters, "an element's content reads back");
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

    std::u32string characters;
    if (ToCharacters(strText, characters))
        DemandReadBack(characters, strEscaped);
    return 0;
}
