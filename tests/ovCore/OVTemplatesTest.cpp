#include "OVTemplates.h"

#include "AnsweringObject.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

static const void* s_pWatched = nullptr; // a block whose contents are kept when it is freed
static size_t s_nWatched = 0;
static std::string s_strFreed;

// Not inlined: GCC would warn of a block of new[] that free() gets.
[[gnu::noinline]] void* operator new[](size_t nBytes)
{
    void* const p = std::malloc(nBytes);
    if (p == nullptr)
        throw std::bad_alloc();
    return std::memset(p, 0xCD, nBytes);
}

[[gnu::noinline]] void operator delete[](void* p) noexcept
{
    if (p != nullptr && p == s_pWatched)
        s_strFreed.assign(static_cast<const char*>(p), s_nWatched);
    std::free(p);
}

[[gnu::noinline]] void operator delete[](void* p, size_t) noexcept
{
    operator delete[](p);
}

TEST(OvBuffer, WipesBeforeUseAndBeforeItIsFreed)
{
    const auto bytesOf = [](auto& buffer) { return std::string(reinterpret_cast<char*>(buffer.Data()), s_nWatched); };
    for (const bool bWipe : { true, false })
    {
        COvBufferT<wchar_t> buffer(bWipe);
        buffer.Resize(40);
        s_pWatched = buffer.Data();
        s_nWatched = buffer.Size() * sizeof(wchar_t);
        EXPECT_EQ(std::string(s_nWatched, bWipe ? '\0' : '\xCD'), bytesOf(buffer));
        std::memset(buffer.Data(), 0xAB, s_nWatched);
        buffer.Resize(10); // a new block, the old one wiped
        EXPECT_EQ(std::string(40 * sizeof(wchar_t), bWipe ? '\0' : '\xAB'), s_strFreed);
    }
}

TEST(OvBuffer, AnIndexOrASizeOutsideIsRefused)
{
    COvByteBuffer buffer;
    const std::wstring strRefusal = L"0x80004005 OVTemplates | Info Msg: Index out of range. | nIdx: ";
    EXPECT_EQ(strRefusal + L"0 | _size: 0", Raised([&] { buffer[0] = 1; }));
    buffer.Resize(3);
    buffer[2] = 7;
    EXPECT_EQ(7, std::as_const(buffer)[2]);
    EXPECT_EQ(strRefusal + L"3 | _size: 3", Raised([&] { buffer[3] = 1; }));
    COvBufferT<wchar_t> large;
    large.Resize(3);
    EXPECT_THROW(large.Resize(0xFFFFFFFFu), std::bad_alloc);
    EXPECT_EQ(0u, large.Size());
}

TEST(QueryInterfaceChecked, StoresTheInterfaceOrRaisesTheQuerysCode)
{
    CAnsweringObject object(true, IID_IUnknown, S_OK);
    COvComPtr<ISupportErrorInfo> result;
    QueryInterfaceChecked(&object, result, IID_ISupportErrorInfo, L"ISupportErrorInfo");
    EXPECT_TRUE(result.Get() == &object && object.References() == 1);
    EXPECT_EQ(L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: " +
                  std::to_wstring(static_cast<int64_t>(reinterpret_cast<intptr_t>(&object))) +
                  L" | pOut: 0 | Current IID:: {00000000-0000-0000-C000-000000000046} | Request IID:: "
                  L"{00020400-0000-0000-C000-000000000046} | Request Nm:: not supplied by caller | " +
                  ErrorItem(L"hr", E_NOINTERFACE),
              Raised([&] { QueryInterfaceChecked(&object, result, IID_IDispatch, nullptr); }));
    EXPECT_TRUE(!result && object.References() == 0);
}
