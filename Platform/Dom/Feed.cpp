#include "Platform/Dom/Feed.h"

#include "Platform/Text/Utf8.h"

#include <algorithm>

namespace OvPlatform::Dom
{

namespace
{

struct CCharacter
{
    uint32_t m_nValue;
    size_t m_nUnits;
};

/// The library takes a NUL for the end of the text, so that a NUL becomes another character that XML forbids. A lone
/// surrogate stays what it is: the library refuses it.
CCharacter CharacterAt(std::wstring_view text, size_t nAt)
{
    constexpr uint32_t nForbidden = 1;
    const wchar_t unit = text[nAt];
    if (unit <= L'\0' || unit > L'\xFFFF')
        return { nForbidden, 1 };
    if (IsHighSurrogate(unit) && nAt + 1 < text.size() && IsLowSurrogate(text[nAt + 1]))
        return { 0x10000u + ((static_cast<uint32_t>(unit) & 0x3FFu) << 10) +
                     (static_cast<uint32_t>(text[nAt + 1]) & 0x3FFu),
                 2 };
    return { static_cast<uint32_t>(unit), 1 };
}

int Utf8Size(uint32_t nValue)
{
    return nValue < 0x80 ? 1 : nValue < 0x800 ? 2 : nValue < 0x10000 ? 3 : 4;
}

void WriteUtf8(char* pOut, uint32_t nValue, int nSize)
{
    static constexpr uint32_t s_firstByte[] = { 0, 0x00, 0xC0, 0xE0, 0xF0 };
    for (int i = nSize - 1; i > 0; --i, nValue >>= 6)
        pOut[i] = static_cast<char>(0x80u | (nValue & 0x3Fu));
    pOut[0] = static_cast<char>(s_firstByte[nSize] | nValue);
}

} // namespace

int CFeed::Read(char* pBuffer, int nRoom)
{
    constexpr ptrdiff_t nLongest = 4;
    char* pOut = pBuffer;
    char* const pEnd = pBuffer + nRoom;
    size_t nNext = m_nNext; // in a register: what is written to the buffer may not change it
    CAttributeMeter meter = m_meter;
    while (!m_bStopped && nNext < m_text.size() && pEnd - pOut >= nLongest)
    {
        const size_t nRoomLeft = static_cast<size_t>(pEnd - pOut);
        const size_t nPlain = meter.CopyPlain(m_text.data() + nNext, std::min(m_text.size() - nNext, nRoomLeft), pOut);
        nNext += nPlain;
        pOut += nPlain;
        if (nPlain != 0)
            continue;
        const wchar_t unit = m_text[nNext];
        if (!meter.Take(unit))
        {
            m_bTooManyAttributes = m_bStopped = true;
            break;
        }
        if (unit > 0 && unit < 0x80)
        {
            *pOut++ = static_cast<char>(unit);
            ++nNext;
            continue;
        }
        const CCharacter character = CharacterAt(m_text, nNext);
        const int nSize = Utf8Size(character.m_nValue);
        WriteUtf8(pOut, character.m_nValue, nSize);
        pOut += nSize;
        nNext += character.m_nUnits;
    }
    m_nNext = nNext;
    m_meter = meter;
    return m_bStopped ? 0 : static_cast<int>(pOut - pBuffer);
}

size_t CFeed::PositionOfByte(unsigned long nBytes) const
{
    size_t nAt = 0;
    while (nAt < m_text.size())
    {
        const CCharacter character = CharacterAt(m_text, nAt);
        const unsigned long nSize = static_cast<unsigned long>(Utf8Size(character.m_nValue));
        if (nBytes < nSize)
            break;
        nBytes -= nSize;
        nAt += character.m_nUnits;
    }
    return nAt;
}

} // namespace OvPlatform::Dom
