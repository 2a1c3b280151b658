#include "ovCore/OvXmlDocument.h"

#include "ComApartment.h"
#include "ovCore/OvSystem.h"
#include "XmlExpectations.h"
#include "XmlTesting.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>

namespace
{

constexpr bool bIsFile = true;
constexpr bool bThrow = true;
constexpr bool bPreserveWhitespace = true;

/// A text as Raised shows it inside an item: each CR is a break between items.
std::wstring BreaksMarked(const std::wstring& text)
{
    return COvStringUtil::FindReplace(L"\r", L" | ", text.c_str(), nullptr);
}

/// A file in the current directory while it lives.
class CTemporaryFile
{
public:
    explicit CTemporaryFile(const std::string& content) { std::ofstream(s_szName, std::ios::binary) << content; }
    ~CTemporaryFile() { std::remove(s_szName); }

    static COvBstr Path() { return COvBstr(COvSystem::GetCurrentDirectoryW() + L"\\OvXmlDocumentTest.xml"); }

private:
    static constexpr const char* s_szName = "OvXmlDocumentTest.xml";
};

} // namespace

class OvXmlDocument : public testing::Test
{
    CComApartment m_apartment;
};

TEST_F(OvXmlDocument, IsCreatedAtTheFirstLoadWithTheBestParser)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    EXPECT_EQ(nullptr, document.Get());
    EXPECT_TRUE(document.LoadXML(COvBstr(L"<a/>").Get(), !bIsFile, bThrow, !bPreserveWhitespace));
    EXPECT_EQ(XmlParser6, document.GetParserVersion());
    IXMLDOMNode* const pFirst = document.Get();
    EXPECT_TRUE(document.LoadXML(COvBstr(L"<b/>").Get(), !bIsFile, bThrow, !bPreserveWhitespace));
    EXPECT_EQ(pFirst, document.Get());
    EXPECT_EQ(L"b", TextOf(Find(document, L"/*").GetNodeName()));
    EXPECT_EQ(1u, Find(Loaded(L"<a> <b/> </a>"), L"/a").GetChildNodes().size());
    EXPECT_EQ(3u, Find(Loaded(L"<a> <b/> </a>", bPreserveWhitespace), L"/a").GetChildNodes().size());
}

TEST_F(OvXmlDocument, ATextThatDoesNotParseIsRefused)
{
    for (const wchar_t* szText : { L"", L"<a>\n <b></a>", L"<a/><b/>", L"<a>&unknown;</a>" })
    {
        COvXmlDocument document(nullptr, XmlParserBest);
        const COvBstr strText(szText);
        EXPECT_FALSE(document.LoadXML(strText.Get(), !bIsFile, !bThrow, !bPreserveWhitespace)) << szText;
        const std::wstring expected = L"0x1 OvXmlDocument | Msg: A COM method call failed. | "
                                      L"Method: IXMLDOMDocument::loadXML() | pDoc: # | bstrXml: " +
                                      std::wstring(szText) + L" | XML Parse Error: " +
                                      BreaksMarked(document.GetParseError()) + L" | " + ErrorItem(L"hr", S_FALSE) +
                                      L" | " + NO_ERROR_OBJECT;
        EXPECT_EQ(expected,
                  RaisedMasked([&] { document.LoadXML(strText.Get(), !bIsFile, bThrow, !bPreserveWhitespace); }));
    }
}

TEST_F(OvXmlDocument, TheParseErrorTellsWhereAndWhy)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    document.LoadXML(COvBstr(L"<a>\n <b></a>").Get(), !bIsFile, !bThrow, !bPreserveWhitespace);
    EXPECT_EQ(EXPECTED_PARSE_ERROR, document.GetParseError());
    document.LoadXML(COvBstr(L"<a/>").Get(), !bIsFile, bThrow, !bPreserveWhitespace);
    EXPECT_EQ(
        L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nNo reason available.\nSource:\nNo source available.\n\n",
        document.GetParseError());
    EXPECT_EQ(L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nUnable to retrieve the XML parse error(s).\nSource:\n"
              L"n/a\n\n",
              COvXmlDocument(nullptr, XmlParserBest).GetParseError());
}

TEST_F(OvXmlDocument, LoadsAFileInTheEncodingThatItDeclares)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    const COvBstr strPath = CTemporaryFile::Path();
    {
        const CTemporaryFile file("<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\xE9</a>");
        EXPECT_TRUE(document.LoadXML(strPath.Get(), bIsFile, bThrow, !bPreserveWhitespace));
        EXPECT_EQ(L"\x00E9", TextOf(document.GetText()));
    }
    EXPECT_FALSE(document.LoadXML(strPath.Get(), bIsFile, !bThrow, !bPreserveWhitespace));
    const std::wstring raised =
        RaisedMasked([&] { document.LoadXML(strPath.Get(), bIsFile, bThrow, !bPreserveWhitespace); });
    EXPECT_EQ(std::wstring(L"0x1 OvXmlDocument | Msg: A COM method call failed. | "
                           L"Method: IXMLDOMDocument::load() | vSource.vt: 8 | pDoc: # | XML Parse Error: ") +
                  BreaksMarked(document.GetParseError()) + L" | " + ErrorItem(L"hr", S_FALSE) + L" | " +
                  NO_ERROR_OBJECT,
              raised);
}

TEST_F(OvXmlDocument, APropertyThatIsRefusedIsAFailure)
{
    COvXmlDocument document = Loaded(L"<a/>");
    EXPECT_EQ(L"0x80004005 OvXmlDocument | Msg: A COM method call failed. | Method: IXMLDOMDocument2::setProperty | "
              L"Parser version: DOM 6 | bstrName: NoSuchProperty | " +
                  ErrorItem(L"hr", E_FAIL) + L" | " + EXPECTED_PROPERTY_ERROR_OBJECT,
              Raised([&] { document.SetProperty(COvBstr(L"NoSuchProperty").Get(), _variant_t(true)); }));
}

TEST_F(OvXmlDocument, ANodeThatIsNoDocumentCannotBeUsedAsOne)
{
    COvXmlDocument document(Find(Loaded(L"<a/>"), L"/a").Get(), XmlParser6);
    const std::wstring failed = L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: # | pOut: # | "
                                L"Current IID:: {00000000-0000-0000-C000-000000000046} | Request IID:: ";
    const std::wstring hr = L" | " + ErrorItem(L"hr", E_NOINTERFACE);
    EXPECT_EQ(failed + L"{2933BF81-7B36-11D2-B20E-00C04F983E60} | Request Nm:: IXMLDOMDocument" + hr,
              RaisedMasked([&] { document.PreserveWhitespace(); }));
    EXPECT_EQ(failed + L"{2933BF95-7B36-11D2-B20E-00C04F983E60} | Request Nm:: IXMLDOMDocument2" + hr,
              RaisedMasked([&] { document.SetProperty(COvBstr(L"NewParser").Get(), _variant_t(true)); }));
}

TEST_F(OvXmlDocument, AParserThatDoesNotExistIsNotReplaced)
{
    COvXmlDocument document(nullptr, 5);
    EXPECT_EQ(L"0x80004005 OvXmlDocument | Info Msg: Unable to CoCreate the XML DOM. | " + ErrorItem(L"hr", E_FAIL) +
                  L" | Parser version: Unknown version",
              Raised([&] { document.Create(); }));
    EXPECT_EQ(5, document.GetParserVersion());
}

TEST(OvXmlDocumentWithoutApartment, NothingCanBeCreated)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    EXPECT_EQ(L"0x80004005 OvXmlDocument | Info Msg: Unable to CoCreate the XML DOM. | " +
                  ErrorItem(L"hr", CO_E_NOTINITIALIZED) + L" | Parser version: Best DOM version",
              Raised([&] { document.LoadXML(COvBstr(L"<a/>").Get(), !bIsFile, !bThrow, !bPreserveWhitespace); }));
    EXPECT_EQ(nullptr, document.Get());
}
