// Failing calls of the DOM, and parsers that are missing: through proxies, on the native target.
#include "ComApartment.h"
#include "DomProxies.h"
#include "FailingNew.h"
#include "Platform/Control.h"
#include "XmlTesting.h"

#include <functional>
#include <gtest/gtest.h>

namespace
{

constexpr bool bIsFile = true;
constexpr bool bThrow = true;
constexpr bool bPreserveWhitespace = true;

bool g_bWrapDocuments = false; // CoCreateInstance gives proxies

} // namespace

extern "C" HRESULT __real_CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pOuter, DWORD dwContext, REFIID riid,
                                           LPVOID* ppv);

extern "C" HRESULT __wrap_CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pOuter, DWORD dwContext, REFIID riid, LPVOID* ppv)
{
    if (!g_bWrapDocuments)
        return __real_CoCreateInstance(rclsid, pOuter, dwContext, riid, ppv);
    COvComPtr<IXMLDOMDocument2> spReal;
    const HRESULT hr = __real_CoCreateInstance(rclsid, pOuter, dwContext, IID_IXMLDOMDocument2,
                                               reinterpret_cast<void**>(spReal.Receive()));
    if (SUCCEEDED(hr))
        *ppv = static_cast<IUnknown*>(COvComPtr<IXMLDOMDocument2>(new CDocumentProxy(std::move(spReal))).Detach());
    return hr;
}

class OvXmlFailure : public testing::Test
{
protected:
    OvXmlFailure() { g_bWrapDocuments = true; }
    ~OvXmlFailure() override
    {
        g_bWrapDocuments = false;
        EXPECT_EQ(0u, g_nProxies);
    }

    /// The element e of <r><e k="1">t</e></r>, as a proxy.
    static COvXmlNode Element()
    {
        const COvComPtr<IXMLDOMNode> spReal(Find(Loaded(L"<r><e k=\"1\">t</e></r>"), L"//e").Get());
        return COvXmlNode(COvComPtr<IXMLDOMNode>(new CNodeProxy(spReal)));
    }

private:
    CComApartment m_apartment;
};

TEST_F(OvXmlFailure, EveryCallOfANodeIsReportedWithItsMethodAndPlace)
{
    const std::wstring path = L" | Node Path: \n<r/> <e k=\"1\"/>";
    const std::wstring noPath;
    const std::wstring error = L" | " + ErrorItem(L"Win32 Error", E_UNEXPECTED);
    const COvBstr strName(L"k");
    const struct
    {
        std::set<std::string> calls;
        std::function<void(const COvXmlNode&)> work;
        std::wstring evidence;
    } rows[] = {
        { { "get_nodeName" }, [](auto& n) { n.GetNodeName(); }, L"IXMLDOMNode::get_nodeName" + error + path },
        { { "get_baseName" }, [](auto& n) { n.GetNodeBaseName(); }, L"IXMLDOMNode::get_baseName()" + error + path },
        { { "get_text" }, [](auto& n) { n.GetText(); }, L"IXMLDOMNode::get_text" + error + path },
        { { "get_xml" }, [](auto& n) { n.GetXML(); }, L"IXMLDOMNode::get_xml" + error + noPath },
        { { "get_text", "get_nodeType" }, [](auto& n) { n.GetText(); }, L"IXMLDOMNode::get_text" + error + noPath },
        { { "get_text", "cloneNode" }, [](auto& n) { n.GetText(); }, L"IXMLDOMNode::get_text" + error + noPath },
        { { "get_parentNode" },
          [](auto& n) {
              COvXmlNode parent;
              n.GetOptParent(parent);
          },
          L"IXMLDOMNode::get_parentNode" + error + noPath },
        { { "get_childNodes" }, [](auto& n) { n.GetChildNodes(); }, L"IXMLDOMNode::get_childNodes" + error + path },
        { { "nextNode" }, [](auto& n) { n.GetChildNodes(); }, L"IXMLDOMNodeList::nextNode" + error },
        { { "selectNodes" },
          [&](auto& n) { n.GetElems(strName.Get(), true); },
          L"IXMLDOMNode::selectNodes" + error + L" | bstrPattern: k | bRequired: <true>" + path },
        { { "get_attributes" }, [](auto& n) { n.GetAttrs(); }, L"IXMLDOMElement::get_attributes" + error + path },
        { { "getNamedItem" },
          [&](auto& n) { n.GetAttr(strName.Get(), true); },
          L"IXMLDOMNamedNodeMap::getNamedItem" + error + L" | bstrAttrNm: k | bRequired: <true>" + path },
        { { "get_nodeTypedValue", "get_text" },
          [&](auto& n) { n.GetAttrValueVar(strName.Get()); },
          L"IXMLDOMNode::get_nodeTypedValue() | Method: IXMLDOMNode::get_nodeValue()" + error + path },
        { { "cloneNode" },
          [](auto& n) {
              COvXmlNode copy;
              n.CloneNode(copy, CloneDeep);
          },
          L"IXMLDOMNode::cloneNode" + error + L" | cloneType: 2" + noPath },
        { { "removeAttribute" },
          [](auto& n) { n.CloneNodeElementOnly(); },
          L"IXMLDOMElement::removeAttribute" + error + L" | strAttrName: k" + path },
    };
    for (const auto& row : rows)
    {
        const COvXmlNode node = Element();
        const CFailingCalls failing(row.calls, E_UNEXPECTED, L"told");
        EXPECT_EQ(L"0x8000ffff OvXmlNode | Method: " + row.evidence + L" | Error Object Info: told",
                  Raised([&] { row.work(node); }));
    }
}

TEST_F(OvXmlFailure, WhatIsNotRequiredDoesNotFail)
{
    const COvXmlNode node = Element();
    const COvBstr strName(L"k");
    {
        const CFailingCalls failing({ "getNamedItem" }, E_UNEXPECTED, nullptr);
        EXPECT_EQ(nullptr, node.GetAttr(strName.Get(), false).Get());
    }
    {
        const CFailingCalls failing({ "get_nodeTypedValue" }, E_UNEXPECTED, nullptr);
        EXPECT_EQ(L"1", TextOf(node.GetAttrValueStr(strName.Get())));
    }
    const CFailingCalls failing({ "selectNodes" }, S_FALSE, nullptr);
    EXPECT_EQ(0u, node.GetElems(strName.Get(), false).size());
    EXPECT_EQ(L"0x1 OvXmlNode | Method: IXMLDOMNode::selectNodes | " + ErrorItem(L"Win32 Error", S_FALSE) +
                  L" | bstrPattern: k | bRequired: <true> | Node Path: \n<r/> <e k=\"1\"/> | " + NO_ERROR_OBJECT,
              Raised([&] { node.GetElems(strName.Get(), true); }));
}

TEST_F(OvXmlFailure, AnInterfaceThatIsRefusedIsAFailure)
{
    const COvXmlNode node = Element();
    COvXmlDocument document(node.Get(), XmlParser6);
    EXPECT_EQ(L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: # | pOut: # | "
              L"Current IID:: {00000000-0000-0000-C000-000000000046} | "
              L"Request IID:: {2933BF81-7B36-11D2-B20E-00C04F983E60} | Request Nm:: IXMLDOMDocument | " +
                  ErrorItem(L"hr", E_NOINTERFACE),
              RaisedMasked([&] { document.PreserveWhitespace(); }));
}

TEST_F(OvXmlFailure, AListThatFailsKeepsItsNodes)
{
    const COvXmlNode node = Element();
    COvXmlNodeList nodes = node.GetChildNodes();
    ASSERT_EQ(1u, nodes.size());
    COvComPtr<IXMLDOMNodeList> spList;
    {
        const CFailingCalls failing({ "nextNode" }, E_UNEXPECTED, nullptr);
        ASSERT_EQ(S_OK, node.Get()->get_childNodes(spList.Receive()));
        EXPECT_NE(L"nothing", Raised([&] { nodes.Populate(spList.Get()); }));
    }
    EXPECT_EQ(1u, nodes.size());

    COvComPtr<IXMLDOMNode> spHeld; // so that the list need not allocate it
    ASSERT_EQ(S_OK, spList->get_item(0, spHeld.Receive()));
    const std::wstring raised = Raised([&] {
        const CFailingNew failing(1);
        nodes.Populate(spList.Get());
    });
    EXPECT_EQ(L"0x80004005 OvXmlNode | Exception Info:  | { | Code: STL EXCEPTION | Description: | std::bad_alloc | }",
              raised);
    EXPECT_EQ(1u, nodes.size());
}

namespace
{

/// An element without a text of its own, with a given number of such ancestors.
class CDeepNode final : public CNodeOperations<IXMLDOMNode, IID_IXMLDOMNode>
{
public:
    CDeepNode(const COvComPtr<IXMLDOMNode>& spReal, unsigned nAncestors)
        : CNodeOperations(spReal), m_nAncestors(nAncestors)
    {
    }

    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** pp) override
    {
        *pp = m_nAncestors == 0
                  ? nullptr
                  : COvComPtr<IXMLDOMNode>(new CDeepNode(COvComPtr<IXMLDOMNode>(Real()), m_nAncestors - 1)).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL, IXMLDOMNode** pp) override
    {
        *pp = COvComPtr<IXMLDOMNode>(this).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR* p) override
    {
        *p = COvBstr(m_nAncestors % 40000 == 0 ? L"<a></a>" : L"").Detach();
        return S_OK;
    }

private:
    const unsigned m_nAncestors;
};

} // namespace

TEST_F(OvXmlFailure, APathOfManyAncestorsNeedsNoStack)
{
    const COvComPtr<IXMLDOMNode> spReal(Find(Loaded(L"<a/>"), L"/a").Get());
    const COvXmlNode deep(COvComPtr<IXMLDOMNode>(new CDeepNode(spReal, 80000)));
    const CFailingCalls failing({ "get_text" }, E_FAIL, L"told");
    EXPECT_EQ(L"0x80004005 OvXmlNode | Method: IXMLDOMNode::get_text | " + ErrorItem(L"Win32 Error", E_FAIL) +
                  L" | Node Path: \n<a> <a>  <a> | Error Object Info: told",
              Raised([&] { deep.GetText(); }));
}

TEST_F(OvXmlFailure, EveryCallOfADocumentIsReported)
{
    const std::wstring error = L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nNo reason available.\nSource:\n"
                               L"No source available.\n\n";
    const std::wstring hr = ErrorItem(L"hr", E_UNEXPECTED);
    const COvBstr strText(L"<b/>");
    const struct
    {
        const char* szCall;
        std::function<void(COvXmlDocument&)> work;
        std::wstring evidence;
    } rows[] = {
        { "setProperty", [&](auto& d) { d.SetProperty(strText.Get(), _variant_t(true)); },
          L"IXMLDOMDocument2::setProperty | Parser version: DOM 6 | bstrName: <b/> | " + hr },
        { "put_preserveWhiteSpace", [](auto& d) { d.PreserveWhitespace(); },
          L"IXMLDOMDocument::put_preserveWhiteSpace" },
        { "loadXML", [&](auto& d) { d.LoadXML(strText.Get(), !bIsFile, bThrow, !bPreserveWhitespace); },
          L"IXMLDOMDocument::loadXML() | pDoc: # | bstrXml: <b/> | XML Parse Error: " + error + L" | " + hr },
        { "load", [&](auto& d) { d.LoadXML(strText.Get(), bIsFile, bThrow, !bPreserveWhitespace); },
          L"IXMLDOMDocument::load() | vSource.vt: 8 | pDoc: # | XML Parse Error: " + error + L" | " + hr },
    };
    for (const auto& row : rows)
    {
        COvXmlDocument document = Loaded(L"<a/>");
        const CFailingCalls failing({ row.szCall }, E_UNEXPECTED, L"told");
        EXPECT_EQ(L"0x8000ffff OvXmlDocument | Msg: A COM method call failed. | Method: " + row.evidence +
                      L" | Error Object Info: told",
                  RaisedMasked([&] { row.work(document); }));
        EXPECT_EQ(L"<a/>\r\n", TextOf(document.GetXML()));
    }
}

TEST_F(OvXmlFailure, ADocumentTellsItsParseErrorInPlaceOfAPath)
{
    const COvXmlDocument document = Loaded(L"<a/>");
    const CFailingCalls failing({ "get_childNodes" }, E_FAIL, nullptr);
    EXPECT_EQ(L"0x80004005 OvXmlNode | Method: IXMLDOMNode::get_childNodes | " + ErrorItem(L"Win32 Error", E_FAIL) +
                  L" | XML Parse Error: " + document.GetParseError() + L" | " + NO_ERROR_OBJECT,
              Raised([&] { document.GetChildNodes(); }));
}

TEST_F(OvXmlFailure, WhatAParseErrorDoesNotTellIsSaid)
{
    COvXmlDocument document = Loaded(L"<a/>");
    EXPECT_FALSE(document.LoadDoc(COvBstr(L"\n<b>").Get(), !bThrow));
    const std::wstring reason = L"The following tags were not closed: b.\r\n";
    const struct
    {
        std::set<std::string> calls;
        HRESULT hr;
        std::wstring text;
    } rows[] = {
        { {}, E_FAIL, L"\nFile Pos:4\nLine: 2   Line Pos: 4\n\nReason:\n" + reason + L"\nSource:\n<b>\n\n" },
        { { "get_reason", "get_srcText", "get_line" },
          E_FAIL,
          L"\nFile Pos:4\nLine: 0   Line Pos: 4\n\nReason:\nUnable to retrieve reason.\nSource:\n"
          L"Unable to retrieve source.\n\n" },
        { { "get_reason", "get_srcText", "get_line" },
          S_FALSE,
          L"\nFile Pos:4\nLine: 0   Line Pos: 4\n\nReason:\nNo reason available.\nSource:\nNo source available.\n\n" },
        { { "get_parseError" },
          E_FAIL,
          L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nUnable to retrieve the XML parse error(s).\nSource:\n"
          L"n/a\n\n" },
    };
    for (const auto& row : rows)
    {
        const CFailingCalls failing(row.calls, row.hr, nullptr);
        EXPECT_EQ(row.text, document.GetParseError());
    }
}

TEST_F(OvXmlFailure, AFailedCreationLeavesTheDocumentAsItWas)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    for (const char* szCall : { "setProperty", "QueryInterface" })
    {
        const CFailingCalls failing({ szCall }, E_FAIL, nullptr);
        EXPECT_NE(L"nothing", Raised([&] { document.Create(); }));
        EXPECT_EQ(nullptr, document.Get());
        EXPECT_EQ(XmlParserBest, document.GetParserVersion());
    }
}

namespace
{

/// Leaves only the named generations of the parser creatable while it lives.
class CAvailableParsers
{
public:
    explicit CAvailableParsers(const std::set<LONG>& versions) { Set(versions); }
    ~CAvailableParsers() { Set({ XmlParser3, XmlParser4, XmlParser6 }); }

private:
    static void Set(const std::set<LONG>& versions)
    {
        OvPlatform::SetClassAvailable(CLSID_DOMDocument30, versions.count(XmlParser3) != 0);
        OvPlatform::SetClassAvailable(CLSID_DOMDocument40, versions.count(XmlParser4) != 0);
        OvPlatform::SetClassAvailable(CLSID_DOMDocument60, versions.count(XmlParser6) != 0);
    }
};

} // namespace

TEST_F(OvXmlFailure, TheNewestParserThatThereIsIsTaken)
{
    const struct
    {
        std::set<LONG> available;
        LONG nAsked;
        LONG nCreated; // 0: none
        const wchar_t* szAsked;
    } rows[] = {
        { { 3, 4, 6 }, XmlParserBest, XmlParser6, nullptr },
        { { 3, 4 }, XmlParserBest, XmlParser4, nullptr },
        { { 3 }, XmlParserBest, XmlParser3, nullptr },
        { {}, XmlParserBest, 0, L"Best DOM version" },
        { { 3, 4, 6 }, XmlParser4, XmlParser4, nullptr },
        { { 3, 4, 6 }, XmlParser3, XmlParser3, nullptr },
        { { 3, 4 }, XmlParser6, 0, L"DOM 6" },
        { { 3, 6 }, XmlParser4, 0, L"DOM 4" },
        { { 4, 6 }, XmlParser3, 0, L"DOM 3" },
    };
    for (const auto& row : rows)
    {
        const CAvailableParsers parsers(row.available);
        COvXmlDocument document(nullptr, row.nAsked);
        const std::wstring failure = L"0x80004005 OvXmlDocument | Info Msg: Unable to CoCreate the XML DOM. | " +
                                     ErrorItem(L"hr", REGDB_E_CLASSNOTREG) + L" | Parser version: ";
        EXPECT_EQ(row.nCreated != 0 ? L"nothing" : failure + row.szAsked, Raised([&] {
                      document.LoadXML(COvBstr(L"<a><b k=\"1\"/></a>").Get(), !bIsFile, bThrow, !bPreserveWhitespace);
                      EXPECT_EQ(1u, document.SearchForNodes(COvBstr(L"/a/b[@k='1']").Get()).size());
                  }));
        EXPECT_EQ(row.nCreated != 0 ? row.nCreated : row.nAsked, document.GetParserVersion());
    }
}
