#include "ovCore/OvXmlNode.h"

#include "ComApartment.h"
#include "XmlExpectations.h"
#include "XmlTesting.h"

#include <functional>
#include <gtest/gtest.h>

namespace
{

const wchar_t s_szMixed[] = L"<?xml version=\"1.0\"?><p:a xmlns:p=\"u\" k=\"1\">t\xD83D\xDE00<b n=\"2\">u<!--c--></b>"
                            L"<![CDATA[<&]]><?pi data?></p:a>";

std::wstring NamesOf(const COvXmlNodeList& nodes)
{
    std::wstring names;
    for (const COvXmlNode& node : nodes)
        names += TextOf(node.GetNodeName()) + L" ";
    return names;
}

/// The document <a k="..."/>'s element.
COvXmlNode WithAttribute(const std::wstring& value)
{
    return Find(Loaded(L"<a k=\"" + value + L"\"/>"), L"/a");
}

} // namespace

class OvXmlNode : public testing::Test
{
    CComApartment m_apartment;
};

TEST_F(OvXmlNode, TellsNamesTextsAndSource)
{
    const COvXmlDocument document = Loaded(s_szMixed);
    const struct
    {
        const wchar_t* szPattern;
        const wchar_t* szName;
        const wchar_t* szBaseName;
        const wchar_t* szText;
        const wchar_t* szXml;
    } rows[] = {
        { L"/*", L"p:a", L"a", L"t\xD83D\xDE00u<&", nullptr },
        { L"/*/text()", L"#text", L"", L"t\xD83D\xDE00", L"t\xD83D\xDE00" },
        { L"//b", L"b", L"b", L"u", L"<b n=\"2\">u<!--c--></b>" },
        { L"//comment()", L"#comment", L"", L"c", L"<!--c-->" },
        { L"//processing-instruction('pi')", L"pi", L"pi", L"data", L"<?pi data?>" },
        { L"//@n", L"n", L"n", L"2", L"n=\"2\"" },
    };
    for (const auto& row : rows)
    {
        const COvXmlNode node = Find(document, row.szPattern);
        ASSERT_NE(nullptr, node.Get()) << row.szPattern;
        EXPECT_EQ(row.szName, TextOf(node.GetNodeName()));
        EXPECT_EQ(row.szBaseName, TextOf(node.GetNodeBaseName())) << row.szPattern;
        EXPECT_EQ(row.szText, TextOf(node.GetText())) << row.szPattern;
        if (row.szXml != nullptr)
        {
            EXPECT_EQ(row.szXml, TextOf(node.GetXML()));
        }
    }
}

TEST_F(OvXmlNode, ListsAllKindsOfChildrenInOrder)
{
    const COvXmlDocument document = Loaded(s_szMixed);
    EXPECT_EQ(L"xml p:a ", NamesOf(document.GetChildNodes()));
    EXPECT_EQ(L"#text b #cdata-section pi ", NamesOf(Find(document, L"/*").GetChildNodes()));
    EXPECT_EQ(L"", NamesOf(Find(document, L"//comment()").GetChildNodes()));
}

TEST_F(OvXmlNode, WalksManyChildrenInOrder)
{
    constexpr size_t nChildren = 100000;
    std::wstring text = L"<a>";
    for (size_t i = 0; i < nChildren; ++i)
        text += L"<c>" + std::to_wstring(i) + L"</c>";
    const COvXmlNodeList children = Find(Loaded(text + L"</a>"), L"/a").GetChildNodes();
    ASSERT_EQ(nChildren, children.size());
    for (size_t i = 0; i < nChildren; i += 9999)
        EXPECT_EQ(std::to_wstring(i), TextOf(children[i].GetText()));
}

TEST_F(OvXmlNode, QueriesAreRelativeToTheNode)
{
    const COvXmlDocument document = Loaded(L"<a><b><c i=\"1\"/></b><b><c i=\"2\"/><c i=\"3\"/></b></a>");
    const COvXmlNode second = Find(document, L"/a/b[2]");
    const struct
    {
        const wchar_t* szPattern;
        size_t nFound;
    } rows[] = { { L"c", 2 }, { L"c[@i='3']", 1 }, { L"//c", 3 }, { L"b", 0 }, { L"..", 1 }, { L"c/@i", 2 } };
    for (const auto& row : rows)
        for (const bool bRequired : { false, true })
            EXPECT_EQ(row.nFound, second.GetElems(COvBstr(row.szPattern).Get(), bRequired).size()) << row.szPattern;
}

TEST_F(OvXmlNode, ParentsEndAtTheDocument)
{
    const COvXmlDocument document = Loaded(L"<a><b k=\"1\"/></a>");
    COvXmlNode node = Find(document, L"//b");
    std::wstring names;
    while (node.GetOptParent(node))
        names += TextOf(node.GetNodeName()) + L" ";
    EXPECT_EQ(L"a #document ", names);
    EXPECT_EQ(nullptr, node.Get());

    COvXmlNode parent = document;
    EXPECT_FALSE(Find(document, L"//@k").GetOptParent(parent));
    EXPECT_EQ(nullptr, parent.Get());
}

TEST_F(OvXmlNode, AttributesConvertAsThePlatformDoes)
{
    constexpr HRESULT MISMATCH = DISP_E_TYPEMISMATCH;
    const struct
    {
        const wchar_t* szValue;
        HRESULT hrBool;
        bool bValue;
        HRESULT hrLong;
        LONG nValue;
    } rows[] = {
        { L"true", S_OK, true, MISMATCH, 0 },
        { L"TRUE", S_OK, true, MISMATCH, 0 },
        { L"false", S_OK, false, MISMATCH, 0 },
        { L"#TRUE#", S_OK, true, MISMATCH, 0 },
        { L"#FALSE#", S_OK, false, MISMATCH, 0 },
        { L"1", S_OK, true, S_OK, 1 },
        { L"0", S_OK, false, S_OK, 0 },
        { L"-1", S_OK, true, S_OK, -1 },
        { L"2", S_OK, true, S_OK, 2 },
        { L" 1 ", S_OK, true, S_OK, 1 },
        { L"20.5", S_OK, true, S_OK, 20 },
        { L"1,000", S_OK, true, S_OK, 1000 },
        { L"&amp;H14", S_OK, true, S_OK, 20 },
        { L"2147483647", S_OK, true, S_OK, 2147483647 },
        { L"2147483648", S_OK, true, DISP_E_OVERFLOW, 0 },
        { L"-2147483649", S_OK, true, DISP_E_OVERFLOW, 0 },
        { L"yes", MISMATCH, false, MISMATCH, 0 },
        { L"", MISMATCH, false, MISMATCH, 0 },
        { L"1x", MISMATCH, false, MISMATCH, 0 },
    };
    const COvBstr strName(L"k");
    for (const auto& row : rows)
    {
        const COvXmlNode node = WithAttribute(row.szValue);
        EXPECT_EQ(row.hrBool, CodeOf([&] { EXPECT_EQ(row.bValue, node.GetAttrValueBool(strName.Get())); }))
            << row.szValue;
        EXPECT_EQ(row.hrLong, CodeOf([&] { EXPECT_EQ(row.nValue, node.GetAttrValueLong(strName.Get())); }))
            << row.szValue;
        EXPECT_EQ(std::wstring(row.szValue) == L"&amp;H14" ? L"&H14" : row.szValue,
                  TextOf(node.GetAttrValueStr(strName.Get())));
    }
}

TEST_F(OvXmlNode, AnAbsentAttributeIsToldOnlyWhereItIsRequired)
{
    const COvXmlNode node = Find(Loaded(L"<a><b k=\"1\"/></a>"), L"//b");
    const COvBstr strAbsent(L"x");
    _variant_t value(L"old");
    EXPECT_FALSE(node.GetOptAttrValueVar(strAbsent.Get(), &value));
    EXPECT_EQ(VT_EMPTY, value.vt);
    EXPECT_EQ(nullptr, node.GetAttr(strAbsent.Get(), false).Get());
    EXPECT_TRUE(node.GetOptAttrValueVar(COvBstr(L"k").Get(), &value));
    EXPECT_STREQ(L"1", value.bstrVal);

    const std::wstring absent = L"0x80070490 OvXmlNode | " + ErrorItem(L"Win32 Error", HRESULT_FROM_WIN32(1168)) +
                                L" | strAttrName: x | Node Path: \n<a/> <b k=\"1\"/>";
    EXPECT_EQ(absent, Raised([&] { node.GetAttrValueVar(strAbsent.Get()); }));
    EXPECT_EQ(absent, Raised([&] { node.GetAttrValueStr(strAbsent.Get()); }));
    EXPECT_EQ(absent, Raised([&] { node.GetAttrValueBool(strAbsent.Get()); }));
    EXPECT_EQ(absent, Raised([&] { node.GetAttrValueLong(strAbsent.Get()); }));
    EXPECT_EQ(L"0x1 OvXmlNode | Method: IXMLDOMNamedNodeMap::getNamedItem | " + ErrorItem(L"Win32 Error", S_FALSE) +
                  L" | bstrAttrNm: x | bRequired: <true> | Node Path: \n<a/> <b k=\"1\"/> | " + NO_ERROR_OBJECT,
              Raised([&] { node.GetAttr(strAbsent.Get(), true); }));
}

TEST_F(OvXmlNode, ANodeWithoutAttributesIsAFailure)
{
    const COvXmlNode text = Find(Loaded(L"<a>t</a>"), L"/a/text()");
    const std::wstring expected = L"0x1 OvXmlNode | Method: IXMLDOMElement::get_attributes | " +
                                  ErrorItem(L"Win32 Error", S_FALSE) + L" | Node Path: \n<a/> t | " +
                                  EXPECTED_TEXT_ERROR_OBJECT;
    EXPECT_EQ(expected, Raised([&] { text.GetAttrs(); }));
    EXPECT_EQ(expected, Raised([&] { text.GetAttr(COvBstr(L"k").Get(), false); }));
}

TEST_F(OvXmlNode, AFaultyQueryIsAFailureWithItsPlace)
{
    const COvXmlNode node = Find(Loaded(L"<a n=\"1\"><b>t<c/></b></a>"), L"//c");
    EXPECT_EQ(std::wstring(L"0x80004005 OvXmlNode | Method: IXMLDOMNode::selectNodes | ") +
                  ErrorItem(L"Win32 Error", E_FAIL) +
                  L" | bstrPattern: [[ | bRequired: <false> | Node Path: \n<a n=\"1\"/> <b/>  <c/> | " +
                  EXPECTED_QUERY_ERROR_OBJECT,
              Raised([&] { node.SearchForNodes(COvBstr(L"[[").Get()); }));
}

TEST_F(OvXmlNode, CopiesAreOfTheAskedDepthAndHaveNoParent)
{
    const COvXmlNode node = Find(Loaded(L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\">t<c/></a>"), L"/*");
    const struct
    {
        OvXmlCloneType cloneType;
        const wchar_t* szXml;
    } rows[] = {
        { CloneElementOnly, EXPECTED_ELEMENT_ONLY },
        { CloneShallow, L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\"/>" },
        { CloneDeep, L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\">t<c/></a>" },
    };
    for (const auto& row : rows)
    {
        COvXmlNode copy;
        node.CloneNode(copy, row.cloneType);
        EXPECT_EQ(row.szXml, TextOf(copy.GetXML()));
        COvXmlNode parent;
        EXPECT_FALSE(copy.GetOptParent(parent)) << row.cloneType;
    }
    EXPECT_EQ(L"<a xmlns=\"u\" xmlns:p=\"v\" b=\"1\" p:d=\"2\">t<c/></a>", TextOf(node.GetXML()));
    EXPECT_EQ(L"t", TextOf(Find(Loaded(L"<a>t</a>"), L"/a/text()").CloneNodeElementOnly().GetXML()));
}

TEST_F(OvXmlNode, AnEmptyNodeHasNoOperations)
{
    const COvXmlNode empty;
    COvXmlNode other;
    _variant_t value;
    const COvBstr strName(L"k");
    const std::function<void()> works[] = {
        [&] { empty.GetNodeName(); },
        [&] { empty.GetNodeBaseName(); },
        [&] { empty.GetText(); },
        [&] { empty.GetXML(); },
        [&] { empty.GetOptParent(other); },
        [&] { empty.GetChildNodes(); },
        [&] { empty.GetElems(strName.Get(), false); },
        [&] { empty.SearchForNodes(strName.Get()); },
        [&] { empty.GetAttrs(); },
        [&] { empty.GetAttr(strName.Get(), false); },
        [&] { empty.GetOptAttrValueVar(strName.Get(), &value); },
        [&] { empty.GetAttrValueVar(strName.Get()); },
        [&] { empty.GetAttrValueStr(strName.Get()); },
        [&] { empty.GetAttrValueBool(strName.Get()); },
        [&] { empty.GetAttrValueLong(strName.Get()); },
        [&] { empty.CloneNode(other, CloneDeep); },
        [&] { empty.CloneNodeElementOnly(); },
    };
    for (const auto& work : works)
        EXPECT_EQ(L"0x80004005 OvXmlNode | Info Msg: No node available. | m_spNode: 0", Raised(work)) << &work - works;
}

TEST_F(OvXmlNode, CopiesShareTheNodeAndKeepItAlive)
{
    COvXmlNode node = Find(Loaded(L"<a><b/></a>"), L"//b"); // the document is gone
    COvXmlNode copy(node);
    node = COvXmlNode();
    EXPECT_EQ(L"b", TextOf(copy.GetNodeName()));
    copy = copy;
    EXPECT_EQ(L"b", TextOf(COvXmlNode(std::move(copy)).GetNodeName()));
}

TEST_F(OvXmlNode, ANullListIsAnEmptyOne)
{
    COvXmlNodeList nodes = Loaded(L"<a/>").GetChildNodes();
    EXPECT_EQ(1u, nodes.size());
    nodes.Populate(nullptr);
    EXPECT_EQ(0u, nodes.size());
}
