#include "OVTemplates.h"

#include "AnsweringObject.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace
{

const void* s_pWatched = nullptr; // a block whose contents are kept when it is freed
size_t s_nWatched = 0;
std::vector<BYTE> s_freed;

void FreeWatched(void* p)
{
    if (p != nullptr && p == s_pWatched)
    {
        const BYTE* const pBytes = static_cast<const BYTE*>(p);
        s_pWatched = nullptr;
        s_freed.assign(pBytes, pBytes + s_nWatched);
    }
    std::free(p);
}

template <class T>
void Watch(const COvBufferT<T>& buffer)
{
    s_freed.clear();
    s_nWatched = buffer.Size() * sizeof(T);
    s_pWatched = buffer.Data();
}

bool IsOnly(BYTE value, const std::vector<BYTE>& bytes)
{
    return !bytes.empty() && std::count(bytes.begin(), bytes.end(), value) == static_cast<ptrdiff_t>(bytes.size());
}

} // namespace

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
    FreeWatched(p);
}

[[gnu::noinline]] void operator delete[](void* p, size_t) noexcept
{
    FreeWatched(p);
}

TEST(OvBuffer, WipesBeforeUseAndBeforeItIsFreed)
{
    const auto fill = [](auto& buffer) { std::memset(buffer.Data(), 0xAB, buffer.Size() * sizeof(*buffer.Data())); };
    {
        COvBufferT<wchar_t> buffer;
        buffer.Resize(40);
        EXPECT_EQ(std::vector<wchar_t>(40), std::vector<wchar_t>(buffer.Data(), buffer.Data() + buffer.Size()));
        fill(buffer);
        Watch(buffer);
        buffer.Resize(10); // a new block, the old one wiped
        EXPECT_EQ(40 * sizeof(wchar_t), s_freed.size());
        EXPECT_TRUE(IsOnly(0, s_freed));
        EXPECT_EQ(std::vector<wchar_t>(10), std::vector<wchar_t>(buffer.Data(), buffer.Data() + buffer.Size()));
        fill(buffer);
        Watch(buffer);
    }
    EXPECT_TRUE(IsOnly(0, s_freed));
    {
        COvByteBuffer plain(false);
        plain.Resize(16);
        EXPECT_EQ(0xCD, plain[0]);
        fill(plain);
        Watch(plain);
    }
    EXPECT_TRUE(IsOnly(0xAB, s_freed));
}

TEST(OvBuffer, AnIndexOutsideIsRefused)
{
    COvByteBuffer buffer;
    const COvByteBuffer& same = buffer;
    const auto refusal = [](const wchar_t* szIndex, const wchar_t* szSize) {
        return std::wstring(L"0x80004005 OVTemplates | Info Msg: Index out of range. | nIdx: ") + szIndex +
               L" | _size: " + szSize;
    };
    EXPECT_EQ(refusal(L"0", L"0"), Raised([&] { buffer[0] = 1; }));
    buffer.Resize(3);
    buffer[2] = 7;
    EXPECT_EQ(7, same[2]);
    EXPECT_EQ(refusal(L"3", L"3"), Raised([&] { buffer[3] = 1; }));
    EXPECT_EQ(refusal(L"4294967295", L"3"), Raised([&] { EXPECT_EQ(0, same[0xFFFFFFFF]); }));
    buffer.Resize(0);
    EXPECT_EQ(nullptr, buffer.Data());
    EXPECT_EQ(0u, buffer.Size());
}

TEST(OvBuffer, ASizeThatDoesNotFitLeavesItEmpty)
{
    COvBufferT<wchar_t> buffer;
    buffer.Resize(3);
    EXPECT_THROW(buffer.Resize(0xFFFFFFFFu), std::bad_alloc);
    EXPECT_EQ(0u, buffer.Size());
    EXPECT_EQ(nullptr, buffer.Data());
}

TEST(QueryInterfaceChecked, StoresTheInterfaceOrRaisesTheQuerysCode)
{
    CAnsweringObject object(true, IID_IUnknown, S_OK);
    COvComPtr<ISupportErrorInfo> result;
    QueryInterfaceChecked(&object, result, IID_ISupportErrorInfo, L"ISupportErrorInfo");
    EXPECT_EQ(&object, result.Get());
    EXPECT_EQ(1u, object.References());

    const std::wstring strIn = std::to_wstring(static_cast<int64_t>(reinterpret_cast<intptr_t>(&object)));
    const auto refusal = [&](const wchar_t* szName) {
        return L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: " + strIn +
               L" | pOut: 0 | Current IID:: {00000000-0000-0000-C000-000000000046} | Request IID:: "
               L"{00020400-0000-0000-C000-000000000046} | Request Nm:: " +
               szName + L" | " + ErrorItem(L"hr", E_NOINTERFACE);
    };
    EXPECT_EQ(refusal(L"IDispatch"),
              Raised([&] { QueryInterfaceChecked(&object, result, IID_IDispatch, L"IDispatch"); }));
    EXPECT_FALSE(result);
    EXPECT_EQ(0u, object.References());
    EXPECT_EQ(refusal(L"not supplied by caller"),
              Raised([&] { QueryInterfaceChecked(&object, result, IID_IDispatch, nullptr); }));
}
