// A code page as tables in both directions.
#pragma once

#include "Platform/Types.h"

#include <bitset>
#include <optional>
#include <vector>

namespace OvPlatform
{

/// A page of one or two bytes a character, each of which is one UTF-16 unit. Made once through iconv, unchanged after.
class CCodePageTable
{
public:
    /// Nothing for a page that is not known, or whose characters take more than two bytes. Throws std::bad_alloc.
    static std::optional<CCodePageTable> Load(UINT nCodePage);

    bool IsDoubleByte() const { return m_leads.any(); }
    bool IsLead(BYTE nByte) const { return m_leads[nByte]; }

    /// Whether some character ends in that byte.
    bool IsTrail(BYTE nByte) const { return m_trails[nByte]; }

    /// The unit of a character: its byte, or lead * 256 + trail. Undefined when there is none; for a single byte that
    /// the page lacks, what stands for it.
    wchar_t UnitOf(unsigned nCharacter) const { return m_units[nCharacter]; }

    /// Whether a single byte counts as valid; 0x80 to 0x9F always do, unless they lead.
    bool IsDefined(BYTE nByte) const { return m_defined[nByte]; }

    /// The character of a unit, as for UnitOf; 0 when the page lacks it, and for U+0000.
    WORD CharacterOf(wchar_t nUnit) const { return m_characters[static_cast<WORD>(nUnit)]; }

    /// Whether each character of ASCII is a single byte of the same number.
    bool KeepsAscii() const { return m_bKeepsAscii; }

    static constexpr wchar_t Undefined = 0xFFFD;

private:
    struct CSource;

    CCodePageTable() = default;
    void LoadSingles(CSource& source);
    bool LoadPairs(CSource& source);            ///< false: characters take more than two bytes
    void StandInForUndefined(wchar_t nPrivate); ///< bytes above 0x9F: nPrivate and up, unless it is 0
    void Invert(CSource& source);
    bool FindKeepsAscii() const;

    std::vector<wchar_t> m_units; // 256, or 65536 of a double-byte page
    std::vector<WORD> m_characters;
    std::bitset<256> m_leads;
    std::bitset<256> m_trails;
    std::bitset<256> m_defined;
    bool m_bKeepsAscii = true;
};

} // namespace OvPlatform
