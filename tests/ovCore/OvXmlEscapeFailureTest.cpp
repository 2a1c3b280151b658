// Escaping over a routine that never finds room. Linked with --wrap for it.
#include "ovCore/OvXmlEscape.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

std::vector<size_t> s_rooms; // what each attempt offered

} // namespace

extern "C" size_t __real__Z9EscapeXMLPKwmPwmj(const wchar_t*, size_t, wchar_t*, size_t, DWORD);
extern "C" size_t __wrap__Z9EscapeXMLPKwmPwmj(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut,
                                              DWORD dwFlags);

extern "C" size_t __wrap__Z9EscapeXMLPKwmPwmj(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags)
{
    if (pOut == nullptr)
        return __real__Z9EscapeXMLPKwmPwmj(pIn, nIn, pOut, nOut, dwFlags);
    s_rooms.push_back(nOut);
    return 0;
}

TEST(OvXmlEscapeFailure, GivesUpAfterTheLastAttempt)
{
    const struct
    {
        const wchar_t* szText;
        size_t nFirstFactor;
    } rows[] = {
        { L"<xxxxxxxxx", 2 },                     // would fit at once
        { L"\x00E9\x00E9\x00E9\x00E9\x00E9", 8 }, // at the greatest factor that any text needs
    };
    for (const auto& row : rows)
    {
        s_rooms.clear();
        const std::wstring strText = row.szText;
        EXPECT_EQ(L"0x80004005 OvXmlDocument | Info Msg: FAILED to allocate enough memory after max attempts | Method: "
                  L"EscapeXML | strToEncode: " +
                      strText + L" | iNumAttempts: 10",
                  Raised([&] { COvXmlEscape::Escape(strText); }));
        std::vector<size_t> expected;
        for (size_t nFactor = row.nFirstFactor; nFactor <= 11; ++nFactor)
            expected.push_back(strText.size() * nFactor + 1);
        EXPECT_EQ(expected, s_rooms);
    }
}
