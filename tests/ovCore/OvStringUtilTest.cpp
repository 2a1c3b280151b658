#include "ovCore/OvStringUtil.h"

#include "ovCore/OvException.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

const wchar_t s_szPair[] = L"\xD83D\xDE00";

} // namespace

TEST(OvStringUtil, ConvertsBetweenTheHostsTextAndOurs)
{
    const std::wstring withNul(L"a\0b", 3);
    const struct
    {
        std::wstring wide;
        std::string narrow;
        bool bBack;
    } rows[] = {
        { L"", "", true },
        { L"plain \t\r\n text", "plain \t\r\n text", true },
        { L"caf\x00E9 \x20AC \x2013", "caf\xE9 \x80 \x96", true },
        { withNul, std::string("a\0b", 3), true },
        { std::wstring(70000, L'\x00FC'), std::string(70000, '\xFC'), true },
        { L"\x4E2D\x6587", "??", false },                // what the code page lacks
        { std::wstring(s_szPair) + L"x", "??x", false }, // two units, two default characters
        { L"\xD83D", "?", false },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.narrow, COvStringUtil::WideToNarrow(row.wide)) << row.narrow;
        EXPECT_EQ(row.narrow.c_str(), COvStringUtil::WideToNarrow(row.wide.c_str())) << row.narrow;
        if (row.bBack)
        {
            EXPECT_EQ(row.wide, COvStringUtil::NarrowToWide(row.narrow)) << row.narrow;
            EXPECT_EQ(row.wide.c_str(), COvStringUtil::NarrowToWide(row.narrow.c_str())) << row.narrow;
        }
    }
    const char* const szNarrowNull = nullptr;
    const wchar_t* const szNull = nullptr;
    EXPECT_EQ("", COvStringUtil::WideToNarrow(szNull));
    EXPECT_EQ(L"", COvStringUtil::NarrowToWide(szNarrowNull));
    EXPECT_EQ(s_szPair, COvStringUtil::NarrowToWide("\xF0\x9F\x98\x80", CP_UTF8));
}

TEST(OvStringUtil, ReplacesEachOccurrenceOnce)
{
    const struct
    {
        const wchar_t* szFind;
        const wchar_t* szReplace;
        const wchar_t* szSource;
        const wchar_t* szResult;
        LONG nCount;
    } rows[] = {
        { L"\r", L" ", L"no marks", L"no marks", 0 },
        { L"\r", L" ", L"\ra\r\rb\r", L" a  b ", 4 },
        { L"aa", L"b", L"aaaa", L"bb", 2 },
        { L"aa", L"b", L"aaa", L"ba", 1 },
        { L"a", L"aa", L"aba", L"aabaa", 2 }, // what was put in is not searched again
        { L"ab", L"", L"aabb", L"ab", 1 },
        { L"abc", L"x", L"abc", L"x", 1 },
        { L"abc", L"x", L"ab", L"ab", 0 },
        { L"", L"x", L"text", L"text", 0 },
        { nullptr, L"x", L"text", L"text", 0 },
        { nullptr, nullptr, nullptr, L"", 0 },
        { L"a", L"x", L"", L"", 0 },
        { L"a", L"x", nullptr, L"", 0 },
        { L"a", nullptr, L"bbb", L"bbb", 0 },
        { s_szPair, L"\xD83D", L"a\xD83D\xDE00\xDE00", L"a\xD83D\xDE00", 1 },
    };
    for (const auto& row : rows)
    {
        LONG nCount = -1;
        EXPECT_EQ(row.szResult, COvStringUtil::FindReplace(row.szFind, row.szReplace, row.szSource, &nCount));
        EXPECT_EQ(row.nCount, nCount) << testing::PrintToString(row.szResult);
        EXPECT_EQ(row.szResult, COvStringUtil::FindReplace(row.szFind, row.szReplace, row.szSource, nullptr));
    }
}

TEST(OvStringUtil, TellsNumbersFromText)
{
    const struct
    {
        const wchar_t* szText;
        bool bWhole;
        bool bLeading;
    } rows[] = {
        { L"", false, false },      { L"0", true, true },    { L"1234567890", true, true }, { L"12a", false, true },
        { L"a12", false, false },   { L"x1", false, false }, { L"-1", false, false },       { L"+1", false, false },
        { L" 1", false, false },    { L"1 ", false, true },  { L"1.5", false, true },       { L"0x1F", true, true },
        { L"0Xaf", true, true },    { L"0x", true, true },   { L"0xg", false, false },      { L"0x1g", false, true },
        { L"1x1", false, true },    { L"ff", false, false }, { L"00x1", false, true },      { L"\x0661", false, false },
        { s_szPair, false, false },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.bWhole, COvStringUtil::IsNumeric(row.szText, false)) << testing::PrintToString(row.szText);
        EXPECT_EQ(row.bLeading, COvStringUtil::IsNumeric(row.szText, true)) << testing::PrintToString(row.szText);
    }
}

TEST(OvStringUtil, MapsTheCaseOfAsciiLettersAlone)
{
    EXPECT_EQ(L"@az[`az{\x00C9\x0130\xD83D\xDE00", COvStringUtil::ToLower(L"@AZ[`az{\x00C9\x0130\xD83D\xDE00"));
    EXPECT_EQ(L"@AZ[`AZ{\x00E9\x00DF\x0131\xD83D\xDE00",
              COvStringUtil::ToUpper(L"@AZ[`az{\x00E9\x00DF\x0131\xD83D\xDE00"));
    EXPECT_EQ(L"", COvStringUtil::ToLower(L""));
}

TEST(OvStringUtil, TrimsTheArgumentItself)
{
    const struct
    {
        const wchar_t* szText;
        wchar_t c;
        const wchar_t* szTrimmed;
    } rows[] = {
        { L"000123", L'0', L"123" }, { L"0100", L'0', L"100" }, { L"000", L'0', L"" },
        { L"", L'0', L"" },          { L"123", L'0', L"123" },  { L"\\\\a", L'\\', L"a" },
    };
    for (const auto& row : rows)
    {
        std::wstring text = row.szText;
        EXPECT_EQ(row.szTrimmed, COvStringUtil::TrimLeft(text, row.c));
        EXPECT_EQ(row.szTrimmed, text);
    }
}

TEST(OvStringUtil, WritesNumbersInAnyRadix)
{
    const struct
    {
        LONG n;
        int nRadix;
        const wchar_t* szText;
    } rows[] = {
        { 0, 10, L"0" },
        { -5, 10, L"-5" },
        { INT_MAX, 10, L"2147483647" },
        { INT_MIN, 10, L"-2147483648" },
        { 255, 16, L"ff" },
        { -1, 16, L"ffffffff" },
        { E_FAIL, 16, L"80004005" },
        { INT_MIN, 36, L"zik0zk" },
        { 35, 36, L"z" },
        { -1, 36, L"1z141z3" },
        { 5, 2, L"101" },
        { 0xFFFFFF, 2, L"111111111111111111111111" },
        { 0x1000000, 2, L"" }, // 25 characters: more than the buffer takes
        { -1, 3, L"102002022201221111210" },
        { 1, 1, L"" },
        { 1, 37, L"" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szText, COvStringUtil::LongToString(row.n, row.nRadix)) << row.n << " in " << row.nRadix;
}

TEST(OvStringUtil, TakesABstrWhole)
{
    const std::wstring withNul(L"a\0\xD83D\xDE00", 4);
    EXPECT_EQ(withNul, COvStringUtil::FromBSTR(COvBstr(withNul)));
    EXPECT_EQ(L"", COvStringUtil::FromBSTR(COvBstr(L"")));
    EXPECT_EQ(L"", COvStringUtil::FromBSTR(COvBstr()));
}

TEST(OvStringUtil, ChangesTheTypeOfAValue)
{
    const _variant_t number = COvStringUtil::VariantChangeType(_variant_t(L" 20 "), VT_I4, 0);
    ASSERT_EQ(VT_I4, number.vt);
    EXPECT_EQ(20, number.lVal);

    const _variant_t text = COvStringUtil::VariantChangeType(_variant_t(LONG{ -7 }), VT_BSTR, 0);
    ASSERT_EQ(VT_BSTR, text.vt);
    EXPECT_STREQ(L"-7", text.bstrVal);

    const _variant_t source(s_szPair);
    const _variant_t same = COvStringUtil::VariantChangeType(source, VT_BSTR, 0);
    ASSERT_EQ(VT_BSTR, same.vt);
    EXPECT_STREQ(s_szPair, same.bstrVal);
    EXPECT_NE(source.bstrVal, same.bstrVal);

    const _variant_t truth(true);
    EXPECT_STREQ(L"-1", COvStringUtil::VariantChangeType(truth, VT_BSTR, 0).bstrVal);
    EXPECT_STREQ(L"True", COvStringUtil::VariantChangeType(truth, VT_BSTR, VARIANT_ALPHABOOL).bstrVal);
    EXPECT_EQ(VT_EMPTY, COvStringUtil::VariantChangeType(_variant_t(), VT_EMPTY, 0).vt);
}

TEST(OvStringUtil, SaysWhyAValueCannotBeChanged)
{
    const struct
    {
        const wchar_t* szValue;
        HRESULT hr;
        const wchar_t* szCode;
    } rows[] = { { L"yes", DISP_E_TYPEMISMATCH, L"0x80020005" }, { L"99999999999", DISP_E_OVERFLOW, L"0x8002000a" } };
    for (const auto& row : rows)
    {
        try
        {
            COvStringUtil::VariantChangeType(_variant_t(row.szValue), VT_I4, 2);
            ADD_FAILURE() << testing::PrintToString(row.szValue);
        }
        catch (const COvException& e)
        {
            EXPECT_EQ(row.hr, e.GetCode());
            EXPECT_STREQ(L"OvStringUtil", e.GetFile());
            const std::wstring evidence = e.GetEvidence(L"|");
            const std::wstring start = L"Msg: A Win32 API call failed.|Info Msg: VariantChangeType|vSrc.vt: 8|vtNew: 3|"
                                       L"nFlags: 2|hr: " +
                                       std::wstring(row.szCode);
            EXPECT_EQ(start, evidence.substr(0, start.length())); // the system's message follows
            EXPECT_EQ(L"|Stack Dump: |", evidence.substr(evidence.rfind(L"|Stack")));
        }
    }
}

TEST(OvStringUtil, FindsTheNameInAPath)
{
    const wchar_t* const szNull = nullptr;
    EXPECT_STREQ(L"X", COvStringUtil::FileNameOf(L"c:\\a\\X"));
    EXPECT_STREQ(L"", COvStringUtil::FileNameOf(L"a\\"));
    EXPECT_STREQ(L"a/b", COvStringUtil::FileNameOf(L"a/b"));
    EXPECT_EQ(szNull, COvStringUtil::FileNameOf(nullptr));
}
