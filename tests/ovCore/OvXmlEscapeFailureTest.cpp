// Escaping over a routine that never finds room. Linked with --wrap for it.
#include "ovCore/OvXmlEscape.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <vector>

static std::vector<size_t> s_rooms; // what each attempt offered

extern "C"
{
    size_t __real__Z9EscapeXMLPKwmPwmj(const wchar_t*, size_t, wchar_t*, size_t, DWORD);
    size_t __wrap__Z9EscapeXMLPKwmPwmj(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags)
    {
        if (pOut == nullptr)
            return __real__Z9EscapeXMLPKwmPwmj(pIn, nIn, pOut, nOut, dwFlags);
        s_rooms.push_back(nOut);
        return 0;
    }
}

TEST(OvXmlEscapeFailure, GivesUpAfterTheLastAttempt)
{
    EXPECT_EQ(L"0x80004005 OvXmlDocument | Info Msg: FAILED to allocate enough memory after max attempts | Method: "
              L"EscapeXML | strToEncode: <xxxxxxxxx | iNumAttempts: 10",
              Raised([] { COvXmlEscape::Escape(L"<xxxxxxxxx"); }));
    EXPECT_EQ(std::vector<size_t>({ 21, 31, 41, 51, 61, 71, 81, 91, 101, 111 }), s_rooms);
    s_rooms.clear(); // attempts that are known to be too small are left out
    EXPECT_NE(L"nothing", Raised([] { COvXmlEscape::Escape(L"\x00E9"); }));
    EXPECT_EQ(std::vector<size_t>({ 8, 9, 10, 11, 12 }), s_rooms);
}
