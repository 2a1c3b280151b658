// Code pages: every byte and unit of the Western one, counts, and what a page lacks.
#include "OvPlatform.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace
{

constexpr UINT Western = 1252;
constexpr UINT Japanese = 932;

/// What a conversion gives, or "error n".
std::wstring Widen(UINT nCodePage, const std::string& bytes, DWORD dwFlags = 0)
{
    wchar_t units[64];
    const int nUnits =
        ::MultiByteToWideChar(nCodePage, dwFlags, bytes.data(), static_cast<int>(bytes.size()), units, 64);
    const int nCounted =
        ::MultiByteToWideChar(nCodePage, dwFlags, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    EXPECT_EQ(nUnits, nCounted);
    return nUnits > 0 ? std::wstring(units, static_cast<size_t>(nUnits))
                      : L"error " + std::to_wstring(::GetLastError());
}

std::string Narrow(UINT nCodePage, const std::wstring& units, DWORD dwFlags = 0, const char* szDefault = nullptr,
                   BOOL* pbUsed = nullptr)
{
    char bytes[64];
    const auto nUnits = static_cast<int>(units.size());
    const int nBytes = ::WideCharToMultiByte(nCodePage, dwFlags, units.data(), nUnits, bytes, 64, szDefault, pbUsed);
    const int nCounted =
        ::WideCharToMultiByte(nCodePage, dwFlags, units.data(), nUnits, nullptr, 0, szDefault, nullptr);
    EXPECT_EQ(nBytes, nCounted);
    return nBytes > 0 ? std::string(bytes, static_cast<size_t>(nBytes)) : "error " + std::to_string(::GetLastError());
}

} // namespace

TEST(CodePages, TheWesternPageMapsEveryByteAndBack)
{
    // 0x80 to 0x9F; the five that the page leaves undefined are the control characters of their value
    const wchar_t high[] = L"\x20AC\x0081\x201A\x0192\x201E\x2026\x2020\x2021\x02C6\x2030\x0160\x2039\x0152\x008D\x017D"
                           L"\x008F\x0090\x2018\x2019\x201C\x201D\x2022\x2013\x2014\x02DC\x2122\x0161\x203A\x0153\x009D"
                           L"\x017E\x0178";
    for (int n = 0; n < 256; ++n)
    {
        const std::string text(1, static_cast<char>(n));
        const wchar_t nUnit = n >= 0x80 && n < 0xA0 ? high[n - 0x80] : static_cast<wchar_t>(n);
        EXPECT_EQ(std::wstring(1, nUnit), Widen(Western, text, MB_ERR_INVALID_CHARS)) << n;
        EXPECT_EQ(text, Narrow(Western, std::wstring(1, nUnit), WC_NO_BEST_FIT_CHARS)) << n;
    }
}

TEST(CodePages, TheWesternPageMapsEveryOtherUnitToASimilarByteOrTheDefault)
{
    unsigned nSimilar = 0;
    unsigned nLacking = 0;
    uint32_t nDigest = 2166136261u; // of all pairs of a unit and its similar byte
    for (unsigned n = 0; n < 0x10000; ++n)
    {
        const std::wstring unit(1, static_cast<wchar_t>(n));
        BOOL bLacks = FALSE;
        BOOL bUsed = FALSE;
        const std::string exact = Narrow(Western, unit, WC_NO_BEST_FIT_CHARS, nullptr, &bLacks);
        const std::string text = Narrow(Western, unit, 0, nullptr, &bUsed);
        ASSERT_EQ(1u, text.size()) << n;
        nLacking += bUsed ? 1 : 0;
        EXPECT_EQ(bUsed ? "?" : text, text) << n;
        if (!bLacks || bUsed)
            continue;
        EXPECT_EQ("?", exact) << n;
        ++nSimilar;
        for (const unsigned nByte : { n >> 8, n & 0xFF, static_cast<unsigned>(text[0]) & 0xFF })
            nDigest = (nDigest ^ nByte) * 16777619u;
    }
    EXPECT_EQ(441u, nSimilar);
    EXPECT_EQ(0x10000u - 256 - 441, nLacking);
    EXPECT_EQ(0xFA37DA9Au, nDigest);
    EXPECT_EQ("A=-D:", Narrow(Western, L"\x0100\x2017\x2010\x010E\x2236"));
}

TEST(CodePages, WhatAPageLacksBecomesTheDefaultCharacterUnitByUnit)
{
    const std::tuple<UINT, const wchar_t*, const char*, const char*, bool> rows[] = {
        { Western, L"a\x4E2D\x0062", nullptr, "a?b", true },
        { Western, L"a\xD83D\xDE00z", nullptr, "a??z", true }, // a character of two units
        { Western, L"a\xDE00\xD83Dz", nullptr, "a??z", true },
        { Western, L"\xD83D", nullptr, "?", true },
        { Western, L"a\x4E2D", "_", "a_", true },
        { Western, L"a?\x20AC", nullptr, "a?\x80", false },
        { Japanese, L"\x30C6\x30B9\x30C8", nullptr, "\x83\x65\x83\x58\x83\x67", false },
        { Japanese, L"\x2020\xD83D", nullptr, "\x81\xF5?", true },
    };
    for (const auto& [nCodePage, szWide, szDefault, szBytes, bLacks] : rows)
    {
        BOOL bUsed = !bLacks;
        EXPECT_EQ(szBytes, Narrow(nCodePage, szWide, 0, szDefault, &bUsed)) << szBytes;
        EXPECT_EQ(bLacks, bUsed != FALSE) << szBytes;
    }
}

TEST(CodePages, BytesThatAreNoneOfThePageLoseNoOther)
{
    const std::tuple<UINT, const char*, const wchar_t*, bool> rows[] = {
        { Japanese, "a\x83\x65z", L"a\x30C6z", true },
        { Japanese, "\xB1\xDD", L"\xFF71\xFF9D", true },
        { Japanese, "a\x83", L"a\x30FB", false }, // the first half of a character at the end
        { 874, "\xA1\xDBz", L"\x0E01\xF8C1z", false },
        { 1253, "\xC1\xAA\xD2\xFF", L"\x0391\xF8F9\xF8FA\xF8FB", false },
        { 1250, "\x81\x9A", L"\x0081\x0161", true },
        { 28592, "\xB1\x85", L"\x0105\x0085", true },
        { CP_UTF8, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", L"a\x00E9\x20AC\xD83D\xDE00z", true },
        { CP_UTF8, "a\xC3z", L"a\xFFFDz", false },
        { CP_UTF8, "\xE2\x82z", L"\xFFFDz", false },
        { CP_UTF8, "\xC0\xAF", L"\xFFFD\xFFFD", false }, // overlong
        { CP_UTF8, "\xF0\x9F\x98", L"\xFFFD", false },
        { CP_UTF8, "\xFF\x80", L"\xFFFD\xFFFD", false },
    };
    for (const auto& [nCodePage, szBytes, szWide, bValid] : rows)
    {
        EXPECT_EQ(szWide, Widen(nCodePage, szBytes)) << nCodePage << " " << szBytes;
        EXPECT_EQ(bValid ? szWide : L"error 1113", Widen(nCodePage, szBytes, MB_ERR_INVALID_CHARS))
            << nCodePage << " " << szBytes;
    }
}

TEST(CodePages, Utf8HasNoPlaceForALoneSurrogate)
{
    const std::tuple<const wchar_t*, const char*, bool> rows[] = {
        { L"a\x00E9\x20AC\xD83D\xDE00z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", true },
        { L"\x07FF\x0800\xFFFF\xDBFF\xDFFF", "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF", true },
        { L"a\xD83Dz", "a\xEF\xBF\xBDz", false },
        { L"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD", false },
    };
    for (const auto& [szWide, szBytes, bValid] : rows)
    {
        EXPECT_EQ(szBytes, Narrow(CP_UTF8, szWide)) << szBytes;
        EXPECT_EQ(bValid ? szBytes : "error 1113", Narrow(CP_UTF8, szWide, WC_ERR_INVALID_CHARS)) << szBytes;
    }
}

TEST(CodePages, LengthMinusOneTakesTheNulAlong)
{
    wchar_t units[8];
    char bytes[8];
    EXPECT_EQ(4, ::MultiByteToWideChar(Western, 0, "abc", -1, units, 8));
    EXPECT_STREQ(L"abc", units);
    EXPECT_EQ(4, ::WideCharToMultiByte(Western, 0, L"abc", -1, bytes, 8, nullptr, nullptr));
    EXPECT_STREQ("abc", bytes);
    EXPECT_EQ(1, ::MultiByteToWideChar(CP_UTF8, 0, "", -1, nullptr, 0));
    EXPECT_EQ(std::wstring(L"a\0b", 3), Widen(Western, std::string("a\0b", 3))) << "a counted text may hold one";
    EXPECT_EQ(std::string("a\0b", 3), Narrow(Western, std::wstring(L"a\0b", 3)));
}

TEST(CodePages, ArgumentsThatAreNoneAndTooLittleRoomAreTold)
{
    wchar_t units[4] = {};
    char bytes[4] = {};
    const auto widen = [](UINT nPage, DWORD dwFlags, const char* szBytes, int nBytes, wchar_t* p, int nUnits) {
        ::SetLastError(0);
        return ::MultiByteToWideChar(nPage, dwFlags, szBytes, nBytes, p, nUnits) == 0 ? ::GetLastError() : 0;
    };
    const auto narrow = [&](UINT nPage, const wchar_t* szWide, int nUnits, int nRoom = 4) {
        ::SetLastError(0);
        const int nBytes = ::WideCharToMultiByte(nPage, 0, szWide, nUnits, bytes, nRoom, nullptr, nullptr);
        return nBytes == 0 ? ::GetLastError() : 0;
    };
    const std::pair<DWORD, DWORD> rows[] = {
        { ERROR_INVALID_PARAMETER, widen(Western, 0, "a", 0, units, 4) },
        { ERROR_INVALID_PARAMETER, widen(Western, 0, nullptr, 1, units, 4) },
        { ERROR_INVALID_PARAMETER, widen(Western, 0, "a", 1, nullptr, 4) },
        { ERROR_INVALID_PARAMETER, widen(Western, 0, "a", 1, units, -1) },
        { ERROR_INVALID_PARAMETER, widen(12345, 0, "a", 1, units, 4) },
        { ERROR_INVALID_FLAGS, widen(Western, 0x40000000, "a", 1, units, 4) },
        { 0, widen(Western, MB_PRECOMPOSED, "a", 1, units, 4) },
        { ERROR_INVALID_PARAMETER, narrow(Western, L"a", 0) },
        { ERROR_INVALID_PARAMETER, narrow(12345, L"a", 1) },
        { ERROR_INSUFFICIENT_BUFFER, widen(Western, 0, "abc", 3, units, 2) },
        { 0, widen(Western, 0, "abc", 3, units, 3) },
        { ERROR_INSUFFICIENT_BUFFER, narrow(Western, L"abc", 3, 2) },
        { ERROR_INSUFFICIENT_BUFFER, narrow(CP_UTF8, L"\x20AC", 1, 2) },
        { ERROR_INSUFFICIENT_BUFFER, narrow(Japanese, L"\x30C6", 1, 1) },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.first, row.second) << "row " << &row - rows;
}

TEST(CodePages, TheAnsiPageIsTheWesternOne)
{
    EXPECT_EQ(Western, ::GetACP());
    for (const UINT nPage : { CP_ACP, CP_THREAD_ACP })
    {
        EXPECT_EQ(L"\x20AC\x0081", Widen(nPage, "\x80\x81"));
        EXPECT_EQ("\x80\x81?", Narrow(nPage, L"\x20AC\x0081\x4E2D"));
    }
}
