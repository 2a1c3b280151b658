// The system's texts for result codes. Their words differ between systems; what all have in common is asked here.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

struct CLocalFree
{
    void operator()(wchar_t* p) const noexcept { ::LocalFree(p); }
};

constexpr DWORD Flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

/// The text, empty for none.
std::wstring Message(LONG lCode)
{
    wchar_t* pRaw = nullptr;
    const DWORD nUnits =
        ::FormatMessageW(Flags, nullptr, static_cast<DWORD>(lCode), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                         reinterpret_cast<wchar_t*>(&pRaw), 0, nullptr);
    const std::unique_ptr<wchar_t, CLocalFree> text(pRaw);
    if (nUnits == 0)
        return std::wstring();
    EXPECT_EQ(std::wstring(text.get()).size(), nUnits) << lCode;
    return text.get();
}

} // namespace

TEST(Messages, KnownCodesHaveATextThatEndsItsLine)
{
    const LONG codes[] = { 0,   1,   2,   3,   5,   6,    8,    14,   32,   50,   87,        122,   126,
                           127, 183, 234, 259, 317, 1113, 1168, 1300, 1812, 1813, E_NOTIMPL, E_FAIL };
    for (const LONG lCode : codes)
    {
        const std::wstring text = Message(lCode);
        ASSERT_GT(text.size(), 2u) << lCode;
        EXPECT_EQ(L"\r\n", text.substr(text.size() - 2)) << lCode;
        EXPECT_EQ(text.size() - 2, text.find_first_of(L"\r\n")) << lCode;
    }
}

TEST(Messages, AWin32CodeInsideAResultHasItsOwnText)
{
    EXPECT_EQ(Message(ERROR_ACCESS_DENIED), Message(E_ACCESSDENIED));
    EXPECT_EQ(Message(ERROR_INVALID_PARAMETER), Message(E_INVALIDARG));
    EXPECT_EQ(Message(ERROR_OUTOFMEMORY), Message(E_OUTOFMEMORY));
    EXPECT_EQ(Message(ERROR_NOT_FOUND), Message(HRESULT_FROM_WIN32(ERROR_NOT_FOUND)));
}

TEST(Messages, MachineFaultsAndUnknownCodesHaveNone)
{
    const uint32_t codes[] = { 0xC0000005, 0xC000001D, 0xC0000094, 0xC00000FD, 0x80000003,
                               0x80000004, 0xC000B02F, 12345678,   0x8007FFFE, 0xE06D7363 };
    for (const uint32_t nCode : codes)
        EXPECT_EQ(static_cast<DWORD>(ERROR_MR_MID_NOT_FOUND),
                  LastErrorAfter([&] { EXPECT_EQ(L"", Message(static_cast<LONG>(nCode))); }))
            << nCode;
}
