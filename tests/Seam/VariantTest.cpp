// Values and their conversions, as the platform has them: the rows hold on Windows and in the stand-in.
#include "OvPlatform.h"
#include "Wine.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace
{

std::string Number(double fValue)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", fValue);
    return text;
}

std::string Narrow(BSTR bstr)
{
    std::string text = "\"";
    for (UINT i = 0; i < SysStringLen(bstr); ++i)
        text += static_cast<char>(bstr[i]);
    return text + "\"";
}

std::string Render(const VARIANT& value)
{
    const VARTYPE vt = value.vt;
    return vt == VT_EMPTY  ? "empty"
           : vt == VT_NULL ? "null"
           : vt == VT_BOOL ? value.boolVal == VARIANT_TRUE    ? "true"
                             : value.boolVal == VARIANT_FALSE ? "false"
                                                              : "odd"
           : vt == VT_BSTR ? Narrow(value.bstrVal)
           : vt == VT_R4   ? Number(static_cast<double>(value.fltVal))
           : vt == VT_R8   ? Number(value.dblVal)
           : vt == VT_I1   ? std::to_string(static_cast<signed char>(value.cVal))
           : vt == VT_UI1  ? std::to_string(value.bVal)
           : vt == VT_I2   ? std::to_string(value.iVal)
           : vt == VT_UI2  ? std::to_string(value.uiVal)
           : vt == VT_I4   ? std::to_string(value.lVal)
           : vt == VT_UI4  ? std::to_string(value.ulVal)
           : vt == VT_I8   ? std::to_string(value.llVal)
           : vt == VT_UI8  ? std::to_string(value.ullVal)
                           : "type " + std::to_string(vt);
}

/// The changed value, or why there is none.
std::string Changed(const VARIANT& source, VARTYPE vt, USHORT wFlags = 0)
{
    VARIANT from = source; // borrowed; not all headers take a constant
    VARIANT result;
    VariantInit(&result);
    const HRESULT hr = VariantChangeType(&result, &from, wFlags, vt);
    const std::string text = hr == S_OK                  ? Render(result)
                             : hr == DISP_E_TYPEMISMATCH ? "mismatch"
                             : hr == DISP_E_OVERFLOW     ? "overflow"
                             : hr == DISP_E_BADVARTYPE   ? "bad type"
                                                         : std::to_string(hr);
    EXPECT_EQ(hr == S_OK ? vt : VARTYPE{ VT_EMPTY }, result.vt);
    VariantClear(&result);
    return text;
}

std::string Changed(const wchar_t* szText, VARTYPE vt)
{
    return Changed(_variant_t(szText), vt);
}

/// A value of a type that holds a number, from its lowest bits.
VARIANT Bits(VARTYPE vt, LONGLONG nBits)
{
    VARIANT value;
    VariantInit(&value);
    value.vt = vt;
    value.llVal = nBits;
    return value;
}

VARIANT Real(double fValue)
{
    return _variant_t(fValue).Detach();
}

constexpr const char* Mismatch = "mismatch";
constexpr const char* Overflow = "overflow";

} // namespace

TEST(Variant, TextsAreReadAsNumbers)
{
    // Signs, parentheses and the currency stand once, on either side; blanks around; halves go to the even number;
    // thousands separators stand anywhere behind the first digit; hexadecimal and octal give the bits of the type.
    const std::tuple<const wchar_t*, const char*, const char*> rows[] = {
        { L"0005", "5", "5" },      { L"5-", "-5", "-5" },       { L"- 5", "-5", "-5" },
        { L"(5)", "-5", "-5" },     { L"(-5)", "-5", "-5" },     { L"+-5", "-5", "-5" },
        { L"5 $ -", "-5", "-5" },   { L"$5", "5", "5" },         { L"20.5", "20", "20.5" },
        { L"21.5", "22", "21.5" },  { L"-0.5", "0", "-0.5" },    { L"-1.5", "-2", "-1.5" },
        { L".5", "0", "0.5" },      { L"5.", "5", "5" },         { L"1,000", "1000", "1000" },
        { L"1,00", "100", "100" },  { L"1,,0,", "10", "10" },    { L"1.5,0", "2", "1.5" },
        { L"1e3", "1000", "1000" }, { L"1.5E+1", "15", "15" },   { L"5.e3", "5000", "5000" },
        { L"25e-1", "2", "2.5" },   { L"1e-400", "0", "0" },     { L"0e5", "0", "0" },
        { L"&H14", "20", "20" },    { L" &hfF ", "255", "255" }, { L"&O17", "15", "15" },
        { L"-&H1", "1", "1" },
    };
    const std::tuple<const wchar_t*, const char*, const char*> longRows[] = {
        { L" - $ ( 5 ) ", "-5", "-5" },
        { L"20.50001", "21", "20.50001" },
        { L"1,000.5", "1000", "1000.5" },
        { L"1e0000000003", "1000", "1000" },
        { L"&HFFFFFFFF", "-1", Overflow },
        { L"&H100000000", Overflow, Overflow },
        { L"1e400", Overflow, Overflow },
        { L" \t\r\n+5 \x00A0\x3000", "5", "5" },
        { L"0.1", "0", "0.10000000000000001" },
        { L"2500000000000000000000000000e-27", "2", "2.5" },
        { L"2500000000000000000000000001e-27", "3", "2.5" }, // above the half by the last digit of 28
        { L"&H80000000", "-2147483648", "-2147483648" },
        { L"2147483647.4", "2147483647", "2147483647.4000001" },
        { L"2147483647.5", Overflow, "2147483647.5" },
        { L"-2147483648", "-2147483648", "-2147483648" },
        { L"-2147483649", Overflow, "-2147483649" },
        { L"123456789012345678901234567890", Overflow, "1.2345678901234568e+29" },
    };
    const auto check = [](const wchar_t* szText, const char* szLong, const char* szDouble) {
        EXPECT_EQ(szLong, Changed(szText, VT_I4)) << testing::PrintToString(szText);
        EXPECT_EQ(szDouble, Changed(szText, VT_R8)) << testing::PrintToString(szText);
    };
    for (const auto& row : rows)
        std::apply(check, row);
    for (const auto& row : longRows)
        std::apply(check, row);
    for (const wchar_t* const szText :
         { L"",    L"  ",     L"5 5", L"5abc",  L"0x14",  L"true", L"nan",  L"\x0663", L"\xD83D\xDE00",
           L"-5-", L"--5",    L"(5",  L"5)",    L"((5))", L"$$5",  L"-",    L"$",      L"\x20AC\x0035",
           L",1",  L"1 ,000", L".",   L"1.2.3", L"1e",    L"1e+",  L"1e 3", L"1e3.5",  L"1d3",
           L".e3", L"&O8",    L"&H",  L"&17",   L"&H1,0", L"$&H5" })
        check(szText, Mismatch, Mismatch);
}

TEST(Variant, TextsAreReadAsNumbersOfEverySize)
{
    // behind each number: "1" for each of the types that can hold it
    const VARTYPE types[] = { VT_I1, VT_UI1, VT_I2, VT_UI2, VT_UI4, VT_I8, VT_UI8 };
    const std::tuple<const wchar_t*, const char*, std::string> rows[] = {
        { L"127", "127", "1111111" },
        { L"128", "128", "0111111" },
        { L"-1", "-1", "1010010" },
        { L"-129", "-129", "0010010" },
        { L"-0.5", "0", "1111111" },
        { L"256", "256", "0011111" },
        { L"65535", "65535", "0001111" },
        { L"9223372036854775807", "9223372036854775807", "0000011" },
        { L"-9223372036854775808", "-9223372036854775808", "0000010" },
        { L"18446744073709551615", "18446744073709551615", "0000001" },
        { L"18446744073709551616", "", "0000000" },
    };
    for (const auto& [szText, szNumber, fits] : rows)
        for (size_t i = 0; i < std::size(types); ++i)
            EXPECT_EQ(fits[i] == '1' ? szNumber : Overflow, Changed(szText, types[i]))
                << testing::PrintToString(szText) << types[i];
    EXPECT_EQ("-1", Changed(L"&HFF", VT_I1));
    EXPECT_EQ("-1", Changed(L"&HFFFF", VT_I2));
    EXPECT_EQ("65535", Changed(L"&HFFFF", VT_UI2));
}

TEST(Variant, TextsAreReadAsTruthValues)
{
    const std::pair<const char*, std::vector<const wchar_t*>> rows[] = {
        { "true", { L"true", L"tRUe", L"#TRUE#", L"1", L"-1", L" 2 ", L"0.5", L"&H10" } },
        { "false", { L"false", L"FALSE", L"#FALSE#", L"0", L"0.0", L"1e-400" } },
        { Mismatch, { L"yes", L"no", L"", L" true", L"true ", L"#true#", L"truex", L"tru" } },
        { Overflow, { L"1e400" } },
    };
    for (const auto& [szResult, texts] : rows)
        for (const wchar_t* const szText : texts)
            EXPECT_EQ(szResult, Changed(szText, VT_BOOL)) << testing::PrintToString(szText);
}

TEST(Variant, NullAndCutTexts)
{
    VARIANT text = Bits(VT_BSTR, 0);
    text.bstrVal = nullptr;
    EXPECT_EQ(Mismatch, Changed(text, VT_I4));
    EXPECT_EQ(Mismatch, Changed(text, VT_BOOL));
    EXPECT_EQ("\"\"", Changed(text, VT_BSTR));
    text.bstrVal = SysAllocStringLen(L"1\0x", 3); // a number ends at the first NUL
    EXPECT_EQ("1", Changed(text, VT_I4));
    EXPECT_EQ("true", Changed(text, VT_BOOL));
    VariantClear(&text);
}

TEST(Variant, NumbersAreWrittenAsTexts)
{
    const std::tuple<VARTYPE, LONGLONG, const char*> rows[] = {
        { VT_I2, -32768, "-32768" },
        { VT_I4, 0x80000000, "-2147483648" },
        { VT_UI4, -1, "4294967295" },
        { VT_UI1, -1, "255" },
        { VT_I1, -1, "-1" },
        { VT_BOOL, VARIANT_TRUE, "-1" },
        { VT_BOOL, VARIANT_FALSE, "0" },
        { VT_BOOL, 7, "7" },
        { VT_EMPTY, 0, "" },
    };
    for (const auto& [vt, nBits, szText] : rows)
        EXPECT_EQ("\"" + std::string(szText) + "\"", Changed(Bits(vt, nBits), VT_BSTR));
    EXPECT_EQ("\"18446744073709551615\"", Changed(Bits(VT_UI8, -1), VT_BSTR));
    EXPECT_EQ("\"-9223372036854775808\"", Changed(Bits(VT_I8, std::numeric_limits<LONGLONG>::min()), VT_BSTR));
    EXPECT_EQ("\"True\"", Changed(Bits(VT_BOOL, 7), VT_BSTR, VARIANT_ALPHABOOL));
    EXPECT_EQ("\"False\"", Changed(Bits(VT_BOOL, 0), VT_BSTR, VARIANT_ALPHABOOL));
    // Below a ten-thousandth the platform and its re-implementations choose different forms.
    const std::pair<double, const char*> reals[] = {
        { 0, "0" },           { -0.0, "0" },     { -1.5, "-1.5" },    { 0.0005, "0.0005" },
        { 0.1 + 0.2, "0.3" }, { 1e15, "1E+15" }, { -1e20, "-1E+20" }, { 1e100, "1E+100" },
    };
    for (const auto& [fValue, szText] : reals)
        EXPECT_EQ("\"" + std::string(szText) + "\"", Changed(Real(fValue), VT_BSTR));
    EXPECT_EQ("\"0.333333333333333\"", Changed(Real(1.0 / 3), VT_BSTR));
    EXPECT_EQ("\"100000000000000\"", Changed(Real(1e14), VT_BSTR));
    EXPECT_EQ("\"1.23456789012346E+15\"", Changed(Real(1234567890123456), VT_BSTR));
    VARIANT single = Bits(VT_R4, 0);
    single.fltVal = 1.0f / 3;
    EXPECT_EQ("\"0.3333333\"", Changed(single, VT_BSTR));
}

TEST(Variant, NumbersChangeTheirType)
{
    constexpr VARTYPE vtBad = 999;
    // the bits of the same size stay
    const std::tuple<VARTYPE, LONGLONG, VARTYPE, const char*> rows[] = {
        { VT_I4, 70000, VT_I8, "70000" }, { VT_I4, -1, VT_I2, "-1" },       { VT_I4, -1, VT_UI2, Overflow },
        { VT_I4, -1, VT_UI8, Overflow },  { VT_UI4, -1, VT_I4, "-1" },      { VT_UI1, 200, VT_I1, "-56" },
        { VT_I2, -1, VT_UI2, "65535" },   { VT_I4, 5, VT_R4, "5" },         { VT_I4, 5, VT_BOOL, "true" },
        { VT_I4, 0, VT_BOOL, "false" },   { VT_BOOL, -1, VT_I4, "-1" },     { VT_BOOL, -1, VT_UI1, "255" },
        { VT_BOOL, -1, VT_R8, "-1" },     { VT_BOOL, 7, VT_BOOL, "odd" },   { VT_EMPTY, 0, VT_I4, "0" },
        { VT_EMPTY, 0, VT_R8, "0" },      { VT_EMPTY, 0, VT_NULL, "null" }, { VT_NULL, 0, VT_NULL, "null" },
        { VT_NULL, 0, VT_I4, Mismatch },  { VT_I4, 5, VT_EMPTY, "empty" },  { VT_ERROR, 5, VT_I4, Mismatch },
        { VT_I4, 5, 15, "bad type" },     { VT_I4, 5, vtBad, "bad type" },  { vtBad, 5, VT_I4, "bad type" },
    };
    const std::tuple<VARTYPE, LONGLONG, VARTYPE, const char*> longRows[] = {
        { VT_I4, 70000, VT_I2, Overflow },        { VT_I4, -1, VT_UI4, "4294967295" },
        { VT_UI4, -1, VT_I8, "4294967295" },      { VT_EMPTY, 0, VT_BOOL, "false" },
        { VT_EMPTY, 0, VT_ERROR, Mismatch },      { VT_NULL, 0, VT_BOOL, Mismatch },
        { VT_NULL, 0, VT_BSTR, Mismatch },        { VT_NULL, 0, VT_EMPTY, Mismatch },
        { VT_I4, 5, VT_UNKNOWN, Mismatch },       { VT_ERROR, 5, VT_BSTR, Mismatch },
        { VT_ERROR, 5, VT_EMPTY, Mismatch },      { VT_UNKNOWN, 0, VT_BSTR, Mismatch },
        { VT_UNKNOWN, 0, VT_DISPATCH, "type 9" },
    };
    const auto check = [](VARTYPE vtFrom, LONGLONG nBits, VARTYPE vt, const char* szResult) {
        EXPECT_EQ(szResult, Changed(Bits(vtFrom, nBits), vt)) << vtFrom << " to " << vt;
    };
    for (const auto& row : rows)
        std::apply(check, row);
    for (const auto& row : longRows)
        std::apply(check, row);
    EXPECT_EQ("18446744073709551615", Changed(Bits(VT_I8, -1), VT_UI8));
    EXPECT_EQ("18446744073709551615", Changed(Bits(VT_BOOL, VARIANT_TRUE), VT_UI8));
    EXPECT_EQ("-2147483648", Changed(Bits(VT_I4, 0x80000000), VT_R8));
    const std::tuple<double, VARTYPE, const char*> reals[] = {
        { 2.5, VT_I4, "2" },        { 3.5, VT_I4, "4" },          { -0.5, VT_UI1, "0" },
        { -1, VT_UI4, Overflow },   { 32767.5, VT_I2, Overflow }, { 1e10, VT_I4, Overflow },
        { 1e20, VT_UI8, Overflow }, { 1e100, VT_R4, Overflow },   { 0.5, VT_BOOL, "true" },
    };
    EXPECT_EQ("10000000000", Changed(Real(1e10), VT_I8));
    for (const auto& [fValue, vt, szResult] : reals)
        EXPECT_EQ(szResult, Changed(Real(fValue), vt)) << fValue << " to " << vt;
}

// The re-implementation of Windows goes its own way here: it reports an overflow for the largest double, takes several
// signs in an exponent, fails on an exponent of more than 31 bits and cuts a 64-bit number for a 16-bit type.
TEST(Variant, FollowsTheDocumentedRulesAtTheEdges)
{
    if (WineDiffers("Windows follows the documented rules at the edges of its numbers"))
        return;
    const std::wstring zeros(200000, L'0');
    const std::pair<std::wstring, const char*> rows[] = {
        { L"1.7976931348623157e308", "1.7976931348623157e+308" },
        { L"1.7976931348623159e308", Overflow },
        { L"5e-324", "4.9406564584124654e-324" },
        { L"1e2147483648", Overflow },
        { L"1e99999999999999999999", Overflow },
        { L"1e-99999999999999999999", "0" },
        { L"0e99999999999999999999", "0" },
        { L"1e++3", Mismatch },
        { L"&H10000000000000000", Overflow },
        { L"1" + zeros + L"e-200000", "1" },
        { L"0." + zeros + L"1e200001", "1" },
        { L"1" + zeros, Overflow },
    };
    for (const auto& [text, szDouble] : rows)
        EXPECT_EQ(szDouble, Changed(text.c_str(), VT_R8)) << testing::PrintToString(text.substr(0, 40));
    EXPECT_EQ(Overflow, Changed(Bits(VT_I8, 3000000000), VT_UI2));
}

TEST(Variant, AnIntegerIsReadInEveryForm)
{
    const unsigned nSeed = std::random_device()();
    std::mt19937_64 random(nSeed);
    const bool bWine = WineDiffers("Windows reads every form of a number, by its documentation");
    for (int i = 0; i < 2000 && !bWine; ++i)
    {
        const std::wstring digits = std::to_wstring(1 + (random() >> random() % 64 >> 1) / 2);
        const size_t nCut = random() % digits.size();
        const std::wstring head = digits.substr(0, nCut);
        const std::wstring tail = digits.substr(nCut);
        const std::string number(digits.begin(), digits.end());
        const std::pair<std::wstring, std::string> forms[] = {
            { L" $ 0" + head + L"," + tail + L" ", number },
            { L"(" + digits + L".4999999)", "-" + number },
            { L"0" + head + L"." + tail + L"e" + std::to_wstring(tail.size()) + L"-", "-" + number },
            { L"-" + digits + L"000000e-6", "-" + number },
        };
        for (const auto& [text, expected] : forms)
            ASSERT_EQ(expected, Changed(text.c_str(), VT_I8)) << testing::PrintToString(text) << nSeed;
    }
}

TEST(Variant, AFailedChangeLeavesTheValue)
{
    _variant_t target(L"old");
    _variant_t source(L"x");
    EXPECT_EQ(DISP_E_TYPEMISMATCH, VariantChangeType(&target, &source, 0, VT_I4));
    EXPECT_STREQ(L"old", target.bstrVal);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, VariantChangeType(&target, &target, 0, VT_I4)); // in place
    EXPECT_STREQ(L"old", target.bstrVal);
    _variant_t number(L"7");
    EXPECT_EQ(S_OK, VariantChangeType(&number, &number, 0, VT_I4));
    EXPECT_EQ("7", Render(number));
}

TEST(Variant, CopiesAreIndependent)
{
    _variant_t source;
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocStringLen(L"a\0\xD83D\xDE00", 4);
    _variant_t copy(L"old");
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_NE(source.bstrVal, copy.bstrVal);
    ASSERT_EQ(4u, SysStringLen(copy.bstrVal));
    EXPECT_EQ(std::wstring(L"a\0\xD83D\xDE00", 4), std::wstring(copy.bstrVal, 4));
    EXPECT_EQ(S_OK, VariantCopy(&copy, &copy));
    EXPECT_EQ(4u, SysStringLen(copy.bstrVal));

    VARIANT bad = Bits(999, 0);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&copy, &bad));
    EXPECT_EQ(VT_BSTR, copy.vt);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&bad));
    EXPECT_EQ(S_OK, VariantClear(&copy));
    EXPECT_EQ(VT_EMPTY, copy.vt);
}

TEST(Bstr, CountsItsUnits)
{
    const std::tuple<const wchar_t*, UINT> rows[] = {
        { L"", 0 },
        { L"ab", 2 },
        { L"a\0b", 3 },
        { L"\xD83D\xDE00", 2 },
    };
    for (const auto& [szText, nLength] : rows)
    {
        BSTR bstr = SysAllocStringLen(szText, nLength);
        EXPECT_EQ(nLength, SysStringLen(bstr));
        EXPECT_EQ(2 * nLength, SysStringByteLen(bstr));
        EXPECT_EQ(L'\0', bstr[nLength]);
        EXPECT_EQ(std::wstring(szText, nLength), std::wstring(bstr, nLength));
        SysFreeString(bstr);
    }
    BSTR zeros = SysAllocStringLen(nullptr, 3);
    EXPECT_EQ(3u, SysStringLen(zeros));
    EXPECT_EQ(L'\0', zeros[2]);
    SysFreeString(zeros);
    EXPECT_FALSE(SysAllocString(nullptr));
    EXPECT_EQ(0u, SysStringLen(nullptr));
    EXPECT_FALSE(SysAllocStringLen(nullptr, 0xFFFFFFFF)); // the bytes cannot be counted
    SysFreeString(nullptr);
}

TEST(VariantOwner, OwnsItsValue)
{
    _variant_t a(L"one");
    _variant_t b(a);
    EXPECT_NE(a.bstrVal, b.bstrVal);
    b = a; // over a live value
    b = *&b;
    EXPECT_STREQ(L"one", b.bstrVal);
    VARIANT raw = b.Detach();
    EXPECT_EQ(VT_EMPTY, b.vt);
    b.Attach(raw);
    EXPECT_EQ(VT_EMPTY, raw.vt);
    EXPECT_STREQ(L"one", b.bstrVal);
    *b.GetAddress() = Bits(VT_I4, 3);
    EXPECT_EQ("3", Render(b));
    b.ChangeType(VT_BSTR);
    EXPECT_EQ("\"3\"", Render(b));
    VARIANT taken = b.Detach();
    const _variant_t owner(taken, false);
    EXPECT_EQ(VT_EMPTY, taken.vt);
    EXPECT_EQ("\"3\"", Render(owner));
}

TEST(VariantOwner, GivesEachTypeItsTag)
{
    const std::tuple<_variant_t, VARTYPE, const char*> rows[] = {
        { _variant_t(), VT_EMPTY, "empty" },
        { _variant_t(true), VT_BOOL, "true" },
        { _variant_t(VARIANT_TRUE, VT_BOOL), VT_BOOL, "true" },
        { _variant_t(short{ 7 }), VT_I2, "7" },
        { _variant_t(LONG{ -7 }), VT_I4, "-7" },
        { _variant_t(LONG{ 7 }, VT_BOOL), VT_BOOL, "true" },
        { _variant_t(LONG{ 7 }, VT_ERROR), VT_ERROR, "type 10" },
        { _variant_t(1.5), VT_R8, "1.5" },
        { _variant_t(L"t"), VT_BSTR, "\"t\"" },
    };
    for (const auto& [value, vt, szValue] : rows)
    {
        EXPECT_EQ(vt, value.vt);
        EXPECT_EQ(szValue, Render(value));
    }
}

TEST(VariantOwner, RaisesWhatFails)
{
    const auto codeOf = [](auto&& work) {
        try
        {
            work();
        }
        catch (const _com_error& e)
        {
            EXPECT_FALSE(e.ErrorInfo());
            return e.Error();
        }
        return S_OK;
    };
    _variant_t text(L"x");
    const VARIANT* const pNone = nullptr;
    const VARIANT bad = Bits(999, 0);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, codeOf([&] { text.ChangeType(VT_I4); }));
    EXPECT_STREQ(L"x", text.bstrVal);
    EXPECT_EQ(DISP_E_BADVARTYPE, codeOf([&] { text = bad; }));
    EXPECT_EQ(DISP_E_BADVARTYPE, codeOf([&] { _variant_t copy(bad); }));
    EXPECT_EQ(E_POINTER, codeOf([&] { _variant_t copy(pNone); }));
    EXPECT_EQ(E_INVALIDARG, codeOf([] { _variant_t value(LONG{ 1 }, VT_I2); }));
    EXPECT_EQ(E_OUTOFMEMORY, codeOf([] { _com_issue_error(E_OUTOFMEMORY); }));
}
