#include "Platform/CodePages.h"

#include "Platform/Control.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Text/AsciiBlocks.h"
#include "Platform/Text/CodePageBestFit.h"
#include "Platform/Text/CodePageTable.h"
#include "Platform/Text/Utf8.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace OvPlatform
{

namespace
{

constexpr UINT Western = 1252;

/// A code page that can be converted: UTF-8, or a table.
struct CPage
{
    UINT nNumber;
    std::optional<CCodePageTable> table; // none: UTF-8

    bool IsUtf8() const { return !table; }

    /// What stands for bytes that are no character of a table.
    wchar_t Replacement() const
    {
        constexpr UINT Japanese = 932;
        constexpr wchar_t KatakanaDot = 0x30FB;
        return nNumber == Japanese ? KatakanaDot : table->IsDoubleByte() ? L'?' : CCodePageTable::Undefined;
    }
};

/// Every page that was asked for, null for one that is not known. Pages are never destroyed.
struct CPages
{
    std::mutex lock;
    std::map<UINT, std::unique_ptr<const CPage>> pages; // guarded by lock
};

std::unique_ptr<const CPage> LoadPage(UINT nCodePage)
{
    CPage page{ nCodePage, {} };
    if (nCodePage != CP_UTF8)
        page.table = CCodePageTable::Load(nCodePage);
    return nCodePage == CP_UTF8 || page.table ? std::make_unique<const CPage>(std::move(page)) : nullptr;
}

/// The page of that number; null for one that is not known.
const CPage* FindNumbered(UINT nCodePage)
{
    static CPages& s_pages = *new CPages;
    const std::lock_guard<std::mutex> lock(s_pages.lock);
    auto found = s_pages.pages.find(nCodePage);
    if (found == s_pages.pages.end())
        found = s_pages.pages.emplace(nCodePage, LoadPage(nCodePage)).first;
    return found->second.get();
}

/// The ANSI code page, which most conversions use: found without a lock.
std::atomic<const CPage*> s_pAnsi{ nullptr }; // null: not asked for yet

const CPage* FindPage(UINT nCodePage)
{
    if (nCodePage != CP_ACP && nCodePage != CP_THREAD_ACP)
        return FindNumbered(nCodePage);
    const CPage* pAnsi = s_pAnsi.load(std::memory_order_acquire);
    if (pAnsi)
        return pAnsi;
    const CPage* pWestern = FindNumbered(Western);
    return s_pAnsi.compare_exchange_strong(pAnsi, pWestern) ? pWestern : pAnsi;
}

/// Where a conversion writes: keeps what fits and counts everything.
template <class T>
class COutput
{
public:
    /// @param nRoom  0: only count.
    COutput(T* p, int nRoom) : m_p(p), m_nRoom(static_cast<size_t>(nRoom)) {}

    /// A text of so many values, when there is no room.
    void CountOnly(size_t nValues) { m_nCount += nValues; }

    void Put(T value)
    {
        if (m_nCount < m_nRoom)
            m_p[m_nCount] = value;
        ++m_nCount;
    }

    /// The same for a block of ASCII.
    template <class From>
    void PutAscii(const From* p)
    {
        if (m_nCount + AsciiBlock <= m_nRoom)
            CopyAsciiBlock(p, m_p + m_nCount);
        else
            for (size_t i = 0; i < AsciiBlock && m_nCount + i < m_nRoom; ++i)
                m_p[m_nCount + i] = static_cast<T>(p[i]);
        m_nCount += AsciiBlock;
    }

    /// The call's result.
    int Result() const
    {
        if (m_nRoom != 0 && m_nCount > m_nRoom)
            return Fail(ERROR_INSUFFICIENT_BUFFER, 0);
        return m_nCount <= INT_MAX ? static_cast<int>(m_nCount) : Fail(ERROR_INVALID_PARAMETER, 0);
    }

private:
    T* const m_p;
    const size_t m_nRoom;
    size_t m_nCount = 0;
};

/// Hands the text's blocks of ASCII to output, if the page leaves them as they are, and what is between them, at most a
/// block at a time, to other, which returns where it stopped: not before the end that it is given.
template <class From, class To, class Other>
void ConvertByBlocks(std::basic_string_view<From> text, bool bAsciiStays, COutput<To>& output, Other&& other)
{
    for (size_t i = 0; i < text.size();)
    {
        const size_t nEnd = std::min(text.size(), i + AsciiBlock);
        if (bAsciiStays && nEnd - i == AsciiBlock && IsAsciiBlock(text.data() + i))
        {
            output.PutAscii(text.data() + i);
            i = nEnd;
        }
        else
            i = other(i, nEnd);
    }
}

/// Whether every byte was one of the page.
bool DecodeTable(const CPage& page, std::string_view text, COutput<wchar_t>& output)
{
    const CCodePageTable& table = *page.table;
    bool bValid = true;
    const auto decodeOne = [&](size_t i) {
        const auto nByte = static_cast<BYTE>(text[i]);
        wchar_t nUnit = table.UnitOf(nByte);
        bool bDefined = table.IsDefined(nByte);
        if (table.IsLead(nByte))
        {
            // a byte that can end no character is not taken for the end of one, so that it is not lost
            const BYTE nTrail = i + 1 < text.size() ? static_cast<BYTE>(text[i + 1]) : BYTE(0);
            const bool bPair = table.IsTrail(nTrail);
            nUnit = bPair ? table.UnitOf(nByte * 256u + nTrail) : CCodePageTable::Undefined;
            bDefined = nUnit != CCodePageTable::Undefined;
            i += bPair ? 1 : 0;
        }
        output.Put(nUnit == CCodePageTable::Undefined && !bDefined ? page.Replacement() : nUnit);
        bValid = bValid && bDefined;
        return i + 1;
    };
    ConvertByBlocks(text, table.KeepsAscii(), output, [&](size_t i, size_t nEnd) {
        while (i < nEnd)
            i = decodeOne(i);
        return i;
    });
    return bValid;
}

/// What is written for units that the page lacks.
struct CDefaults
{
    std::string_view text; // the default character, one byte or two
    bool bBestFit;         // but first a similar character
    bool bUsed = false;

    void Put(COutput<char>& output)
    {
        bUsed = true;
        for (const char c : text)
            output.Put(c);
    }
};

/// A call's default character; in a page of single bytes a second byte of it is not looked at.
std::string_view DefaultText(LPCSTR pDefaultChar, bool bDoubleByte)
{
    if (!pDefaultChar)
        return "?";
    return { pDefaultChar, bDoubleByte && pDefaultChar[0] != 0 && pDefaultChar[1] != 0 ? 2u : 1u };
}

void EncodeTable(const CPage& page, std::wstring_view text, CDefaults& defaults, COutput<char>& output)
{
    const auto encodeOne = [&](wchar_t nUnit) {
        const WORD nCharacter = page.table->CharacterOf(nUnit);
        const char nSimilar = nCharacter == 0 && nUnit != 0 && defaults.bBestFit ? BestFit1252(nUnit) : '\0';
        if (nCharacter > 0xFF)
            output.Put(static_cast<char>(nCharacter >> 8));
        if (nCharacter != 0 || nUnit == 0)
            output.Put(static_cast<char>(nCharacter));
        else if (nSimilar != 0)
            output.Put(nSimilar);
        else
            defaults.Put(output);
    };
    ConvertByBlocks(text, page.table->KeepsAscii(), output, [&](size_t i, size_t nEnd) {
        for (; i < nEnd; ++i)
            encodeOne(text[i]);
        return nEnd;
    });
}

/// The text of a call's length argument, -1 of which stands for the text with its NUL; empty is refused by the caller.
std::string_view TextOf(LPCSTR sz, int nLength)
{
    return { sz, nLength < 0 ? std::strlen(sz) + 1 : static_cast<size_t>(nLength) };
}

std::wstring_view TextOf(LPCWSTR sz, int nLength)
{
    return { sz, nLength < 0 ? std::wcslen(sz) + 1 : static_cast<size_t>(nLength) };
}

/// Whether a call with that room for its result asks only how long it is, and it is as long as the text.
bool IsAsLongAsText(const CPage& page, int nRoom)
{
    return nRoom == 0 && !page.IsUtf8() && !page.table->IsDoubleByte();
}

/// What both calls ask of their buffers.
bool AreBuffersGood(const void* pIn, int nIn, const void* pOut, int nOut)
{
    return pIn && nIn != 0 && nOut >= 0 && (nOut == 0 || (pOut && pOut != pIn));
}

} // namespace

bool SetAnsiCodePage(UINT nCodePage)
{
    const CPage* pPage = FindNumbered(nCodePage);
    if (pPage)
        s_pAnsi.store(pPage, std::memory_order_release);
    return pPage != nullptr;
}

} // namespace OvPlatform

using namespace OvPlatform;

int MultiByteToWideChar(UINT nCodePage, DWORD dwFlags, LPCSTR szBytes, int nBytes, LPWSTR szWide, int nUnits)
{
    if (!AreBuffersGood(szBytes, nBytes, szWide, nUnits))
        return Fail(ERROR_INVALID_PARAMETER, 0);
    return OrNoMemory(0, [&] {
        const CPage* pPage = FindPage(nCodePage);
        if (!pPage)
            return Fail(ERROR_INVALID_PARAMETER, 0);
        if ((dwFlags & ~(MB_ERR_INVALID_CHARS | (pPage->IsUtf8() ? 0 : MB_PRECOMPOSED))) != 0)
            return Fail(ERROR_INVALID_FLAGS, 0);
        COutput<wchar_t> output(szWide, nUnits);
        const std::string_view text = TextOf(szBytes, nBytes);
        if (IsAsLongAsText(*pPage, nUnits) && (dwFlags & MB_ERR_INVALID_CHARS) == 0)
        {
            output.CountOnly(text.size());
            return output.Result();
        }
        const bool bValid = pPage->IsUtf8() ? DecodeUtf8(text, [&](wchar_t nUnit) { output.Put(nUnit); })
                                            : DecodeTable(*pPage, text, output);
        return bValid || (dwFlags & MB_ERR_INVALID_CHARS) == 0 ? output.Result()
                                                               : Fail(ERROR_NO_UNICODE_TRANSLATION, 0);
    });
}

int WideCharToMultiByte(UINT nCodePage, DWORD dwFlags, LPCWSTR szWide, int nUnits, LPSTR szBytes, int nBytes,
                        LPCSTR pDefaultChar, LPBOOL pbUsedDefault)
{
    if (!AreBuffersGood(szWide, nUnits, szBytes, nBytes))
        return Fail(ERROR_INVALID_PARAMETER, 0);
    return OrNoMemory(0, [&] {
        const CPage* pPage = FindPage(nCodePage);
        if (!pPage || (pPage->IsUtf8() && (pDefaultChar || pbUsedDefault)))
            return Fail(ERROR_INVALID_PARAMETER, 0);
        if ((dwFlags & ~(pPage->IsUtf8() ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS)) != 0)
            return Fail(ERROR_INVALID_FLAGS, 0);
        COutput<char> output(szBytes, nBytes);
        const std::wstring_view text = TextOf(szWide, nUnits);
        if (IsAsLongAsText(*pPage, nBytes) && !pbUsedDefault)
        {
            output.CountOnly(text.size());
            return output.Result();
        }
        if (pPage->IsUtf8())
        {
            const bool bValid = EncodeUtf8(text, [&](char c) { output.Put(c); });
            return bValid || dwFlags == 0 ? output.Result() : Fail(ERROR_NO_UNICODE_TRANSLATION, 0);
        }
        CDefaults defaults{ DefaultText(pDefaultChar, pPage->table->IsDoubleByte()),
                            pPage->nNumber == Western && dwFlags == 0 };
        EncodeTable(*pPage, text, defaults, output);
        if (pbUsedDefault)
            *pbUsedDefault = defaults.bUsed;
        return output.Result();
    });
}

UINT GetACP()
{
    return OrNoMemory(Western, [] { return FindPage(CP_ACP)->nNumber; });
}
