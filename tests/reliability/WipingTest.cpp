// The work buffers are wiped before they are freed, whether the work succeeds or fails. Of what comes from operator
// new[] here the buffers of streams alone are none of them; those have BUFSIZ bytes. (The writer's documents are short
// enough to take none.)
#include "FailingNew.h"
#include "ovCore/OvVersionResource.h"
#include "ovCore/OvXmlEscape.h"
#include "OVTemplates.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "tests/PatchAdapter/AdapterFixture.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>

namespace
{

constexpr size_t HEADER = 16; // before each block: its size

std::atomic<unsigned> s_nFreed = 0;
std::atomic<unsigned> s_nDirty = 0; // freed with something in them

class Wiping : public CAdapterTest
{
};

/// Does it with each allocation failing in its turn, and at last with none.
void Exhaust(const std::function<void()>& work)
{
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const CFailingNew failing(nFail);
        try
        {
            work();
        }
        catch (...) // without memory
        {
        }
        bReached = failing.Reached();
    }
}

} // namespace

[[gnu::noinline]] void* operator new[](size_t nBytes)
{
    char* const p = static_cast<char*>(::operator new(nBytes + HEADER));
    std::memcpy(p, &nBytes, sizeof nBytes);
    return std::memset(p + HEADER, 0xCD, nBytes);
}

[[gnu::noinline]] void operator delete[](void* p) noexcept
{
    if (p == nullptr)
        return;
    char* const pBlock = static_cast<char*>(p) - HEADER;
    size_t nBytes = 0;
    std::memcpy(&nBytes, pBlock, sizeof nBytes);
    ++s_nFreed;
    if (nBytes != BUFSIZ && std::any_of(pBlock + HEADER, pBlock + HEADER + nBytes, [](char c) { return c != 0; }))
        ++s_nDirty;
    ::operator delete(pBlock);
}

[[gnu::noinline]] void operator delete[](void* p, size_t) noexcept
{
    operator delete[](p);
}

TEST_F(Wiping, LeavesNothingInFreedBuffers)
{
    { // what is not wiped is found
        COvByteBuffer buffer(false);
        buffer.Resize(1);
        buffer[0] = 1;
    }
    EXPECT_EQ(1u, s_nDirty.exchange(0));
    COvBufferT<wchar_t> buffer(true);
    buffer.Resize(40);
    EXPECT_EQ(std::wstring(40, L'\0'), std::wstring(buffer.Data(), buffer.Size()));
    buffer[39] = 1;
    buffer.Resize(10); // a new block, the old one wiped
    EXPECT_EQ(0u, s_nDirty);
    StartWithService();
    const struct
    {
        const char* szWhat;
        std::function<void()> work;
    } rows[] = {
        { "version", [] { COvVersionResource().Open(g_hInstance); } },
        { "escaping", [] { COvXmlEscape::Escape(L"a < b"); } },
        { "apply", [&] { Adapter().SetConfiguration(PolicyConfiguring("").c_str()); } },
        { "start", [&] { StartAdapter(); } },
    };
    for (const auto& row : rows)
    {
        s_nFreed = 0;
        Exhaust(row.work);
        EXPECT_LT(0u, s_nFreed) << row.szWhat;
        EXPECT_EQ(0u, s_nDirty.exchange(0)) << row.szWhat;
    }
}
