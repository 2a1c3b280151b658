#include "ovCore/OvXmlDocument.h"

#include "ComApartment.h"
#include "TestFile.h"
#include "XmlExpectations.h"
#include "XmlTesting.h"

#include <fstream>
#include <gtest/gtest.h>

namespace
{

constexpr bool bThrow = true;

/// What a failed load raises.
std::wstring LoadFailure(const std::wstring& call, const COvXmlDocument& document)
{
    const std::wstring error = document.GetParseError();
    return L"0x1 OvXmlDocument | Msg: A COM method call failed. | Method: IXMLDOMDocument::" + call +
           L" | XML Parse Error: " + COvStringUtil::FindReplace(L"\r", L" | ", error.c_str(), nullptr) + L" | " +
           ErrorItem(L"hr", S_FALSE) + L" | " + NO_ERROR_OBJECT;
}

bool Load(COvXmlDocument& document, const std::wstring& source, bool bIsFile, bool bThrows)
{
    return document.LoadXML(COvBstr(source).Get(), bIsFile, bThrows, false);
}

} // namespace

class OvXmlDocument : public testing::Test
{
    CComApartment m_apartment;

protected:
    COvXmlDocument m_document = COvXmlDocument(nullptr, XmlParserBest);
};

TEST_F(OvXmlDocument, IsCreatedAtTheFirstLoadWithTheBestParser)
{
    EXPECT_TRUE(Load(m_document, L"<a/>", false, bThrow));
    EXPECT_EQ(XmlParser6, m_document.GetParserVersion());
    IXMLDOMNode* const pFirst = m_document.Get();
    EXPECT_TRUE(Load(m_document, L"<b/>", false, bThrow));
    EXPECT_EQ(pFirst, m_document.Get());
    EXPECT_EQ(L"b", TextOf(Find(m_document, L"/*").GetNodeName()));
    EXPECT_EQ(1u, Find(Loaded(L"<a> <b/> </a>"), L"/a").GetChildNodes().size());
    constexpr bool bPreserveWhitespace = true;
    EXPECT_EQ(3u, Find(Loaded(L"<a> <b/> </a>", bPreserveWhitespace), L"/a").GetChildNodes().size());
}

TEST_F(OvXmlDocument, WhatDoesNotParseIsRefused)
{
    for (const wchar_t* szText : { L"", L"<a/><b/>", L"<a>&unknown;</a>", L"<a>\n <b></a>" })
    {
        EXPECT_FALSE(Load(m_document, szText, false, !bThrow)) << szText;
        EXPECT_EQ(LoadFailure(L"loadXML() | pDoc: # | bstrXml: " + std::wstring(szText), m_document),
                  RaisedMasked([&] { Load(m_document, szText, false, bThrow); }));
    }
    EXPECT_EQ(EXPECTED_PARSE_ERROR, m_document.GetParseError());
    EXPECT_EQ(L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nUnable to retrieve the XML parse error(s).\nSource:\n"
              L"n/a\n\n",
              COvXmlDocument(nullptr, XmlParserBest).GetParseError());
}

TEST_F(OvXmlDocument, ADocumentTypeIsKeptFromTheOlderParsers)
{
    const struct
    {
        const wchar_t* szText;
        bool bLoads;
    } rows[] = {
        { L"<!DOCTYPE a><a/>", false },
        { L"\xFEFF<?xml version='1.0'?>\n\t<!-- a > b --><?p ?><!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", false },
        { L"<?xml version='1.0'?> <!-- <!DOCTYPE a> --><?p <!DOCTYPE a>?><a><![CDATA[<!DOCTYPE a>]]></a>", true },
    };
    for (const LONG nVersion : { XmlParser4, XmlParser3 })
        for (const auto& row : rows)
        {
            COvXmlDocument document(nullptr, nVersion);
            EXPECT_EQ(row.bLoads, Load(document, row.szText, false, !bThrow)) << nVersion << row.szText;
            if (row.bLoads)
                continue;
            EXPECT_EQ(L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nDTD is prohibited.\nSource:\nn/a\n\n",
                      document.GetParseError());
            EXPECT_EQ(LoadFailure(L"loadXML() | pDoc: # | bstrXml: " + std::wstring(row.szText), document),
                      RaisedMasked([&] { Load(document, row.szText, false, bThrow); }));
        }
}

TEST_F(OvXmlDocument, LoadsAFileInTheEncodingThatItDeclares)
{
    std::wstring path;
    {
        const CTestFile file("OvXmlDocumentTest.xml");
        path = file.Name();
        std::ofstream(std::filesystem::path(path), std::ios::binary)
            << "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\xE9</a>";
        EXPECT_TRUE(Load(m_document, path, true, bThrow));
        EXPECT_EQ(L"\x00E9", TextOf(m_document.GetText()));
    }
    EXPECT_FALSE(Load(m_document, path, true, !bThrow));
    const std::wstring raised = RaisedMasked([&] { Load(m_document, path, true, bThrow); });
    EXPECT_EQ(LoadFailure(L"load() | vSource.vt: 8 | pDoc: #", m_document), raised);
}

TEST_F(OvXmlDocument, WhatTheParserLacksIsAFailure)
{
    COvXmlDocument noDocument(Find(Loaded(L"<a/>"), L"/a").Get(), XmlParser6);
    EXPECT_EQ(L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: # | pOut: # | Current IID:: "
              L"{00000000-0000-0000-C000-000000000046} | Request IID:: {2933BF95-7B36-11D2-B20E-00C04F983E60} | "
              L"Request Nm:: IXMLDOMDocument2 | " +
                  ErrorItem(L"hr", E_NOINTERFACE),
              RaisedMasked([&] { noDocument.SetProperty(COvBstr(L"NewParser").Get(), _variant_t(true)); }));
    COvXmlDocument fifth(nullptr, 5);
    EXPECT_EQ(L"0x80004005 OvXmlDocument | Info Msg: Unable to CoCreate the XML DOM. | " + ErrorItem(L"hr", E_FAIL) +
                  L" | Parser version: Unknown version",
              Raised([&] { fifth.Create(); }));
}
