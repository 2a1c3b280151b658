#include "ovCore/OvXmlNode.h"

#include "ComApartment.h"
#include "XmlExpectations.h"
#include "XmlTesting.h"

#include <functional>
#include <gtest/gtest.h>

namespace
{

std::wstring NamesOf(const COvXmlNodeList& nodes)
{
    std::wstring names;
    for (const COvXmlNode& node : nodes)
        names += TextOf(node.GetNodeName()) + L" ";
    return names;
}

} // namespace

class OvXmlNode : public testing::Test
{
    CComApartment m_apartment;
};

TEST_F(OvXmlNode, TellsNamesTextsSourceAndChildren)
{
    const COvXmlDocument document =
        Loaded(L"<?xml version=\"1.0\"?><p:a xmlns:p=\"u\" k=\"1\">t\xD83D\xDE00<b n=\"2\">u<!--c--></b>"
               L"<![CDATA[<&]]><?pi data?></p:a>");
    const struct
    {
        const wchar_t* szPattern;
        const wchar_t* szName;
        const wchar_t* szBaseName;
        const wchar_t* szText;
        const wchar_t* szXml;
        const wchar_t* szChildren;
    } rows[] = {
        { L"/*", L"p:a", L"a", L"t\xD83D\xDE00u<&", nullptr, L"#text b #cdata-section pi " },
        { L"/*/text()", L"#text", L"", L"t\xD83D\xDE00", L"t\xD83D\xDE00", L"" },
        { L"//b", L"b", L"b", L"u", L"<b n=\"2\">u<!--c--></b>", L"#text #comment " },
        { L"//comment()", L"#comment", L"", L"c", L"<!--c-->", L"" },
        { L"//processing-instruction('pi')", L"pi", L"pi", L"data", L"<?pi data?>", L"" },
        { L"//@n", L"n", L"n", L"2", L"n=\"2\"", L"#text " },
    };
    for (const auto& row : rows)
    {
        const COvXmlNode node = Find(document, row.szPattern);
        EXPECT_EQ(row.szName, TextOf(node.GetNodeName()));
        EXPECT_EQ(row.szBaseName, TextOf(node.GetNodeBaseName())) << row.szPattern;
        EXPECT_EQ(row.szText, TextOf(node.GetText())) << row.szPattern;
        EXPECT_EQ(row.szXml != nullptr ? row.szXml : TextOf(node.GetXML()), TextOf(node.GetXML()));
        EXPECT_EQ(row.szChildren, NamesOf(node.GetChildNodes())) << row.szPattern;
    }
    EXPECT_EQ(L"xml p:a ", NamesOf(document.GetChildNodes()));
    COvXmlNode node = Find(document, L"/*");
    EXPECT_TRUE(node.GetOptParent(node));
    EXPECT_EQ(L"#document", TextOf(node.GetNodeName()));
    EXPECT_FALSE(node.GetOptParent(node));
    EXPECT_EQ(nullptr, node.Get());
    COvXmlNodeList nodes = document.GetChildNodes();
    nodes.Populate(nullptr);
    EXPECT_EQ(0u, nodes.size());
}

TEST_F(OvXmlNode, QueriesAreRelativeToTheNode)
{
    const COvXmlDocument document = Loaded(L"<a><b><c i=\"1\"/></b><b><c i=\"2\"/><c i=\"3\"/></b></a>");
    const COvXmlNode second = Find(document, L"/a/b[2]");
    const std::pair<const wchar_t*, size_t> rows[] = { { L"c", 2 }, { L"c[@i='3']", 1 }, { L"//c", 3 }, { L"b", 0 } };
    for (const auto& [szPattern, nFound] : rows)
        EXPECT_EQ(nFound, second.GetElems(COvBstr(szPattern).Get(), true).size()) << szPattern;
    EXPECT_EQ(std::wstring(L"0x80004005 OvXmlNode | Method: IXMLDOMNode::selectNodes | ") +
                  ErrorItem(L"Win32 Error", E_FAIL) +
                  L" | bstrPattern: [[ | bRequired: <false> | Node Path: \n<a/> <b/>  <c i=\"2\"/> | " +
                  EXPECTED_QUERY_ERROR_OBJECT,
              Raised([&] { Find(second, L"c").SearchForNodes(COvBstr(L"[[").Get()); }));
}

TEST_F(OvXmlNode, AttributesConvertAsThePlatformDoes)
{
    constexpr HRESULT MISMATCH = DISP_E_TYPEMISMATCH;
    constexpr HRESULT OVERFLOWS = DISP_E_OVERFLOW;
    const struct
    {
        const wchar_t* szValue;
        HRESULT hrBool;
        bool bValue;
        HRESULT hrLong;
        LONG nValue;
    } rows[] = { { L"true", S_OK, true, MISMATCH, 0 },
                 { L"TRUE", S_OK, true, MISMATCH, 0 },
                 { L"false", S_OK, false, MISMATCH, 0 },
                 { L"#TRUE#", S_OK, true, MISMATCH, 0 },
                 { L"1", S_OK, true, S_OK, 1 },
                 { L"0", S_OK, false, S_OK, 0 },
                 { L"-1", S_OK, true, S_OK, -1 },
                 { L" 1 ", S_OK, true, S_OK, 1 },
                 { L"20.5", S_OK, true, S_OK, 20 },
                 { L"1,000", S_OK, true, S_OK, 1000 },
                 { L"2147483647", S_OK, true, S_OK, 2147483647 },
                 { L"2147483648", S_OK, true, OVERFLOWS, 0 },
                 { L"yes", MISMATCH, false, MISMATCH, 0 },
                 { L"", MISMATCH, false, MISMATCH, 0 },
                 { L"1x", MISMATCH, false, MISMATCH, 0 } };
    const COvBstr strName(L"k");
    for (const auto& row : rows)
    {
        const COvXmlNode node = Find(Loaded(std::wstring(L"<a k=\"") + row.szValue + L"\"/>"), L"/a");
        EXPECT_EQ(row.hrBool, CodeOf([&] { EXPECT_EQ(row.bValue, node.GetAttrValueBool(strName.Get())); }))
            << row.szValue;
        EXPECT_EQ(row.hrLong, CodeOf([&] { EXPECT_EQ(row.nValue, node.GetAttrValueLong(strName.Get())); }))
            << row.szValue;
        EXPECT_EQ(row.szValue, TextOf(node.GetAttrValueStr(strName.Get())));
    }
}

TEST_F(OvXmlNode, AnAbsentAttributeIsToldOnlyWhereItIsRequired)
{
    const COvXmlNode node = Find(Loaded(L"<a>t<b k=\"1\"/></a>"), L"//b");
    const COvBstr strAbsent(L"x");
    _variant_t value(L"old");
    EXPECT_FALSE(node.GetOptAttrValueVar(strAbsent.Get(), &value));
    EXPECT_EQ(VT_EMPTY, value.vt);
    EXPECT_EQ(nullptr, node.GetAttr(strAbsent.Get(), false).Get());
    EXPECT_EQ(L"0x80070490 OvXmlNode | " + ErrorItem(L"Win32 Error", HRESULT_FROM_WIN32(1168)) +
                  L" | strAttrName: x | Node Path: \n<a/> <b k=\"1\"/>",
              Raised([&] { node.GetAttrValueStr(strAbsent.Get()); }));
    EXPECT_EQ(L"0x1 OvXmlNode | Method: IXMLDOMNamedNodeMap::getNamedItem | " + ErrorItem(L"Win32 Error", S_FALSE) +
                  L" | bstrAttrNm: x | bRequired: <true> | Node Path: \n<a/> <b k=\"1\"/> | " + NO_ERROR_OBJECT,
              Raised([&] { node.GetAttr(strAbsent.Get(), true); }));
    COvXmlNode text;
    ASSERT_TRUE(node.GetOptParent(text));
    text = text.GetChildNodes()[0];
    EXPECT_EQ(L"0x1 OvXmlNode | Method: IXMLDOMElement::get_attributes | " + ErrorItem(L"Win32 Error", S_FALSE) +
                  L" | Node Path: \n<a/> t | " + EXPECTED_TEXT_ERROR_OBJECT,
              Raised([&] { text.GetAttr(strAbsent.Get(), false); })); // it can have none
}

TEST_F(OvXmlNode, CopiesAreOfTheAskedDepthAndHaveNoParent)
{
    const std::wstring whole = L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\">t<c/></a>";
    const COvXmlNode node = Find(Loaded(whole), L"/*"); // the document is gone
    const std::pair<OvXmlCloneType, std::wstring> rows[] = {
        { CloneElementOnly, EXPECTED_ELEMENT_ONLY },
        { CloneShallow, L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\"/>" },
        { CloneDeep, whole },
    };
    for (const auto& [cloneType, xml] : rows)
    {
        COvXmlNode copy;
        node.CloneNode(copy, cloneType);
        EXPECT_EQ(xml, TextOf(copy.GetXML()));
        EXPECT_FALSE(copy.GetOptParent(copy)) << cloneType;
    }
    EXPECT_EQ(whole, TextOf(node.GetXML()));
}

TEST_F(OvXmlNode, AnEmptyNodeHasNoOperations)
{
    COvXmlNode empty;
    COvXmlDocument document(nullptr, XmlParserBest);
    const COvBstr strName(L"k");
    const std::function<void()> works[] = {
        [&] { empty.GetText(); },
        [&] { empty.GetOptParent(empty); },
        [&] { empty.GetChildNodes(); },
        [&] { empty.SearchForNodes(strName.Get()); },
        [&] { empty.GetAttrValueLong(strName.Get()); },
        [&] { empty.CloneNode(empty, CloneDeep); },
        [&] { document.PreserveWhitespace(); },
        [&] { document.SetProperty(strName.Get(), _variant_t()); },
    };
    for (const auto& work : works)
        EXPECT_EQ(L"0x80004005 OvXmlNode | Info Msg: No node available. | m_spNode: 0", Raised(work)) << &work - works;
}
