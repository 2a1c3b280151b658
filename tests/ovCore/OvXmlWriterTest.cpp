#include "OvXmlWriter.h"

#include "FailingNew.h"
#include "PlainEscape.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <random>

namespace
{

using Operations = void (*)(COvXmlWriter&);

const wchar_t s_szDeclaration[] = L"version=\"1.0\" encoding=\"utf-8\"";

std::wstring Written(Operations write)
{
    COvXmlWriter writer(true);
    write(writer);
    const std::wstring strText = writer.ToStringW();
    EXPECT_EQ(strText, writer.ToString());
    return strText;
}

std::wstring Repeated(const std::wstring& strText, size_t nTimes)
{
    std::wstring strResult;
    for (size_t i = 0; i < nTimes; ++i)
        strResult += strText;
    return strResult;
}

/// The tree as it is described: nodes by value, rendered by recursion.
struct CModelNode
{
    std::wstring strBefore; // a whole leaf, or the qualified name of an element
    bool bElement = false;
    CModelNode* pParent = nullptr;
    std::wstring strAttributes;
    std::list<CModelNode> children;

    std::wstring Render() const
    {
        std::wstring strChildren;
        for (const CModelNode& child : children)
            strChildren += child.Render();
        return bElement ? L"<" + strBefore + strAttributes + L">" + strChildren + L"</" + strBefore + L">"
                        : strBefore + strChildren;
    }

    CModelNode* Add(const std::wstring& strText, bool bIsElement)
    {
        children.emplace_back();
        children.back().strBefore = strText;
        children.back().bElement = bIsElement;
        children.back().pParent = this;
        return &children.back();
    }
};

/// A writer and its model, driven together.
class CModelledWriter
{
public:
    COvXmlWriter writer{ false };

    /// One step; checks that it is refused exactly when the model's open node does not allow it.
    void Step(unsigned nOperation, const std::wstring& s, const std::wstring& t, bool bEscape)
    {
        const bool bElement = m_pOpen != nullptr && m_pOpen->bElement;
        const std::wstring strValue = bEscape ? PlainEscape(t) : t;
        switch (nOperation)
        {
        case 0:
            writer.WriteStartDocument();
            m_document = CModelNode();
            m_pOpen = &m_document;
            break;
        case 1:
            if (Allowed(m_pOpen != nullptr && !bElement,
                        [&] { writer.WriteProcessingInstruction(s.c_str(), t.c_str()); }))
                m_pOpen->Add(L"<?" + s + L" " + t + L"?>", false);
            break;
        case 2:
            if (Allowed(m_pOpen != nullptr,
                        [&] { writer.WriteStartElement(s.c_str(), bEscape ? t.c_str() : nullptr); }))
                m_pOpen = m_pOpen->Add(bEscape ? t + L":" + s : s, true);
            break;
        case 3:
            if (Allowed(bElement, [&] { writer.WriteNameSpace(s.c_str(), t.c_str(), bEscape); }))
                m_pOpen->strAttributes += (s.empty() ? L" xmlns=\"" : L" xmlns:" + s + L"=\"") + strValue + L"\"";
            break;
        case 4:
            if (Allowed(bElement, [&] { writer.WriteAttr(s, t, bEscape); }))
                m_pOpen->strAttributes += L" " + s + L"=\"" + strValue + L"\"";
            break;
        case 5:
            if (Allowed(m_pOpen != nullptr, [&] { writer.WriteString(t, bEscape); }))
                m_pOpen->Add(strValue, false);
            break;
        case 6:
            if (Allowed(m_pOpen != nullptr, [&] { writer.WriteCData(t.c_str()); }))
                m_pOpen->Add(L"<![CDATA[" + t + L"]]>", false);
            break;
        default:
            if (Allowed(m_pOpen != nullptr, [&] { writer.WriteEndElement(); }))
                m_pOpen = m_pOpen->pParent;
        }
    }

    std::wstring Expected() const { return m_document.Render(); }

private:
    template <class Work>
    static bool Allowed(bool bExpected, Work&& work)
    {
        EXPECT_EQ(bExpected, Raised(work) == L"nothing");
        return bExpected;
    }

    CModelNode m_document;
    CModelNode* m_pOpen = nullptr;
};

std::wstring RandomText(std::mt19937& random)
{
    static const wchar_t s_units[] = { L'a', L'b', L' ', L'<', L'&', L'"', 0xE9, 0xD83D, 0xDE00, L'\n' };
    // Now and then a text that is longer than a block of the writer's memory.
    const size_t nLength = random() % 97 == 0 ? 3000 + random() % 3000 : random() % 12;
    std::wstring strText;
    for (size_t i = 0; i < nLength; ++i)
        strText += s_units[random() % std::size(s_units)];
    return strText;
}

} // namespace

TEST(OvXmlWriter, RendersEachNodeAsItIsWritten)
{
    const struct
    {
        const wchar_t* szExpected;
        Operations write;
    } rows[] = {
        { L"", [](COvXmlWriter&) {} },
        { L"<a></a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a", nullptr);
              w.WriteEndElement();
          } },
        { L"<p:a></p:a>", [](COvXmlWriter& w) { w.WriteStartElement(L"a", L"p"); } },
        { L"<:a></:a>", [](COvXmlWriter& w) { w.WriteStartElement(L"a", L""); } },
        { L"<></>", [](COvXmlWriter& w) { w.WriteStartElement(L""); } },
        { L"<a xmlns=\"v\" xmlns:p=\"&lt;\" xmlns:q=\"<\"></a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteNameSpace(L"", L"v", true);
              w.WriteNameSpace(L"p", L"<", true);
              w.WriteNameSpace(L"q", L"<", false);
          } },
        { L"<a n=\"42\" m=\"-1234567\" t=\"1\" w=\"&lt;\" r=\"<\" s=\"x\" f=\"1.5\" u=\"18446744073709551615\"></a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteAttr(L"n", 42, true);
              w.WriteAttr(L"m", LONG{ -1234567 }, false);
              w.WriteAttr(L"t", true, true);
              w.WriteAttr(L"w", std::wstring(L"<"), true);
              w.WriteAttr(L"r", L"<", false);
              wchar_t szMutable[] = L"x";
              w.WriteAttr(L"s", szMutable, true);
              w.WriteAttr(L"f", 1.5, true);
              w.WriteAttr(L"u", uint64_t{ 18446744073709551615u }, true);
          } },
        { L"<a n=\"v\" m=\"\"><b></b>t<c></c></a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteAttrW(L"n", L"v", true);
              w.WriteStartElement(L"b");
              w.WriteEndElement();
              w.WriteStringW(L"t", true);
              w.WriteStartElement(L"c");
              w.WriteEndElement();
              w.WriteAttrW(L"m", L"", true); // late, but in the start tag
          } },
        { L"<a>\"&quot;<&lt;</a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteStringW(L"\"", false);
              w.WriteStringW(L"\"", true);
              w.WriteString(L"<", false);
              w.WriteString(L"<", true);
          } },
        { L"<![CDATA[<&\x00E9]]>]]>", [](COvXmlWriter& w) { w.WriteCData(L"<&\x00E9]]>"); } },
        { L"<?a ?><r></r><?b <c>?>text",
          [](COvXmlWriter& w) {
              w.WriteProcessingInstruction(L"a", L"");
              w.WriteStartElement(L"r");
              w.WriteEndElement();
              w.WriteProcessingInstruction(L"b", L"<c>"); // at the document's level again
              w.WriteStringW(L"text", true);
          } },
        { L"<a:&<>></a:&<>>", [](COvXmlWriter& w) { w.WriteStartElement(L"&<>", L"a"); } }, // names are not checked
        { L"<a n=\"&#x01F600;&#x00E9;\">&#xD83D;x</a>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteAttrW(L"n", L"\xD83D\xDE00\x00E9", true);
              w.WriteStringW(L"\xD83Dx", true);
          } },
        { L"<?xml version=\"1.0\" encoding=\"utf-8\"?><status xmlns=\"urn:x\" type=\"patch\"><item a=\"1 &lt; 2\">"
          L"x&amp;y</item></status>",
          [](COvXmlWriter& w) {
              w.WriteProcessingInstruction(L"xml", s_szDeclaration);
              w.WriteStartElement(L"status", nullptr);
              w.WriteNameSpace(L"", L"urn:x", true);
              w.WriteStartElement(L"item", nullptr);
              w.WriteAttr(L"a", L"1 < 2", true);
              w.WriteStringW(L"x&y", true);
              w.WriteEndElement();
              w.WriteAttr(L"type", L"patch", true);
              w.WriteEndElement();
          } },
        { L"<new></new>",
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"old");
              w.WriteStartDocument();
              w.WriteStartElement(L"new");
          } },
        { L"<a n=\"x\">x</a>", // a text ends at its first zero
          [](COvXmlWriter& w) {
              w.WriteStartElement(L"a");
              w.WriteAttr(std::wstring(L"n\0m", 3), std::wstring(L"x\0y", 3), true);
              w.WriteString(std::wstring(L"x\0y", 3), true);
          } },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szExpected, Written(row.write));
}

TEST(OvXmlWriter, RefusesWhatTheOpenNodeDoesNotAllow)
{
    const Operations none = [](COvXmlWriter&) {};
    const Operations document = [](COvXmlWriter& w) { w.WriteStartDocument(); };
    const Operations element = [](COvXmlWriter& w) {
        w.WriteStartDocument();
        w.WriteStartElement(L"open");
    };
    const Operations closed = [](COvXmlWriter& w) {
        w.WriteStartDocument();
        w.WriteStartElement(L"open");
        w.WriteEndElement();
        w.WriteEndElement();
    };
    const Operations instruct = [](COvXmlWriter& w) { w.WriteProcessingInstruction(L"n", L"t"); };
    const Operations start = [](COvXmlWriter& w) { w.WriteStartElement(L"n", L"p"); };
    const Operations nameSpace = [](COvXmlWriter& w) { w.WriteNameSpace(L"", L"v", true); };
    const Operations attribute = [](COvXmlWriter& w) { w.WriteAttr(L"n", 5, true); };
    const Operations text = [](COvXmlWriter& w) { w.WriteString(L"t", false); };
    const Operations cData = [](COvXmlWriter& w) { w.WriteCData(L"t"); };
    const Operations end = [](COvXmlWriter& w) { w.WriteEndElement(); };
    const std::wstring strNone = L" | Prev Node Type: {unknown - no document}";
    const std::wstring strDocument = L" | Prev Node Type: typeDocStart";
    const struct
    {
        Operations before;
        Operations refused;
        std::wstring evidence;
    } rows[] = {
        { none, instruct,
          L"Cannot create a processing instruction. There is no document. | tzPiName: n | tzPiText: t" + strNone },
        { closed, instruct,
          L"Cannot create a processing instruction. There is no document. | tzPiName: n | tzPiText: t" + strNone },
        { element, instruct,
          L"Cannot write processing instruction. These must be created at the document level before all elements. | "
          L"tzPiName: n | tzPiText: t | Prev Node Type: typeElemStart" },
        { none, start, L"Cannot open an element. There is no document. | tzElemName: n" + strNone },
        { closed, start, L"Cannot open an element. There is no document. | tzElemName: n" + strNone },
        { none, nameSpace,
          L"Cannot add a namespace. Previous node was not an element. | tzPrefix:  | tzValue: v" + strNone },
        { document, nameSpace,
          L"Cannot add a namespace. Previous node was not an element. | tzPrefix:  | tzValue: v" + strDocument },
        { closed, attribute,
          L"Cannot add an attribute. Previous node was not an element. | tzAttrName: n | wzAttrValue: 5" + strNone },
        { document, attribute,
          L"Cannot add an attribute. Previous node was not an element. | tzAttrName: n | wzAttrValue: 5" +
              strDocument },
        { none, text, L"Cannot add a string. Previous node was not a document or element. | wzText: t" + strNone },
        { closed, cData,
          L"Cannot add a CData section. Previous node was not a document or element. | tzText: t" + strNone },
        { none, end, L"Cannot close an element. There is no document." + strNone },
        { closed, end, L"Cannot close an element. There is no document." + strNone },
    };
    for (const auto& row : rows)
    {
        COvXmlWriter writer(false);
        row.before(writer);
        const std::wstring strBefore = writer.ToStringW();
        EXPECT_EQ(L"0x80004005 OvXmlWriter | Info Msg: " + row.evidence, Raised([&] { row.refused(writer); }));
        EXPECT_EQ(strBefore, writer.ToStringW()) << row.evidence;
    }
}

TEST(OvXmlWriter, ARequiredTextThatIsNullIsRefused)
{
    const struct
    {
        const wchar_t* szName;
        Operations write;
    } rows[] = {
        { L"tzPiName", [](COvXmlWriter& w) { w.WriteProcessingInstruction(nullptr, L""); } },
        { L"tzPiText", [](COvXmlWriter& w) { w.WriteProcessingInstruction(L"", nullptr); } },
        { L"tzElemName", [](COvXmlWriter& w) { w.WriteStartElement(nullptr, L""); } },
        { L"tzPrefix", [](COvXmlWriter& w) { w.WriteNameSpace(nullptr, L"", true); } },
        { L"tzValue", [](COvXmlWriter& w) { w.WriteNameSpace(L"", nullptr, true); } },
        { L"tzAttrName", [](COvXmlWriter& w) { w.WriteAttrW(nullptr, L"", true); } },
        { L"wzAttrValue", [](COvXmlWriter& w) { w.WriteAttrW(L"", nullptr, true); } },
        { L"wzText", [](COvXmlWriter& w) { w.WriteStringW(nullptr, true); } },
        { L"tzText", [](COvXmlWriter& w) { w.WriteCData(nullptr); } },
    };
    for (const auto& row : rows)
    {
        COvXmlWriter writer(true);
        EXPECT_EQ(L"0x80070057 OvXmlWriter | Info Msg: Invalid pointer | " + std::wstring(row.szName) + L": 0",
                  Raised([&] { row.write(writer); }));
        EXPECT_EQ(L"", writer.ToStringW());
    }
}

TEST(OvXmlWriter, AnySequenceOfOperationsRendersAsItsModel)
{
    for (unsigned nSeed = 1; nSeed <= 60; ++nSeed)
    {
        std::mt19937 random(nSeed);
        CModelledWriter both;
        for (unsigned nStep = 0; nStep < 400; ++nStep)
        {
            const unsigned nDraw = random() % 80; // a document lasts for some eighty steps
            const unsigned nOperation = nDraw == 0 ? 0 : 1 + nDraw % 7;
            both.Step(nOperation, RandomText(random), RandomText(random), random() % 2 == 0);
            if (nStep % 13 == 0)
            {
                ASSERT_EQ(both.Expected(), both.writer.ToStringW()) << "seed " << nSeed << ", step " << nStep;
            }
        }
    }
}

TEST(OvXmlWriter, DepthCostsNoStack)
{
    constexpr size_t DEPTH = 100000;
    COvXmlWriter writer(true);
    for (size_t i = 0; i < DEPTH; ++i)
        writer.WriteStartElement(L"e", nullptr);
    writer.WriteStringW(L"x", true);
    EXPECT_EQ(Repeated(L"<e>", DEPTH) + L"x" + Repeated(L"</e>", DEPTH), writer.ToStringW());
    for (size_t i = 0; i <= DEPTH; ++i)
        writer.WriteEndElement();
    EXPECT_EQ(L"0x80004005 OvXmlWriter | Info Msg: Cannot close an element. There is no document. | Prev Node Type: "
              L"{unknown - no document}",
              Raised([&] { writer.WriteEndElement(); }));
}

TEST(OvXmlWriter, WithoutMemoryTheDocumentStaysAsItWas)
{
    const std::wstring strLong(5000, L'&'); // needs a block of its own
    const std::function<void(COvXmlWriter&)> operations[] = {
        [](COvXmlWriter& w) { w.WriteStartDocument(); },
        [&](COvXmlWriter& w) { w.WriteStartElement(strLong.c_str(), strLong.c_str()); },
        [&](COvXmlWriter& w) { w.WriteAttrW(L"n", strLong.c_str(), true); },
        [&](COvXmlWriter& w) { w.WriteStringW(strLong.c_str(), true); },
        [](COvXmlWriter& w) { w.ToStringW(); },
    };
    for (const auto& operation : operations)
    {
        unsigned nFailures = 0;
        for (bool bReached = true; bReached; ++nFailures)
        {
            COvXmlWriter writer(true);
            writer.WriteStartElement(L"a");
            writer.WriteStringW(L"some text", true);
            {
                const CFailingNew failing(nFailures + 1);
                try
                {
                    operation(writer);
                }
                catch (const std::bad_alloc&)
                {
                }
                bReached = failing.Reached();
            }
            if (!bReached)
                break;
            writer.WriteAttrW(L"n", L"v", true); // the open node is what it was
            EXPECT_EQ(L"<a n=\"v\">some text</a>", writer.ToStringW()) << nFailures;
        }
        EXPECT_LE(1u, nFailures);
    }
}
