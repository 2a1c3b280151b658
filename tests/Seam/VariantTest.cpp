// Values and their conversions, as the platform has them: the rows hold on Windows and in the stand-in.
#include "OvPlatform.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

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
    switch (value.vt)
    {
    case VT_EMPTY:
        return "empty";
    case VT_NULL:
        return "null";
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? "true" : value.boolVal == VARIANT_FALSE ? "false" : "odd";
    case VT_BSTR:
        return Narrow(value.bstrVal);
    case VT_R4:
        return Number(static_cast<double>(value.fltVal));
    case VT_R8:
        return Number(value.dblVal);
    case VT_I1:
        return std::to_string(static_cast<signed char>(value.cVal));
    case VT_UI1:
        return std::to_string(value.bVal);
    case VT_I2:
        return std::to_string(value.iVal);
    case VT_UI2:
        return std::to_string(value.uiVal);
    case VT_I4:
    case VT_INT:
        return std::to_string(value.lVal);
    case VT_UI4:
    case VT_UINT:
        return std::to_string(value.ulVal);
    case VT_I8:
        return std::to_string(value.llVal);
    case VT_UI8:
        return std::to_string(value.ullVal);
    default:
        return "type " + std::to_string(value.vt);
    }
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

constexpr const char* Mismatch = "mismatch";
constexpr const char* Overflow = "overflow";

} // namespace

TEST(Variant, TextsAreReadAsNumbers)
{
    const struct
    {
        const wchar_t* szText;
        const char* szLong;
        const char* szDouble;
    } rows[] = {
        { L"0", "0", "0" },
        { L"-1", "-1", "-1" },
        { L" \t\r\n+5 \x00A0\x3000", "5", "5" }, // blanks around
        { L"0005", "5", "5" },
        { L"", Mismatch, Mismatch },
        { L"  ", Mismatch, Mismatch },
        { L"5 5", Mismatch, Mismatch },
        { L"5abc", Mismatch, Mismatch },
        { L"0x14", Mismatch, Mismatch },
        { L"true", Mismatch, Mismatch },
        { L"nan", Mismatch, Mismatch },
        { L"\x0663", Mismatch, Mismatch }, // other scripts' digits
        { L"\xD83D\xDE00", Mismatch, Mismatch },
        // signs, parentheses and the currency: each once, on either side
        { L"5-", "-5", "-5" },
        { L"- 5", "-5", "-5" },
        { L"(5)", "-5", "-5" },
        { L" - $ ( 5 ) ", "-5", "-5" },
        { L"(-5)", "-5", "-5" },
        { L"+-5", "-5", "-5" },
        { L"5 $ -", "-5", "-5" },
        { L"$5", "5", "5" },
        { L"-5-", Mismatch, Mismatch },
        { L"--5", Mismatch, Mismatch },
        { L"(5", Mismatch, Mismatch },
        { L"5)", Mismatch, Mismatch },
        { L"((5))", Mismatch, Mismatch },
        { L"$$5", Mismatch, Mismatch },
        { L"-", Mismatch, Mismatch },
        { L"$", Mismatch, Mismatch },
        { L"\x20AC"
          "5",
          Mismatch, Mismatch },
        // fractions: halves to even
        { L"20.5", "20", "20.5" },
        { L"21.5", "22", "21.5" },
        { L"20.50001", "21", "20.50001" },
        { L"-0.5", "0", "-0.5" },
        { L"-1.5", "-2", "-1.5" },
        { L".5", "0", "0.5" },
        { L"5.", "5", "5" },
        { L"0.1", "0", "0.10000000000000001" },
        { L".", Mismatch, Mismatch },
        { L"1.2.3", Mismatch, Mismatch },
        { L"2500000000000000000000000000e-27", "2", "2.5" },
        { L"2500000000000000000000000001e-27", "3", "2.5" }, // above the half by the last digit of 28
        // thousands separators, wherever they stand behind the first digit
        { L"1,000", "1000", "1000" },
        { L"1,00", "100", "100" },
        { L"1,,0,", "10", "10" },
        { L"1.5,0", "2", "1.5" },
        { L"1,000.5", "1000", "1000.5" },
        { L",1", Mismatch, Mismatch },
        { L"1 ,000", Mismatch, Mismatch },
        // exponents
        { L"1e3", "1000", "1000" },
        { L"1.5E+1", "15", "15" },
        { L"5.e3", "5000", "5000" },
        { L"25e-1", "2", "2.5" },
        { L"1e0000000003", "1000", "1000" },
        { L"1e-400", "0", "0" },
        { L"0e5", "0", "0" },
        { L"1e400", Overflow, Overflow },
        { L"1e", Mismatch, Mismatch },
        { L"1e+", Mismatch, Mismatch },
        { L"1e 3", Mismatch, Mismatch },
        { L"1e3.5", Mismatch, Mismatch },
        { L"1d3", Mismatch, Mismatch },
        { L".e3", Mismatch, Mismatch },
        // hexadecimal and octal: the bits of the type, without a sign
        { L"&H14", "20", "20" },
        { L" &hfF ", "255", "255" },
        { L"&O17", "15", "15" },
        { L"-&H1", "1", "1" },
        { L"&HFFFFFFFF", "-1", Overflow },
        { L"&H80000000", "-2147483648", "-2147483648" },
        { L"&H100000000", Overflow, Overflow },
        { L"&O8", Mismatch, Mismatch },
        { L"&H", Mismatch, Mismatch },
        { L"&17", Mismatch, Mismatch },
        { L"&H1,0", Mismatch, Mismatch },
        { L"$&H5", Mismatch, Mismatch },
        // the ends of the range
        { L"2147483647", "2147483647", "2147483647" },
        { L"2147483647.4", "2147483647", "2147483647.4000001" },
        { L"2147483647.5", Overflow, "2147483647.5" },
        { L"-2147483648", "-2147483648", "-2147483648" },
        { L"-2147483649", Overflow, "-2147483649" },
        { L"123456789012345678901234567890", Overflow, "1.2345678901234568e+29" },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.szLong, Changed(row.szText, VT_I4)) << testing::PrintToString(row.szText);
        EXPECT_EQ(row.szDouble, Changed(row.szText, VT_R8)) << testing::PrintToString(row.szText);
    }
}

TEST(Variant, TextsAreReadAsNumbersOfEverySize)
{
    const VARTYPE types[] = { VT_I1, VT_UI1, VT_I2, VT_UI2, VT_UI4, VT_I8, VT_UI8 };
    const struct
    {
        const wchar_t* szText;
        const char* results[7];
    } rows[] = {
        { L"127.5", { Overflow, "128", "128", "128", "128", "128", "128" } },
        { L"-1", { "-1", Overflow, "-1", Overflow, Overflow, "-1", Overflow } },
        { L"-129", { Overflow, Overflow, "-129", Overflow, Overflow, "-129", Overflow } },
        { L"-0.5", { "0", "0", "0", "0", "0", "0", "0" } },
        { L"256", { Overflow, Overflow, "256", "256", "256", "256", "256" } },
        { L"65535", { Overflow, Overflow, Overflow, "65535", "65535", "65535", "65535" } },
        { L"&HFF", { "-1", "255", "255", "255", "255", "255", "255" } },
        { L"&HFFFF", { Overflow, Overflow, "-1", "65535", "65535", "65535", "65535" } },
        { L"9223372036854775807",
          { Overflow, Overflow, Overflow, Overflow, Overflow, "9223372036854775807", "9223372036854775807" } },
        { L"-9223372036854775808",
          { Overflow, Overflow, Overflow, Overflow, Overflow, "-9223372036854775808", Overflow } },
        { L"18446744073709551615",
          { Overflow, Overflow, Overflow, Overflow, Overflow, Overflow, "18446744073709551615" } },
        { L"18446744073709551616", { Overflow, Overflow, Overflow, Overflow, Overflow, Overflow, Overflow } },
    };
    for (const auto& row : rows)
        for (size_t i = 0; i < std::size(types); ++i)
            EXPECT_EQ(row.results[i], Changed(row.szText, types[i])) << testing::PrintToString(row.szText) << types[i];
}

TEST(Variant, TextsAreReadAsTruthValues)
{
    const struct
    {
        const wchar_t* szText;
        const char* szResult;
    } rows[] = {
        { L"true", "true" },    { L"tRUe", "true" },    { L"#TRUE#", "true" },   { L"1", "true" },
        { L"-1", "true" },      { L" 2 ", "true" },     { L"0.5", "true" },      { L"&H10", "true" },
        { L"false", "false" },  { L"FALSE", "false" },  { L"#FALSE#", "false" }, { L"0", "false" },
        { L"0.0", "false" },    { L"1e-400", "false" }, { L"yes", Mismatch },    { L"no", Mismatch },
        { L"", Mismatch },      { L" true", Mismatch }, { L"true ", Mismatch },  { L"#true#", Mismatch },
        { L"truex", Mismatch }, { L"tru", Mismatch },   { L"1e400", Overflow },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szResult, Changed(row.szText, VT_BOOL)) << testing::PrintToString(row.szText);
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
    const struct
    {
        VARIANT value;
        const char* szText;
    } rows[] = {
        { Bits(VT_I2, -32768), "\"-32768\"" },
        { Bits(VT_I4, 0x80000000u), "\"-2147483648\"" },
        { Bits(VT_UI4, -1), "\"4294967295\"" },
        { Bits(VT_I8, std::numeric_limits<LONGLONG>::min()), "\"-9223372036854775808\"" },
        { Bits(VT_UI8, -1), "\"18446744073709551615\"" },
        { Bits(VT_UI1, -1), "\"255\"" },
        { Bits(VT_I1, -1), "\"-1\"" },
        { Bits(VT_BOOL, VARIANT_TRUE), "\"-1\"" },
        { Bits(VT_BOOL, VARIANT_FALSE), "\"0\"" },
        { Bits(VT_BOOL, 7), "\"7\"" },
        { Bits(VT_EMPTY, 0), "\"\"" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szText, Changed(row.value, VT_BSTR));
    EXPECT_EQ("\"True\"", Changed(Bits(VT_BOOL, 7), VT_BSTR, VARIANT_ALPHABOOL));
    EXPECT_EQ("\"False\"", Changed(Bits(VT_BOOL, 0), VT_BSTR, VARIANT_ALPHABOOL));

    // Below a ten-thousandth the platform and its re-implementations choose different forms.
    const struct
    {
        double fValue;
        const char* szText;
    } reals[] = {
        { 0, "\"0\"" },
        { -0.0, "\"0\"" },
        { -1.5, "\"-1.5\"" },
        { 0.0005, "\"0.0005\"" },
        { 0.1 + 0.2, "\"0.3\"" },
        { 1.0 / 3, "\"0.333333333333333\"" },
        { 100000000000000, "\"100000000000000\"" },
        { 1e15, "\"1E+15\"" },
        { -1e20, "\"-1E+20\"" },
        { 1234567890123456, "\"1.23456789012346E+15\"" },
        { 1e100, "\"1E+100\"" },
    };
    for (const auto& row : reals)
        EXPECT_EQ(row.szText, Changed(_variant_t(row.fValue), VT_BSTR));
    VARIANT single = Bits(VT_R4, 0);
    single.fltVal = 1.0f / 3;
    EXPECT_EQ("\"0.3333333\"", Changed(single, VT_BSTR));
}

TEST(Variant, NumbersChangeTheirType)
{
    const struct
    {
        VARIANT value;
        VARTYPE vt;
        const char* szResult;
    } rows[] = {
        { Bits(VT_I4, 70000), VT_I2, Overflow },
        { Bits(VT_I4, 70000), VT_I8, "70000" },
        { Bits(VT_I4, -1), VT_I2, "-1" },
        { Bits(VT_I4, -1), VT_UI2, Overflow },
        { Bits(VT_I4, -1), VT_UI8, Overflow },
        { Bits(VT_I4, -1), VT_UI4, "4294967295" }, // the bits of the same size stay
        { Bits(VT_UI4, -1), VT_I4, "-1" },
        { Bits(VT_UI1, 200), VT_I1, "-56" },
        { Bits(VT_I2, -1), VT_UI2, "65535" },
        { Bits(VT_I8, -1), VT_UI8, "18446744073709551615" },
        { Bits(VT_UI4, -1), VT_I8, "4294967295" },
        { Bits(VT_I4, 0x80000000u), VT_R8, "-2147483648" },
        { Bits(VT_I4, 5), VT_R4, "5" },
        { Bits(VT_I4, 5), VT_BOOL, "true" },
        { Bits(VT_I4, 0), VT_BOOL, "false" },
        { Bits(VT_BOOL, VARIANT_TRUE), VT_I4, "-1" },
        { Bits(VT_BOOL, VARIANT_TRUE), VT_UI1, "255" },
        { Bits(VT_BOOL, VARIANT_TRUE), VT_UI8, "18446744073709551615" },
        { Bits(VT_BOOL, VARIANT_TRUE), VT_R8, "-1" },
        { Bits(VT_BOOL, 7), VT_BOOL, "odd" },
        { Bits(VT_EMPTY, 0), VT_I4, "0" },
        { Bits(VT_EMPTY, 0), VT_BOOL, "false" },
        { Bits(VT_EMPTY, 0), VT_R8, "0" },
        { Bits(VT_EMPTY, 0), VT_NULL, "null" },
        { Bits(VT_EMPTY, 0), VT_ERROR, Mismatch },
        { Bits(VT_NULL, 0), VT_NULL, "null" },
        { Bits(VT_NULL, 0), VT_I4, Mismatch },
        { Bits(VT_NULL, 0), VT_BOOL, Mismatch },
        { Bits(VT_NULL, 0), VT_BSTR, Mismatch },
        { Bits(VT_NULL, 0), VT_EMPTY, Mismatch },
        { Bits(VT_I4, 5), VT_EMPTY, "empty" },
        { Bits(VT_I4, 5), VT_UNKNOWN, Mismatch },
        { Bits(VT_ERROR, 5), VT_I4, Mismatch },
        { Bits(VT_ERROR, 5), VT_BSTR, Mismatch },
        { Bits(VT_ERROR, 5), VT_EMPTY, Mismatch },
        { Bits(VT_UNKNOWN, 0), VT_BSTR, Mismatch },
        { Bits(VT_UNKNOWN, 0), VT_DISPATCH, "type 9" },
        { Bits(VT_I4, 5), 15, "bad type" },
        { Bits(VT_I4, 5), 999, "bad type" },
        { Bits(999, 5), VT_I4, "bad type" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szResult, Changed(row.value, row.vt)) << row.value.vt << " to " << row.vt;

    const struct
    {
        double fValue;
        VARTYPE vt;
        const char* szResult;
    } reals[] = {
        { 2.5, VT_I4, "2" },
        { 3.5, VT_I4, "4" },
        { -0.5, VT_UI1, "0" },
        { -1, VT_UI4, Overflow },
        { 32767.5, VT_I2, Overflow },
        { 1e10, VT_I4, Overflow },
        { 1e10, VT_I8, "10000000000" },
        { 1e20, VT_UI8, Overflow },
        { 1e100, VT_R4, Overflow },
        { 0.5, VT_BOOL, "true" },
    };
    for (const auto& row : reals)
        EXPECT_EQ(row.szResult, Changed(_variant_t(row.fValue), row.vt)) << row.fValue << " to " << row.vt;
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
    const struct
    {
        const wchar_t* szText;
        UINT nLength;
    } rows[] = { { L"", 0 }, { L"ab", 2 }, { L"a\0b", 3 }, { L"\xD83D\xDE00", 2 } };
    for (const auto& row : rows)
    {
        BSTR bstr = SysAllocStringLen(row.szText, row.nLength);
        EXPECT_EQ(row.nLength, SysStringLen(bstr));
        EXPECT_EQ(2 * row.nLength, SysStringByteLen(bstr));
        EXPECT_EQ(L'\0', bstr[row.nLength]);
        EXPECT_EQ(std::wstring(row.szText, row.nLength), std::wstring(bstr, row.nLength));
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
    const struct
    {
        _variant_t value;
        VARTYPE vt;
        const char* szValue;
    } rows[] = {
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
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.vt, row.value.vt);
        EXPECT_EQ(row.szValue, Render(row.value));
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
