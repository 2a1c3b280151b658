// Failing calls of the DOM, and parsers that are missing: on the native target.
#include "ComApartment.h"
#include "FailingMethods.h"
#include "FailingNew.h"
#include "Platform/Control.h"
#include "XmlTesting.h"

#include <functional>
#include <gtest/gtest.h>

class OvXmlFailure : public testing::Test
{
    CComApartment m_apartment;

protected:
    COvXmlDocument m_document = Loaded(L"<r><e k=\"1\">t</e></r>");
    const COvXmlNode m_node = Find(m_document, L"//e");
    IXMLDOMNode* const m_pNode = m_node.Get();
    IXMLDOMDocument2* const m_pDocument = static_cast<IXMLDOMDocument2*>(m_document.Get());
    const COvBstr m_strName = COvBstr(L"k");
};

TEST_F(OvXmlFailure, EveryCallOfANodeIsReportedWithItsMethodAndPlace)
{
    using Node = IXMLDOMNode;
    const std::wstring error = L" | " + ErrorItem(L"Win32 Error", E_UNEXPECTED);
    const std::wstring path = L" | Node Path: \n<r/> <e k=\"1\"/>";
    const auto at = [&](auto pMethod) { return PlaceOf(m_pNode, pMethod); };
    const COvComPtr<IXMLDOMNamedNodeMap> spMap = m_node.GetAttrs();
    COvComPtr<IXMLDOMNodeList> spList;
    m_pNode->get_childNodes(spList.Receive());
    COvXmlNode other;
    const auto pElement = static_cast<IXMLDOMElement*>(m_pNode);
    const auto pAttribute = m_node.GetAttr(m_strName.Get(), true);
    const struct
    {
        std::vector<void**> failing;
        std::function<void()> work;
        std::wstring evidence;
    } rows[] = {
        { { at(&Node::get_nodeName) }, [&] { m_node.GetNodeName(); }, L"IXMLDOMNode::get_nodeName" + error + path },
        { { at(&Node::get_baseName) },
          [&] { m_node.GetNodeBaseName(); },
          L"IXMLDOMNode::get_baseName()" + error + path },
        { { at(&Node::get_text) }, [&] { m_node.GetText(); }, L"IXMLDOMNode::get_text" + error + path },
        { { at(&Node::get_xml) }, [&] { m_node.GetXML(); }, L"IXMLDOMNode::get_xml" + error },
        { { at(&Node::get_text), at(&Node::get_nodeType) },
          [&] { m_node.GetText(); },
          L"IXMLDOMNode::get_text" + error },
        { { at(&Node::get_parentNode) }, [&] { m_node.GetOptParent(other); }, L"IXMLDOMNode::get_parentNode" + error },
        { { at(&Node::get_childNodes) },
          [&] { m_node.GetChildNodes(); },
          L"IXMLDOMNode::get_childNodes" + error + path },
        { { PlaceOf(spList.Get(), &IXMLDOMNodeList::nextNode) },
          [&] { m_node.GetChildNodes(); },
          L"IXMLDOMNodeList::nextNode" + error },
        { { at(&Node::selectNodes) },
          [&] { m_node.GetElems(m_strName.Get(), true); },
          L"IXMLDOMNode::selectNodes" + error + L" | bstrPattern: k | bRequired: <true>" + path },
        { { at(&Node::get_attributes) }, [&] { m_node.GetAttrs(); }, L"IXMLDOMElement::get_attributes" + error + path },
        { { PlaceOf(spMap.Get(), &IXMLDOMNamedNodeMap::getNamedItem) },
          [&] { m_node.GetAttr(m_strName.Get(), true); },
          L"IXMLDOMNamedNodeMap::getNamedItem" + error + L" | bstrAttrNm: k | bRequired: <true>" + path },
        { { PlaceOf(pAttribute.Get(), &Node::get_nodeTypedValue), PlaceOf(pAttribute.Get(), &Node::get_text) },
          [&] { m_node.GetAttrValueVar(m_strName.Get()); },
          L"IXMLDOMNode::get_nodeTypedValue() | Method: IXMLDOMNode::get_nodeValue()" + error + path },
        { { at(&Node::cloneNode) },
          [&] { m_node.CloneNode(other, CloneDeep); },
          L"IXMLDOMNode::cloneNode" + error + L" | cloneType: 2" },
        { { PlaceOf(pElement, &IXMLDOMElement::removeAttribute) },
          [&] { m_node.CloneNodeElementOnly(); },
          L"IXMLDOMElement::removeAttribute" + error + L" | strAttrName: k" + path },
    };
    for (const auto& row : rows)
    {
        const CFailingMethods failing(row.failing, E_UNEXPECTED);
        const bool bTwice = row.failing.size() > 1 && row.evidence.find(L"Typed") != std::wstring::npos;
        EXPECT_EQ(L"0x8000ffff OvXmlNode | Method: " + row.evidence + L" | Error Object Info: told" +
                      (bTwice ? L" later" : L""),
                  Raised(row.work));
    }
    {
        const CFailingMethods failing({ PlaceOf(spMap.Get(), &IXMLDOMNamedNodeMap::getNamedItem) }, E_UNEXPECTED);
        EXPECT_EQ(nullptr, m_node.GetAttr(m_strName.Get(), false).Get()); // not required
    }
    const CFailingMethods failing({ PlaceOf(pAttribute.Get(), &Node::get_nodeTypedValue) }, E_UNEXPECTED);
    EXPECT_EQ(L"1", TextOf(m_node.GetAttrValueStr(m_strName.Get()))); // the text instead
}

TEST_F(OvXmlFailure, AListThatFailsKeepsItsNodes)
{
    COvXmlNodeList nodes = m_node.GetChildNodes();
    COvComPtr<IXMLDOMNodeList> spList;
    m_pNode->get_childNodes(spList.Receive());
    const COvComPtr<IXMLDOMNode> spHeld(nodes[0].Get()); // so that the list need not allocate it
    EXPECT_EQ(L"0x80004005 OvXmlNode | Exception Info:  | { | Code: STL EXCEPTION | Description: | std::bad_alloc | }",
              Raised([&] {
                  const CFailingNew failing(1);
                  nodes.Populate(spList.Get());
              }));
    EXPECT_EQ(1u, nodes.size());
}

TEST_F(OvXmlFailure, EveryCallOfADocumentIsReported)
{
    using Document = IXMLDOMDocument2;
    const std::wstring error = L" | XML Parse Error: \nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\n"
                               L"No reason available.\nSource:\nNo source available.\n\n";
    const std::wstring hr = L" | " + ErrorItem(L"hr", E_UNEXPECTED);
    const std::wstring call = L"OvXmlDocument | Msg: A COM method call failed. | Method: ";
    const auto at = [&](auto pMethod) { return PlaceOf(m_pDocument, pMethod); };
    const struct
    {
        void** pFailing;
        std::function<void()> work;
        std::wstring evidence;
    } rows[] = {
        { at(&Document::setProperty), [&] { m_document.SetProperty(m_strName.Get(), _variant_t(true)); },
          call + L"IXMLDOMDocument2::setProperty | Parser version: DOM 6 | bstrName: k" + hr },
        { at(&Document::put_preserveWhiteSpace), [&] { m_document.PreserveWhitespace(); },
          call + L"IXMLDOMDocument::put_preserveWhiteSpace" },
        { at(&Document::loadXML), [&] { m_document.LoadXML(m_strName.Get(), false, true, false); },
          call + L"IXMLDOMDocument::loadXML() | pDoc: # | bstrXml: k" + error + hr },
        { at(&Document::load), [&] { m_document.LoadXML(m_strName.Get(), true, true, false); },
          call + L"IXMLDOMDocument::load() | vSource.vt: 8 | pDoc: #" + error + hr },
        { at(&Document::get_childNodes), [&] { m_document.GetChildNodes(); },
          L"OvXmlNode | Method: IXMLDOMNode::get_childNodes | " + ErrorItem(L"Win32 Error", E_UNEXPECTED) + error },
    };
    for (const auto& row : rows)
    {
        const CFailingMethods failing({ row.pFailing }, E_UNEXPECTED);
        EXPECT_EQ(L"0x8000ffff " + row.evidence + L" | Error Object Info: told", RaisedMasked(row.work));
    }
    COvXmlDocument fresh(nullptr, XmlParserBest);
    const CFailingMethods failing({ at(&Document::setProperty) }, E_FAIL);
    EXPECT_NE(L"nothing", Raised([&] { fresh.Create(); }));
    EXPECT_EQ(nullptr, fresh.Get());
    EXPECT_EQ(XmlParserBest, fresh.GetParserVersion());
}

TEST_F(OvXmlFailure, WhatAParseErrorDoesNotTellIsSaid)
{
    using Error = IXMLDOMParseError;
    EXPECT_FALSE(m_document.LoadDoc(COvBstr(L"\n<b>").Get(), false));
    COvComPtr<Error> spError;
    m_pDocument->get_parseError(spError.Receive());
    const auto at = [&](auto pMethod) { return PlaceOf(spError.Get(), pMethod); };
    const std::vector<void**> some = { at(&Error::get_reason), at(&Error::get_srcText), at(&Error::get_line) };
    const std::wstring begin = L"\nFile Pos:4\nLine: 0   Line Pos: 4\n\nReason:\n";
    const struct
    {
        std::vector<void**> failing;
        HRESULT hr;
        std::wstring text;
    } rows[] = {
        { some, E_FAIL, begin + L"Unable to retrieve reason.\nSource:\nUnable to retrieve source.\n\n" },
        { some, S_FALSE, begin + L"No reason available.\nSource:\nNo source available.\n\n" },
        { { PlaceOf(m_pDocument, &IXMLDOMDocument::get_parseError) },
          E_FAIL,
          L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nUnable to retrieve the XML parse error(s).\nSource:\n"
          L"n/a\n\n" },
    };
    for (const auto& row : rows)
    {
        const CFailingMethods failing(row.failing, row.hr);
        EXPECT_EQ(row.text, m_document.GetParseError());
    }
}

TEST_F(OvXmlFailure, TheNewestParserThatThereIsIsTaken)
{
    const std::pair<LONG, const CLSID*> generations[] = { { XmlParser3, &CLSID_DOMDocument30 },
                                                          { XmlParser4, &CLSID_DOMDocument40 },
                                                          { XmlParser6, &CLSID_DOMDocument60 } };
    const struct
    {
        std::vector<LONG> available;
        LONG nAsked;
        LONG nCreated; // 0: none
        const wchar_t* szAsked;
    } rows[] = {
        { { 3, 4, 6 }, XmlParserBest, 6, nullptr },
        { { 3, 4 }, XmlParserBest, 4, nullptr },
        { { 3 }, XmlParserBest, 3, nullptr },
        { {}, XmlParserBest, 0, L"Best DOM version" },
        { { 3, 4, 6 }, 4, 4, nullptr },
        { { 3, 4, 6 }, 3, 3, nullptr },
        { { 3, 4 }, 6, 0, L"DOM 6" },
        { { 3, 6 }, 4, 0, L"DOM 4" },
        { { 4, 6 }, 3, 0, L"DOM 3" },
    };
    for (const auto& row : rows)
    {
        const auto& there = row.available;
        for (const auto& [nVersion, pClass] : generations)
            OvPlatform::SetClassAvailable(*pClass, std::count(there.begin(), there.end(), nVersion) != 0);
        COvXmlDocument document(nullptr, row.nAsked);
        const std::wstring failure = L"0x80004005 OvXmlDocument | Info Msg: Unable to CoCreate the XML DOM. | " +
                                     ErrorItem(L"hr", REGDB_E_CLASSNOTREG) + L" | Parser version: ";
        EXPECT_EQ(row.nCreated != 0 ? L"nothing" : failure + row.szAsked, Raised([&] {
                      document.LoadXML(COvBstr(L"<a><b k=\"1\"/></a>").Get(), false, true, false);
                      EXPECT_EQ(1u, document.SearchForNodes(COvBstr(L"/a/b[@k='1']").Get()).size());
                  }));
        EXPECT_EQ(row.nCreated != 0 ? row.nCreated : row.nAsked, document.GetParserVersion());
    }
    for (const auto& generation : generations)
        OvPlatform::SetClassAvailable(*generation.second, true);
}
