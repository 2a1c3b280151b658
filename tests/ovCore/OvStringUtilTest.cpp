#include "ovCore/OvStringUtil.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

TEST(OvStringUtil, ConvertsBetweenTheHostsTextAndOurs)
{
    const std::tuple<std::wstring, std::string, bool> rows[] = {
        { L"", "", true },
        { L"plain \t\r\n caf\x00E9 \x20AC \x2013", "plain \t\r\n caf\xE9 \x80 \x96", true },
        { std::wstring(L"a\0b", 3), std::string("a\0b", 3), true },
        { std::wstring(70000, L'\x00FC'), std::string(70000, '\xFC'), true },
        { L"\x4E2D\x6587\xD83D\xDE00x\xD83D", "????x?", false }, // what the code page lacks, unit by unit
    };
    for (const auto& [wide, narrow, bBack] : rows)
    {
        EXPECT_EQ(narrow, COvStringUtil::WideToNarrow(wide));
        EXPECT_EQ(narrow.c_str(), COvStringUtil::WideToNarrow(wide.c_str()));
        EXPECT_TRUE(!bBack || COvStringUtil::NarrowToWide(narrow) == wide) << narrow;
        EXPECT_TRUE(!bBack || COvStringUtil::NarrowToWide(narrow.c_str()) == wide.c_str()) << narrow;
    }
    EXPECT_EQ(L"a\xD83D\xDE00",
              COvStringUtil::FromBSTR(COvBstr(L"a\xD83D\xDE00")) + COvStringUtil::FromBSTR(COvBstr()));
    EXPECT_EQ("", COvStringUtil::WideToNarrow(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(L"", COvStringUtil::NarrowToWide(static_cast<const char*>(nullptr)));
    EXPECT_EQ(L"\xD83D\xDE00", COvStringUtil::NarrowToWide("\xF0\x9F\x98\x80", CP_UTF8));
}

TEST(OvStringUtil, ReplacesEachOccurrenceOnce)
{
    using Text = const wchar_t*;
    const std::tuple<Text, Text, Text, Text, LONG> rows[] = {
        { L"\r", L" ", L"no marks", L"no marks", 0 }, { L"\r", L" ", L"\ra\r\rb\r", L" a  b ", 4 },
        { L"aa", L"b", L"aaaa", L"bb", 2 },           { L"aa", L"b", L"aaa", L"ba", 1 },
        { L"a", L"aa", L"aba", L"aabaa", 2 }, // what was put in is not searched again
        { L"", L"x", L"text", L"text", 0 },           { nullptr, nullptr, nullptr, L"", 0 },
    };
    for (const auto& [szFind, szReplace, szSource, szResult, nExpected] : rows)
    {
        LONG nCount = -1;
        EXPECT_EQ(szResult, COvStringUtil::FindReplace(szFind, szReplace, szSource, &nCount));
        EXPECT_EQ(nExpected, nCount) << testing::PrintToString(szResult);
    }
}

TEST(OvStringUtil, TellsNumbersFromText)
{
    for (const wchar_t* const szWhole : { L"1234567890", L"0x1F", L"0Xaf", L"0x" })
        EXPECT_TRUE(COvStringUtil::IsNumeric(szWhole, false) && COvStringUtil::IsNumeric(szWhole, true))
            << testing::PrintToString(szWhole);
    for (const wchar_t* const szLeading : { L"12a", L"1.5", L"0x1g", L"00x1", L"1 " })
        EXPECT_TRUE(!COvStringUtil::IsNumeric(szLeading, false) && COvStringUtil::IsNumeric(szLeading, true))
            << testing::PrintToString(szLeading);
    for (const wchar_t* const szText : { L"", L"x1", L"-1", L" 1", L"0xg", L"ff" })
        EXPECT_FALSE(COvStringUtil::IsNumeric(szText, false) || COvStringUtil::IsNumeric(szText, true))
            << testing::PrintToString(szText);
}

TEST(OvStringUtil, MapsAsciiLettersAloneAndTrimsTheArgumentItself)
{
    EXPECT_EQ(L"@az[`az{\x00C9\x0130", COvStringUtil::ToLower(L"@AZ[`az{\x00C9\x0130"));
    EXPECT_EQ(L"@AZ[`AZ{\x00E9\x00DF\x0131", COvStringUtil::ToUpper(L"@AZ[`az{\x00E9\x00DF\x0131"));
    const wchar_t* const rows[][2] = { { L"000123", L"123" }, { L"0100", L"100" }, { L"000", L"" }, { L"", L"" } };
    for (const auto& row : rows)
    {
        std::wstring text = row[0];
        EXPECT_EQ(row[1], COvStringUtil::TrimLeft(text, L'0'));
        EXPECT_EQ(row[1], text);
    }
}

TEST(OvStringUtil, WritesNumbersInAnyRadix)
{
    const std::tuple<LONG, int, const wchar_t*> rows[] = { { 0, 10, L"0" },
                                                           { -5, 10, L"-5" },
                                                           { INT_MIN, 10, L"-2147483648" },
                                                           { 255, 16, L"ff" },
                                                           { E_FAIL, 16, L"80004005" },
                                                           { -1, 36, L"1z141z3" },
                                                           { 0xFFFFFF, 2, L"111111111111111111111111" },
                                                           { 0x1000000, 2, L"" },
                                                           { 1, 1, L"" },
                                                           { 1, 37, L"" } };
    for (const auto& [n, nRadix, szText] : rows)
        EXPECT_EQ(szText, COvStringUtil::LongToString(n, nRadix)) << n << " in " << nRadix;
}

TEST(OvStringUtil, ChangesTheTypeOfAValueOrSaysWhyNot)
{
    EXPECT_EQ(20, COvStringUtil::VariantChangeType(_variant_t(L" 20 "), VT_I4, 0).lVal);
    EXPECT_STREQ(L"-1", COvStringUtil::VariantChangeType(_variant_t(true), VT_BSTR, 0).bstrVal);
    EXPECT_STREQ(L"True", COvStringUtil::VariantChangeType(_variant_t(true), VT_BSTR, VARIANT_ALPHABOOL).bstrVal);
    const _variant_t source(L"\xD83D\xDE00");
    const _variant_t same = COvStringUtil::VariantChangeType(source, VT_BSTR, 0);
    EXPECT_STREQ(L"\xD83D\xDE00", same.bstrVal);
    EXPECT_NE(source.bstrVal, same.bstrVal);
    EXPECT_EQ(L"80020005 OvStringUtil | Msg: A Win32 API call failed. | Info Msg: VariantChangeType | vSrc.vt: 8 | "
              L"vtNew: 3 | nFlags: 2 | " +
                  ErrorItem(L"hr", DISP_E_TYPEMISMATCH),
              Raised([] { COvStringUtil::VariantChangeType(_variant_t(L"yes"), VT_I4, 2); }).substr(2));
}
