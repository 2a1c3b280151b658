#include "ovCore/OvXmlEscape.h"

#include "ovCore/OvXmlPieces.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{

constexpr ptrdiff_t PIECE_ROOM = PAIR_LENGTH; // what a unit or a pair takes at most

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

/// How far a text is escaped, and what was written.
struct CPlace
{
    const wchar_t* p;
    wchar_t* pOut;
};

/// Writes what a unit of ASCII becomes, and zeros behind it. @return its end.
inline wchar_t* PutPiece(wchar_t* pOut, const CPieces& pieces, uint32_t c)
{
    std::memcpy(pOut, pieces.units[c], sizeof(pieces.units[c]));
    return pOut + pieces.lengths[c];
}

/// Escapes the next unit, or the pair that begins there. Needs room for PIECE_ROOM units.
inline CPlace EscapeOne(CPlace place, const wchar_t* pEnd, const CPieces& pieces)
{
    const uint32_t c = UnitAt(place.p);
    if (c < ASCII_UNITS)
        return { place.p + 1, PutPiece(place.pOut, pieces, c) };
    if (!IsPair(place.p, pEnd))
        return { place.p + 1, WriteReference<4>(place.pOut, c) };
    const uint32_t nCode = (c - 0xD800) * 0x400 + (UnitAt(place.p + 1) - 0xDC00) + 0x10000;
    return { place.p + 2, WriteReference<6>(place.pOut, nCode) };
}

/// What escaping the text takes.
uint64_t EscapedLength(const wchar_t* p, const wchar_t* const pEnd, const CPieces& pieces)
{
    uint64_t nTotal = 0;
    while (p != pEnd)
    {
        const size_t nBlock = pEnd - p >= UNITS_IN_BLOCK ? BlockLength(p, pieces) : 0;
        if (nBlock != 0)
        {
            nTotal += nBlock;
            p += UNITS_IN_BLOCK;
            continue;
        }
        for (const wchar_t* const pStop = p + std::min(UNITS_IN_BLOCK, pEnd - p); p < pStop;)
        {
            const bool bPair = IsPair(p, pEnd);
            nTotal += UnitAt(p) < ASCII_UNITS ? pieces.lengths[UnitAt(p)] : bPair ? PAIR_LENGTH : REFERENCE_LENGTH;
            p += bPair ? 2 : 1;
        }
    }
    return nTotal;
}

/// Escapes a block of ASCII. @return the end of what was written; null when there is more than ASCII in it.
inline wchar_t* EscapeAsciiBlock(const wchar_t* p, wchar_t* pOut, const CPieces& pieces)
{
    const wchar_t* const pStop = p + UNITS_IN_BLOCK;
#if OV_BLOCKS_WITH_SSE2
    if (&pieces == &PIECES_WITH_QUOTES && HasSse2())
    {
        uint32_t nSpecial = 0;
        if (BlockLengthSse2(p, &nSpecial) == 0)
            return nullptr;
        const wchar_t* const pBlock = p;
        for (; nSpecial != 0; nSpecial &= nSpecial - 1)
        {
            const wchar_t* const pPlain = p;
            p = pBlock + __builtin_ctz(nSpecial);
            std::memcpy(pOut, pPlain, UNITS_IN_BLOCK * sizeof(wchar_t)); // more than is needed, but all at once
            pOut = PutPiece(pOut + (p - pPlain), pieces, UnitAt(p));
            ++p;
        }
        std::memcpy(pOut, p, UNITS_IN_BLOCK * sizeof(wchar_t));
        return pOut + (pStop - p);
    }
#endif
    const size_t nBlock = BlockLengthPortably(p, pieces);
    if (nBlock == 0)
        return nullptr;
    if (nBlock == UNITS_IN_BLOCK) // nothing in it becomes longer
        return std::copy(p, pStop, pOut);
    for (; p != pStop; ++p)
        pOut = PutPiece(pOut, pieces, UnitAt(p));
    return pOut;
}

/// Escapes block by block while there is plenty of text and of room, so that more may be read and written than is
/// needed: what follows overwrites it.
CPlace EscapeBlocks(CPlace place, const wchar_t* pEnd, const CPieces& pieces, const wchar_t* pOutEnd)
{
    constexpr ptrdiff_t ROOM = (UNITS_IN_BLOCK + 1) * REFERENCE_LENGTH + UNITS_IN_BLOCK + 2 * PIECE_ROOM;
    while (pEnd - place.p >= 2 * UNITS_IN_BLOCK && pOutEnd - place.pOut >= ROOM)
    {
        const wchar_t* const pStop = place.p + UNITS_IN_BLOCK;
        if (wchar_t* const pOut = EscapeAsciiBlock(place.p, place.pOut, pieces))
            place = { pStop, pOut };
        while (place.p < pStop)
            place = EscapeOne(place, pEnd, pieces);
    }
    return place;
}

/// Escapes piece by piece. @return whether everything fitted.
bool EscapePieces(CPlace& place, const wchar_t* pEnd, const CPieces& pieces, const wchar_t* pOutEnd)
{
    const wchar_t* p = place.p;
    wchar_t* pOut = place.pOut;
    while (p != pEnd)
    {
        if (pieces.IsPlain(UnitAt(p)) && pOut != pOutEnd)
        {
            *pOut++ = *p++;
            continue;
        }
        wchar_t piece[PIECE_ROOM];
        const CPlace next = EscapeOne({ p, piece }, pEnd, pieces);
        if (next.pOut - piece > pOutEnd - pOut)
            return false;
        pOut = std::copy<const wchar_t*>(piece, next.pOut, pOut);
        p = next.p;
    }
    place = { p, pOut };
    return true;
}

} // namespace

size_t EscapeXML(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags)
{
    if (pIn == nullptr)
        _com_issue_error(E_FAIL);
    const CPieces& pieces = (dwFlags & ESCAPE_ATTRIBUTE) != 0 ? PIECES_WITH_QUOTES : PIECES_WITHOUT_QUOTES;
    const wchar_t* const pEnd = pIn + nIn;
    if (pOut == nullptr)
    {
        const uint64_t nTotal = EscapedLength(pIn, pEnd, pieces);
        if (nTotal > static_cast<size_t>(-1))
            throw std::bad_alloc(); // more than the address space holds
        return static_cast<size_t>(nTotal);
    }
    CPlace place = EscapeBlocks({ pIn, pOut }, pEnd, pieces, pOut + nOut);
    return EscapePieces(place, pEnd, pieces, pOut + nOut) ? static_cast<size_t>(place.pOut - pOut) : 0;
}

size_t CleanUnits(const wchar_t* pIn, size_t nIn)
{
    const wchar_t* p = pIn;
    const wchar_t* const pEnd = pIn + nIn;
    while (pEnd - p >= UNITS_IN_BLOCK && BlockLength(p, PIECES_WITH_QUOTES) == UNITS_IN_BLOCK)
        p += UNITS_IN_BLOCK;
    while (p != pEnd && PIECES_WITH_QUOTES.IsPlain(UnitAt(p)))
        ++p;
    return static_cast<size_t>(p - pIn);
}
