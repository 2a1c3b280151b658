// What went through a work buffer is not in the blocks that are freed, whether the work succeeds or fails.
#include "FailingNew.h"
#include "ovCore/OvVersionResource.h"
#include "ovCore/OvXmlEscape.h"
#include "OVTemplates.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "tests/PatchAdapter/AdapterFixture.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace
{

const wchar_t s_szMarker[] = L"wiped-4711";
const wchar_t s_szVersionKey[] = L"VS_VERSION_INFO"; // in every version data

constexpr size_t HEADER = 16; // before each block: its size

std::atomic<unsigned> s_nFreed = 0;
std::atomic<unsigned> s_nFound = 0;

/// Whether a block holds the text, in units of 16 bits or of wchar_t.
bool Holds(const char* pBlock, size_t nBytes, const wchar_t* szText)
{
    char16_t units[32] = {};
    const size_t nLength = std::char_traits<wchar_t>::length(szText);
    std::copy_n(szText, nLength, units);
    const auto isIn = [&](const void* pText, size_t nText) {
        const char* const p = static_cast<const char*>(pText);
        return std::search(pBlock, pBlock + nBytes, p, p + nText) != pBlock + nBytes;
    };
    return isIn(units, nLength * sizeof(char16_t)) || isIn(szText, nLength * sizeof(wchar_t));
}

} // namespace

// The work buffers are the only arrays here that come from operator new[].

[[gnu::noinline]] void* operator new[](size_t nBytes)
{
    char* const p = static_cast<char*>(::operator new(nBytes + HEADER));
    std::memcpy(p, &nBytes, sizeof nBytes);
    return p + HEADER;
}

[[gnu::noinline]] void operator delete[](void* p) noexcept
{
    if (p == nullptr)
        return;
    char* const pBlock = static_cast<char*>(p);
    size_t nBytes = 0;
    std::memcpy(&nBytes, pBlock - HEADER, sizeof nBytes);
    ++s_nFreed;
    if (Holds(pBlock, nBytes, s_szMarker) || Holds(pBlock, nBytes, s_szVersionKey))
        ++s_nFound;
    ::operator delete(pBlock - HEADER);
}

[[gnu::noinline]] void operator delete[](void* p, size_t) noexcept
{
    operator delete[](p);
}

namespace
{

class Wiping : public CAdapterTest
{
protected:
    void Apply()
    {
        std::string policy = PolicyConfiguring("<serverKey>wiped-4711</serverKey>");
        policy.replace(policy.find("rev-1"), 5, "wiped-4711");
        Adapter().SetConfiguration(policy.c_str());
    }
};

} // namespace

TEST_F(Wiping, LeavesNothingInFreedBlocks)
{
    StartWithService();
    const struct
    {
        const char* szWhat;
        std::function<void()> work;
    } rows[] = {
        { "version", [] { COvVersionResource().Open(g_hInstance); } },
        { "escaping", [] { COvXmlEscape::Escape(std::wstring(s_szMarker) + L"<"); } },
        { "apply", [&] { Apply(); } },
        { "start", [&] { StartAdapter(); } },
    };
    for (const auto& row : rows)
    {
        s_nFreed = s_nFound = 0;
        row.work();
        EXPECT_LT(0u, s_nFreed) << row.szWhat;
        bool bReached = true;
        for (unsigned nFail = 1; bReached; ++nFail)
        {
            const CFailingNew failing(nFail);
            try
            {
                row.work();
            }
            catch (...) // without memory
            {
            }
            bReached = failing.Reached();
        }
        EXPECT_EQ(0u, s_nFound) << row.szWhat;
    }
}

TEST(WipingControl, FindsWhatIsNotWiped)
{
    s_nFound = 0;
    {
        COvBufferT<wchar_t> buffer(false);
        buffer.Resize(20);
        std::copy(std::begin(s_szMarker), std::end(s_szMarker), buffer.Data());
        COvByteBuffer wiped;
        wiped.Resize(sizeof s_szMarker);
        std::memcpy(wiped.Data(), s_szMarker, sizeof s_szMarker);
    }
    EXPECT_EQ(1u, s_nFound);
}
