#include "ovCore/OvXmlEscape.h"
#include "ovCore/OvXmlPieces.h"

#include "FailingNew.h"
#include "PlainEscape.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <random>

TEST(OvXmlEscape, EscapesWhatIsNotPlainAscii)
{
    const std::pair<std::wstring, std::wstring> rows[] = {
        { L"a<b>&\"'", L"a&lt;b&gt;&amp;&quot;&apos;" },
        { L"<", L"&lt;" }, // exactly as long as a buffer of a later attempt
        { L"\x00DCnicode", L"&#x00DC;nicode" },
        { L"\t\n\r\x1F \x7E\x7F\x80\xFFFF", L"&#x0009;&#x000A;&#x000D;&#x001F; ~&#x007F;&#x0080;&#xFFFF;" },
        { std::wstring(L"a\0b", 3), L"a&#x0000;b" },
        { L"\xD800\xDC00\xDBFF\xDFFF\xD83D\xD83D\xDE00\xD83D", L"&#x010000;&#x10FFFF;&#xD83D;&#x01F600;&#xD83D;" },
        { L"\xDE00\xD83D<", L"&#xDE00;&#xD83D;&lt;" },
    };
    for (const auto& [text, escaped] : rows)
        EXPECT_EQ(escaped, COvXmlEscape::Escape(text));
    EXPECT_EQ(8000u, COvXmlEscape::Escape(std::wstring(1000, L'\x00E9')).size());
    const std::wstring strMild = L"<" + std::wstring(1000, L'x');
    EXPECT_EQ(1004u + 16000u, COvXmlEscape::Escape(strMild + std::wstring(2000, L'\x00E9')).size());
}

TEST(OvXmlEscape, AgreesWithThePlainWayForAnyText)
{
    const std::wstring strUnits = L"\t\x1F \"&'<>~\x7F\x80\xE9\xD7FF\xD800\xD83D\xDBFF\xDC00\xDE00\xDFFF\xE000z";
    std::mt19937 random(20261122);
    for (size_t nText = 0; nText < 2000; ++nText)
    {
        std::wstring strText(nText % 331, L'x');
        for (wchar_t& unit : strText)
            if (random() % (nText % 5 * 8 + 1) == 0) // from all of them special to a few
                unit = strUnits[random() % strUnits.size()];
        ASSERT_EQ(PlainEscape(strText), COvXmlEscape::Escape(strText)) << nText;
        for (const size_t nRoom : { PlainEscape(strText).size(), PlainEscape(strText).size() + 1 })
        {
            constexpr size_t GUARD = 64; // units, natively; the address sanitizer looks at the exact buffer
            std::wstring strGuarded(nRoom + GUARD, L'\x2020');
            std::vector<wchar_t> exact(nRoom);
            EscapeXML(strText.data(), strText.size(), strGuarded.data(), nRoom, ESCAPE_ATTRIBUTE);
            EscapeXML(strText.data(), strText.size(), exact.data(), nRoom, ESCAPE_ATTRIBUTE);
            ASSERT_EQ(std::wstring(GUARD, L'\x2020'), strGuarded.substr(nRoom)) << nText;
        }
        std::wstring strRoom(strText.size() * 8, L'\0');
        strRoom.resize(EscapeXML(strText.data(), strText.size(), strRoom.data(), strRoom.size(), 0));
        ASSERT_EQ(PlainEscape(strText, false), strRoom) << nText;
    }
}

TEST(OvXmlEscape, EveryMachineFindsTheSameLengthOfABlock)
{
    std::wstring strText(3 * UNITS_IN_BLOCK, L'x');
    for (size_t nAt = 0; nAt < strText.size(); ++nAt)
        for (const wchar_t cOther : { L'x', L'<', L'\x20AC' })
            for (unsigned c = 0; c <= 0xFFFF; c += c < 0x180 ? 1 : 0x7F)
            {
                strText[nAt] = static_cast<wchar_t>(c);
                strText[(nAt + 5) % strText.size()] = cOther;
                for (size_t nFrom = 0; nFrom < UNITS_IN_BLOCK; nFrom += 3)
                    ASSERT_EQ(BlockLengthPortably(&strText[nFrom], PIECES_WITH_QUOTES),
                              BlockLength(&strText[nFrom], PIECES_WITH_QUOTES))
                        << c << " at " << nAt << ", from " << nFrom;
                strText.assign(strText.size(), L'x');
            }
}

TEST(OvXmlEscape, WritesWhatFitsAndCountsTheRest)
{
    std::wstring strText;
    for (int i = 0; i < 12; ++i)
        strText += L"ab&c\xD83D\xDE00\xD83Dx";
    const std::wstring strWhole = PlainEscape(strText);
    EXPECT_EQ(strWhole.size(), EscapeXML(strText.data(), strText.size(), nullptr, 0, ESCAPE_ATTRIBUTE));
    for (size_t nRoom = 0; nRoom <= strWhole.size() + 1; ++nRoom)
    {
        std::wstring strRoom(nRoom + 2, L'\x2020'); // the last two show a write beyond the room
        const size_t nResult = EscapeXML(strText.data(), strText.size(), strRoom.data(), nRoom, ESCAPE_ATTRIBUTE);
        EXPECT_EQ(nRoom >= strWhole.size() ? strWhole.size() : 0, nResult) << nRoom;
        const size_t nWritten = strRoom.find(L'\x2020');
        EXPECT_TRUE(strWhole.compare(0, nWritten, strRoom, 0, nWritten) == 0 && nWritten <= nRoom) << nRoom;
    }
    EXPECT_THROW(EscapeXML(nullptr, 0, nullptr, 0, ESCAPE_ATTRIBUTE), _com_error);
}

TEST(OvXmlEscape, WithoutMemoryTheInputIsTheEvidence)
{
    for (const std::wstring& strText : { std::wstring(40, L'x'), std::wstring(40, L'<') })
    {
        const std::wstring strExpected =
            L"0x80004005 OvXmlDocument | Msg: A Win32 API call failed. | Method: EscapeXML | strToEncode: " + strText;
        std::wstring strRaised = strExpected;
        for (unsigned nFail = 1; strRaised == strExpected; ++nFail)
            strRaised = Raised([&] {
                const CFailingNew failing(nFail);
                COvXmlEscape::Escape(strText);
                EXPECT_LT(1u, nFail);
            });
        EXPECT_EQ(L"nothing", strRaised);
    }
}
