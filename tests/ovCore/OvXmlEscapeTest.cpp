#include "ovCore/OvXmlEscape.h"

#include "FailingNew.h"
#include "PlainEscape.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

/// A text of units from all the classes that escaping tells apart, surrogates among them.
std::wstring RandomText(std::mt19937& random, size_t nLength)
{
    static const unsigned s_edges[] = { 0,      0x09,   0x0A,   0x0D,   0x1F,   0x20,   0x22,   0x26,   0x27,
                                        0x3C,   0x3E,   0x7E,   0x7F,   0x80,   0xE9,   0xD7FF, 0xD800, 0xD83D,
                                        0xDBFF, 0xDC00, 0xDE00, 0xDFFF, 0xE000, 0xFFFF, L'a',   L'z',   L' ' };
    std::uniform_int_distribution<size_t> edge(0, std::size(s_edges) - 1);
    std::uniform_int_distribution<unsigned> any(0, 0xFFFF);
    std::uniform_int_distribution<int> kind(0, 9);
    std::wstring strText;
    for (size_t i = 0; i < nLength; ++i)
        strText += static_cast<wchar_t>(kind(random) == 0 ? any(random) : s_edges[edge(random)]);
    return strText;
}

std::wstring EscapeIntoRoom(const std::wstring& strText, size_t nRoom, size_t* pnResult)
{
    std::wstring strRoom(nRoom + 2, L'\x2020'); // the last two show a write beyond the room
    *pnResult = EscapeXML(strText.data(), strText.size(), strRoom.data(), nRoom, ESCAPE_ATTRIBUTE);
    return strRoom;
}

} // namespace

TEST(OvXmlEscape, EscapesWhatIsNotPlainAscii)
{
    const struct
    {
        std::wstring text;
        std::wstring escaped;
    } rows[] = {
        { L"", L"" },
        { L"plain ASCII, 100%; ~!", L"plain ASCII, 100%; ~!" },
        { L"a<b>&\"'", L"a&lt;b&gt;&amp;&quot;&apos;" },
        { L"<", L"&lt;" }, // exactly as long as a buffer of a later attempt
        { L"&<", L"&amp;&lt;" },
        { L"&lt;", L"&amp;lt;" },
        { L"\x00DCnicode", L"&#x00DC;nicode" },
        { L"\t\n\r", L"&#x0009;&#x000A;&#x000D;" },
        { L"\x1F \x7E\x7F\x80", L"&#x001F; ~&#x007F;&#x0080;" },
        { std::wstring(L"a\0b", 3), L"a&#x0000;b" },
        { L"\xFFFF", L"&#xFFFF;" },
        { L"\xD83D\xDE00", L"&#x01F600;" },
        { L"\xD800\xDC00\xDBFF\xDFFF", L"&#x010000;&#x10FFFF;" },
        { L"a\xD83D", L"a&#xD83D;" },
        { L"\xD83D\xD83D", L"&#xD83D;&#xD83D;" },
        { L"\xD83D\xD83D\xDE00", L"&#xD83D;&#x01F600;" },
        { L"\xDE00\xD83D", L"&#xDE00;&#xD83D;" },
        { L"\xD83D<", L"&#xD83D;&lt;" },
        { L"\xD83Dx\xDE00", L"&#xD83D;x&#xDE00;" },
        { L"\xD7FF\xE000", L"&#xD7FF;&#xE000;" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.escaped, COvXmlEscape::Escape(row.text));
    std::wstring strReferences;
    for (int i = 0; i < 1000; ++i)
        strReferences += L"&#x00E9;";
    EXPECT_EQ(strReferences, COvXmlEscape::Escape(std::wstring(1000, L'\x00E9')));
}

TEST(OvXmlEscape, AgreesWithThePlainWayForAnyText)
{
    std::mt19937 random(20261122);
    for (size_t nLength = 1; nLength <= 600; ++nLength)
    {
        const std::wstring strText = RandomText(random, nLength % 67 + 1);
        ASSERT_EQ(PlainEscape(strText), COvXmlEscape::Escape(strText)) << "length step " << nLength;
        std::wstring strRoom(strText.size() * 8, L'\0');
        strRoom.resize(EscapeXML(strText.data(), strText.size(), strRoom.data(), strRoom.size(), 0));
        ASSERT_EQ(PlainEscape(strText, false), strRoom) << "length step " << nLength;
    }
}

TEST(OvXmlEscape, WritesWhatFitsAndCountsTheRest)
{
    const std::wstring strText = L"ab&c\xD83D\xDE00\xD83Dx";
    const std::wstring strWhole = PlainEscape(strText);
    ASSERT_EQ(strWhole.size(), EscapeXML(strText.data(), strText.size(), nullptr, 0, ESCAPE_ATTRIBUTE));
    const size_t nPieceEnds[] = { 0, 1, 2, 7, 8, 18, 26, 27 };
    for (size_t nRoom = 0; nRoom <= strWhole.size() + 1; ++nRoom)
    {
        size_t nResult = 0;
        const std::wstring strRoom = EscapeIntoRoom(strText, nRoom, &nResult);
        size_t nWritten = 0;
        for (const size_t nEnd : nPieceEnds)
            nWritten = nEnd <= nRoom ? nEnd : nWritten;
        EXPECT_EQ(nRoom >= strWhole.size() ? strWhole.size() : 0, nResult) << nRoom;
        EXPECT_EQ(strWhole.substr(0, nWritten), strRoom.substr(0, nWritten)) << nRoom;
        EXPECT_EQ(std::wstring(strRoom.size() - nWritten, L'\x2020'), strRoom.substr(nWritten)) << nRoom;
    }
}

TEST(OvXmlEscape, NoTextAtAllIsRefusedWithTheComCode)
{
    try
    {
        EscapeXML(nullptr, 0, nullptr, 0, ESCAPE_ATTRIBUTE);
        ADD_FAILURE() << "not refused";
    }
    catch (const _com_error& e)
    {
        EXPECT_EQ(E_FAIL, e.Error());
    }
}

TEST(OvXmlEscape, WithoutMemoryTheInputIsTheEvidence)
{
    for (const std::wstring& strText : { std::wstring(40, L'x'), std::wstring(40, L'<') })
    {
        unsigned nFailures = 0;
        for (bool bReached = true; bReached; ++nFailures)
        {
            const std::wstring strRaised = Raised([&] {
                const CFailingNew failing(nFailures + 1);
                try
                {
                    COvXmlEscape::Escape(strText);
                    bReached = failing.Reached();
                }
                catch (...)
                {
                    bReached = true;
                    throw;
                }
            });
            const std::wstring strExpected =
                L"0x80004005 OvXmlDocument | Msg: A Win32 API call failed. | Method: EscapeXML | strToEncode: " +
                strText;
            EXPECT_EQ(bReached ? strExpected : L"nothing", strRaised) << nFailures;
        }
        EXPECT_LE(2u, nFailures);
    }
}
