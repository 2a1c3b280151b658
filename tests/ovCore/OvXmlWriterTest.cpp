#include "OvXmlWriter.h"

#include "FailingNew.h"
#include "PlainEscape.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

namespace
{

using Text = const wchar_t*;
using Operation = void (*)(COvXmlWriter&, Text, Text, bool);

const std::map<wchar_t, Operation> s_operations = {
    { L'D', [](COvXmlWriter& w, Text, Text, bool) { w.WriteStartDocument(); } },
    { L'I', [](COvXmlWriter& w, Text a, Text b, bool) { w.WriteProcessingInstruction(a, b); } },
    { L'E', [](COvXmlWriter& w, Text a, Text b, bool) { w.WriteStartElement(a, b); } },
    { L'N', [](COvXmlWriter& w, Text a, Text b, bool bEscape) { w.WriteNameSpace(a, b, bEscape); } },
    { L'A', [](COvXmlWriter& w, Text a, Text b, bool bEscape) { w.WriteAttrW(a, b, bEscape); } },
    { L'T', [](COvXmlWriter& w, Text a, Text, bool bEscape) { w.WriteStringW(a, bEscape); } },
    { L'C', [](COvXmlWriter& w, Text a, Text, bool) { w.WriteCData(a); } },
    { L'.', [](COvXmlWriter& w, Text, Text, bool) { w.WriteEndElement(); } },
};

/// Makes the steps of a script, "D|Ename=prefix|Aname=value|.": the operation, '~' where its value is not escaped, and
/// its texts, of which "0" and one that is left out are null.
void Play(COvXmlWriter& writer, const std::wstring& strScript)
{
    std::wistringstream script(strScript);
    for (std::wstring strStep; std::getline(script, strStep, L'|');)
    {
        const bool bEscape = strStep[1] != L'~';
        const size_t nBreak = std::min(strStep.find(L'='), strStep.size());
        const std::wstring str0 = strStep.substr(bEscape ? 1 : 2, nBreak - (bEscape ? 1 : 2));
        const std::wstring str1 = nBreak == strStep.size() ? L"0" : strStep.substr(nBreak + 1);
        const auto orNull = [](const std::wstring& str) { return str == L"0" ? nullptr : str.c_str(); };
        s_operations.at(strStep[0])(writer, orNull(str0), orNull(str1), bEscape);
    }
}

} // namespace

TEST(OvXmlWriter, RendersEachNodeAsItIsWritten)
{
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        { L"D", L"" },
        { L"D|Ea|.|.", L"<a></a>" }, // the document is closed too
        { L"D|Eold|D|Ea=p|Eb=|E", L"<p:a><:b><></></:b></p:a>" },
        { L"D|Ea|N=v|An=\"|Eb|.|Np=<|Tt|Am=|Ec|.|N~q=<|A~o=<",
          L"<a xmlns=\"v\" n=\"&quot;\" xmlns:p=\"&lt;\" m=\"\" xmlns:q=\"<\" o=\"<\"><b></b>t<c></c></a>" },
        { L"D|E&<>=a|T~\"|T\"\xD83D\xDE00|T~<&\x00E9|C<&\x00E9]]>",
          L"<a:&<>>\"&quot;&#x01F600;<&\x00E9<![CDATA[<&\x00E9]]>]]></a:&<>>" },
        { L"D|Ia=|Er|.|Ib=<c>|Ttext|C", L"<?a ?><r></r><?b <c>?>text<![CDATA[]]>" },
        { L"D|Ixml=version=\"1.0\" encoding=\"utf-8\"|Estatus|N=urn:x|Eitem|Aa=1 < 2|Tx&y|.|Atype=patch|.",
          L"<?xml version=\"1.0\" encoding=\"utf-8\"?><status xmlns=\"urn:x\" type=\"patch\"><item a=\"1 &lt; 2\">"
          L"x&amp;y</item></status>" },
    };
    for (const auto& [szScript, szExpected] : rows)
    {
        COvXmlWriter writer(false);
        Play(writer, szScript);
        EXPECT_EQ(szExpected, writer.ToStringW());
        EXPECT_EQ(szExpected, writer.ToString());
    }
}

TEST(OvXmlWriter, WritesAValueOfAnyType)
{
    COvXmlWriter writer(true);
    writer.WriteStartElement(L"a");
    writer.WriteAttr(L"n", -1234567, true);
    writer.WriteAttr(L"r", L"<", false);
    writer.WriteAttr(std::wstring(L"w\0m", 3), std::wstring(L"<\0y", 3), true); // a text ends at its first zero
    writer.WriteString(std::wstring(L"<\0y", 3), true);
    EXPECT_EQ(L"<a n=\"-1234567\" r=\"<\" w=\"&lt;\">&lt;</a>", writer.ToStringW());
}

TEST(OvXmlWriter, RefusesWhatTheOpenNodeDoesNotAllow)
{
    const wchar_t szClosed[] = L"D|Eopen|.|.";
    const std::wstring strNone = L" | Prev Node Type: {unknown - no document}";
    const std::wstring strFail = L"0x80004005 OvXmlWriter | Info Msg: Cannot ";
    const std::wstring strPointer = L"0x80070057 OvXmlWriter | Info Msg: Invalid pointer | ";
    const std::tuple<const wchar_t*, const wchar_t*, std::wstring> rows[] = {
        { L"", L"In=t",
          strFail + L"create a processing instruction. There is no document. | tzPiName: n | tzPiText: t" + strNone },
        { L"D|Eopen", L"In=t",
          strFail + L"write processing instruction. These must be created at the document level before all elements. | "
                    L"tzPiName: n | tzPiText: t | Prev Node Type: typeElemStart" },
        { szClosed, L"En=p", strFail + L"open an element. There is no document. | tzElemName: n" + strNone },
        { L"D", L"N=v",
          strFail + L"add a namespace. Previous node was not an element. | tzPrefix:  | tzValue: v | "
                    L"Prev Node Type: typeDocStart" },
        { szClosed, L"An=v",
          strFail + L"add an attribute. Previous node was not an element. | tzAttrName: n | wzAttrValue: v" + strNone },
        { szClosed, L"Tt",
          strFail + L"add a string. Previous node was not a document or element. | wzText: t" + strNone },
        { szClosed, L"Ct",
          strFail + L"add a CData section. Previous node was not a document or element. | tzText: t" + strNone },
        { szClosed, L".", strFail + L"close an element. There is no document." + strNone },
        { L"D", L"Ia=0", strPointer + L"tzPiText: 0" },
        { L"D", L"C0", strPointer + L"tzText: 0" },
    };
    for (const auto& [szBefore, szRefused, strExpected] : rows)
    {
        COvXmlWriter writer(false);
        Play(writer, szBefore);
        const std::wstring strBefore = writer.ToStringW();
        EXPECT_EQ(strExpected, Raised([&writer, szStep = szRefused] { Play(writer, szStep); }));
        EXPECT_EQ(strBefore, writer.ToStringW()) << strExpected;
    }
}

TEST(OvXmlWriter, DepthAndLengthCostNothingElse)
{
    COvXmlWriter writer(true);
    std::wstring strStarts;
    std::wstring strEnds;
    for (size_t i = 0; i < 100000; ++i)
    {
        const size_t nLength = i % 97 == 0 ? i / 20 : 0; // now and then longer than a block of the writer's memory
        writer.WriteStartElement(L"e");
        writer.WriteAttr(L"n", std::wstring(nLength, L'x') + L"<", true);
        strStarts += L"<e n=\"" + std::wstring(nLength, L'x') + L"&lt;\"";
        const bool bLate = i % 1000 == 0; // an attribute that comes when its start tag is long written
        if (bLate)
        {
            writer.WriteString(L"t", true);
            writer.WriteAttr(L"l", L"v", true);
        }
        strStarts += bLate ? L" l=\"v\">t" : L">";
        strEnds += L"</e>";
    }
    EXPECT_TRUE(strStarts + strEnds == writer.ToStringW());
}

TEST(OvXmlWriter, AttributesOfEveryLengthGoToEveryPlace)
{
    COvXmlWriter writer(true);
    writer.WriteStartElement(L"e");
    std::wstring strExpected = L"<e";
    for (size_t nLength = 0; nLength < 120; ++nLength)
        for (const wchar_t* const szLast : { L"", L"<", L"\x80" })
        {
            const std::wstring strName(1 + nLength % 101, L'n');
            const std::wstring strValue = std::wstring(nLength, L'v') + szLast;
            writer.WriteAttr(strName, strValue, true);
            strExpected += L" " + strName + L"=\"" + PlainEscape(strValue) + L"\"";
        }
    EXPECT_EQ(strExpected + L"></e>", writer.ToStringW());
}

TEST(OvXmlWriter, WithoutMemoryAnOperationThrowsAndTheDocumentStaysAsItWas)
{
    const std::wstring strLong(5000, L'&'); // needs a block of its own
    const std::function<void(COvXmlWriter&)> operations[] = {
        [&](COvXmlWriter& w) { w.WriteStartElement(strLong.c_str(), strLong.c_str()); },
        [](COvXmlWriter& w) { w.WriteAttr(L"n", 123456789, false); }, // must not write what the stream could not hold
        [](COvXmlWriter& w) { w.ToStringW(); },
    };
    for (const auto& operation : operations)
        for (unsigned nFail = 1;; ++nFail)
        {
            COvXmlWriter writer(true);
            Play(writer, L"Ea|Tsome text");
            try
            {
                const CFailingNew failing(nFail);
                operation(writer);
                ASSERT_FALSE(failing.Reached()) << &operation - operations << " " << nFail;
                break;
            }
            catch (const std::bad_alloc&)
            {
                writer.WriteAttrW(L"n", L"v", true); // the open node is what it was
                EXPECT_EQ(L"<a n=\"v\">some text</a>", writer.ToStringW()) << &operation - operations;
            }
        }
}

TEST(OvXmlWriter, WithoutMemoryForAnEscapedValueTheValueIsTheEvidence)
{
    const std::wstring strLong(5000, L'&'); // needs a block of its own
    const std::function<void(COvXmlWriter&)> operations[] = {
        [&](COvXmlWriter& w) { w.WriteAttrW(L"n", strLong.c_str(), true); },
        [&](COvXmlWriter& w) { w.WriteNameSpace(L"p", strLong.c_str(), true); },
        [&](COvXmlWriter& w) { w.WriteString(strLong, true); },
    };
    const std::wstring strExpected =
        L"0x80004005 OvXmlDocument | Msg: A Win32 API call failed. | Method: EscapeXML | strToEncode: " + strLong;
    for (const auto& operation : operations)
    {
        std::wstring strRaised;
        for (unsigned nFail = 1;; ++nFail)
        {
            COvXmlWriter writer(true);
            Play(writer, L"Ea|Tsome text");
            strRaised = Raised([&] {
                const CFailingNew failing(nFail);
                operation(writer);
                EXPECT_LT(1u, nFail);
            });
            if (strRaised != strExpected)
                break;
            EXPECT_EQ(L"<a>some text</a>", writer.ToStringW()) << &operation - operations << " " << nFail;
        }
        EXPECT_EQ(L"nothing", strRaised) << &operation - operations;
    }
}
