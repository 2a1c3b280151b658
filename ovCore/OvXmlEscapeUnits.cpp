#include "OvXmlEscape.h"

#include "OvXmlUnitBlock.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace
{

constexpr uint32_t ASCII_UNITS = 0x80;
constexpr size_t REFERENCE_LENGTH = 8; // of "&#xHHHH;"
constexpr size_t PAIR_LENGTH = 10;     // of "&#xHHHHHH;"
constexpr ptrdiff_t PIECE_ROOM = 10;   // what one unit or pair takes at most

bool IsHighSurrogate(uint32_t c)
{
    return (c & 0xFFFFFC00) == 0xD800;
}

bool IsLowSurrogate(uint32_t c)
{
    return (c & 0xFFFFFC00) == 0xDC00;
}

uint32_t UnitAt(const wchar_t* p)
{
    return static_cast<uint32_t>(*p);
}

/// Whether a surrogate pair begins at p.
bool IsPair(const wchar_t* p, const wchar_t* pEnd)
{
    return IsHighSurrogate(UnitAt(p)) && p + 1 != pEnd && IsLowSurrogate(UnitAt(p + 1));
}

/// Writes a hexadecimal reference with nDigits digits. @return its end.
constexpr wchar_t* WriteReference(wchar_t* p, uint32_t nCode, unsigned nDigits)
{
    *p++ = L'&';
    *p++ = L'#';
    *p++ = L'x';
    for (unsigned nShift = nDigits * 4; nShift != 0; nShift -= 4)
        *p++ = L"0123456789ABCDEF"[nCode >> (nShift - 4) & 0xF];
    *p++ = L';';
    return p;
}

/// What escaping makes of a unit of ASCII.
struct CPiece
{
    wchar_t units[REFERENCE_LENGTH]; // and zeros behind
};

constexpr std::wstring_view EntityOf(uint32_t c, bool bQuotes)
{
    switch (c)
    {
    case '&':
        return L"&amp;";
    case '<':
        return L"&lt;";
    case '>':
        return L"&gt;";
    case '"':
        return bQuotes ? L"&quot;" : L"\"";
    case '\'':
        return bQuotes ? L"&apos;" : L"'";
    default:
        return {};
    }
}

struct CPieces
{
    explicit constexpr CPieces(bool bQuotes)
    {
        for (uint32_t c = 0; c < ASCII_UNITS; ++c)
        {
            wchar_t* const p = pieces[c].units;
            const std::wstring_view entity = EntityOf(c, bQuotes);
            lengths[c] = static_cast<uint8_t>(entity.size());
            for (size_t i = 0; i < entity.size(); ++i)
                p[i] = entity[i];
            if (entity.empty() && c >= 0x20 && c <= 0x7E)
                p[0] = static_cast<wchar_t>(c), lengths[c] = 1;
            else if (entity.empty())
                lengths[c] = static_cast<uint8_t>(WriteReference(p, c, 4) - p);
        }
    }

    CPiece pieces[ASCII_UNITS] = {};
    uint8_t lengths[ASCII_UNITS] = {};
};

constexpr CPieces s_withQuotes(true);
constexpr CPieces s_withoutQuotes(false);

/// Escapes the unit at p, or the pair that begins there. @param pOut  room for PIECE_ROOM units; moved to the end.
/// @return what follows in the text.
const wchar_t* EscapeOne(const wchar_t* p, const wchar_t* pEnd, const CPieces& pieces, wchar_t*& pOut)
{
    const uint32_t c = UnitAt(p);
    if (c < ASCII_UNITS)
    {
        std::memcpy(pOut, pieces.pieces[c].units, sizeof(CPiece));
        pOut += pieces.lengths[c];
        return p + 1;
    }
    const bool bPair = IsPair(p, pEnd);
    const uint32_t nPair = (c - 0xD800) * 0x400 + (UnitAt(p + (bPair ? 1 : 0)) - 0xDC00) + 0x10000;
    pOut = bPair ? WriteReference(pOut, nPair, 6) : WriteReference(pOut, c, 4);
    return p + (bPair ? 2 : 1);
}

size_t LengthOfOne(const wchar_t*& p, const wchar_t* pEnd, const CPieces& pieces)
{
    const uint32_t c = UnitAt(p);
    const bool bPair = IsPair(p, pEnd);
    p += bPair ? 2 : 1;
    return c < ASCII_UNITS ? pieces.lengths[c] : bPair ? PAIR_LENGTH : REFERENCE_LENGTH;
}

size_t LengthOfAscii(const wchar_t* p, const CPieces& pieces)
{
    size_t nLength = 0;
    for (ptrdiff_t i = 0; i < UNITS_IN_BLOCK; ++i)
        nLength += pieces.lengths[UnitAt(p + i)];
    return nLength;
}

/// What escaping the text takes.
uint64_t EscapedLength(const wchar_t* p, const wchar_t* const pEnd, const CPieces& pieces)
{
    uint64_t nTotal = 0;
    while (p != pEnd)
    {
        const UnitBlock kind = pEnd - p >= UNITS_IN_BLOCK ? KindOfBlock(p) : UnitBlock::Other;
        if (kind == UnitBlock::Other)
        {
            const wchar_t* const pStop = p + std::min(UNITS_IN_BLOCK, pEnd - p);
            while (p < pStop)
                nTotal += LengthOfOne(p, pEnd, pieces);
            continue;
        }
        nTotal += kind == UnitBlock::Plain ? UNITS_IN_BLOCK : LengthOfAscii(p, pieces);
        p += UNITS_IN_BLOCK;
    }
    return nTotal;
}

/// Escapes block by block while there is plenty of text and of room, so that pieces may be copied with the zeros behind
/// them: what follows overwrites those. @param pOut  moved to the end. @return what was not escaped.
const wchar_t* EscapeBlocks(const wchar_t* p, const wchar_t* pEnd, const CPieces& pieces, wchar_t*& pOut,
                            const wchar_t* pOutEnd)
{
    constexpr ptrdiff_t FOLLOWING = REFERENCE_LENGTH;
    constexpr ptrdiff_t ROOM = (UNITS_IN_BLOCK + 1) * REFERENCE_LENGTH + 2 * PIECE_ROOM;
    while (pEnd - p >= UNITS_IN_BLOCK + FOLLOWING && pOutEnd - pOut >= ROOM)
    {
        const wchar_t* const pStop = p + UNITS_IN_BLOCK;
        if (KindOfBlock(p) == UnitBlock::Plain)
        {
            pOut = std::copy(p, pStop, pOut);
            p = pStop;
        }
        while (p < pStop)
            p = EscapeOne(p, pEnd, pieces, pOut);
    }
    return p;
}

} // namespace

size_t EscapeXML(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags)
{
    if (pIn == nullptr)
        _com_issue_error(E_FAIL);
    const CPieces& pieces = (dwFlags & ESCAPE_ATTRIBUTE) != 0 ? s_withQuotes : s_withoutQuotes;
    const wchar_t* const pEnd = pIn + nIn;
    if (pOut == nullptr)
    {
        const uint64_t nTotal = EscapedLength(pIn, pEnd, pieces);
        if (nTotal > static_cast<size_t>(-1))
            throw std::bad_alloc(); // more than the address space holds
        return static_cast<size_t>(nTotal);
    }
    wchar_t* pTo = pOut;
    const wchar_t* p = EscapeBlocks(pIn, pEnd, pieces, pTo, pOut + nOut);
    while (p != pEnd)
    {
        wchar_t piece[PIECE_ROOM];
        wchar_t* pPieceEnd = piece;
        p = EscapeOne(p, pEnd, pieces, pPieceEnd);
        if (pPieceEnd - piece > pOut + nOut - pTo)
            return 0;
        pTo = std::copy(piece, pPieceEnd, pTo);
    }
    return static_cast<size_t>(pTo - pOut);
}
