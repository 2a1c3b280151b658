#include "Platform/Text/CodePageTable.h"

#include <cerrno>
#include <iconv.h>
#include <new>
#include <string>

namespace OvPlatform
{

namespace
{

constexpr unsigned ByteValues = 256;
constexpr unsigned UnitValues = 65536;

/// A converter of iconv.
class CConverter
{
public:
    CConverter(const std::string& to, const std::string& from) : m_converter(iconv_open(to.c_str(), from.c_str()))
    {
        if (!IsOpen() && errno != EINVAL)
            throw std::bad_alloc(); // not a page that is not known
    }
    ~CConverter()
    {
        if (IsOpen())
            iconv_close(m_converter);
    }
    CConverter(const CConverter&) = delete;
    CConverter& operator=(const CConverter&) = delete;

    bool IsOpen() const { return m_converter != reinterpret_cast<iconv_t>(static_cast<intptr_t>(-1)); }

    /// One whole character, from the initial state. Empty when it is none; then bIncomplete says whether more bytes
    /// would make it one.
    std::string Convert(std::string character, bool& bIncomplete)
    {
        iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
        char result[8] = {};
        char* pIn = character.data();
        char* pOut = result;
        size_t nIn = character.size();
        size_t nOut = sizeof result;
        const bool bDone = iconv(m_converter, &pIn, &nIn, &pOut, &nOut) == 0;
        bIncomplete = !bDone && errno == EINVAL;
        // some pages hold a letter back, in case that an accent follows
        const bool bAll = bDone && iconv(m_converter, nullptr, nullptr, &pOut, &nOut) == 0;
        return bAll ? std::string(result, pOut) : std::string();
    }

private:
    const iconv_t m_converter;
};

/// The page's name with iconv.
std::string NameOf(UINT nCodePage)
{
    constexpr UINT FirstIso = 28590; // 28591 is ISO 8859-1
    constexpr UINT LastIso = 28606;
    return nCodePage > FirstIso && nCodePage < LastIso ? "ISO-8859-" + std::to_string(nCodePage - FirstIso)
                                                       : "CP" + std::to_string(nCodePage);
}

/// The one unit of a UTF-16LE text, or Undefined.
wchar_t UnitIn(const std::string& utf16)
{
    if (utf16.size() != 2)
        return CCodePageTable::Undefined;
    return static_cast<wchar_t>(static_cast<BYTE>(utf16[0]) | static_cast<BYTE>(utf16[1]) << 8);
}

std::string Utf16Of(wchar_t nUnit)
{
    return { static_cast<char>(nUnit & 0xFF), static_cast<char>(nUnit >> 8) };
}

/// A character as the tables number it, and as bytes.
unsigned CharacterIn(const std::string& bytes)
{
    unsigned nCharacter = 0;
    for (const char c : bytes)
        nCharacter = nCharacter * ByteValues + static_cast<BYTE>(c);
    return nCharacter;
}

std::string BytesOf(unsigned nCharacter)
{
    std::string bytes(1, static_cast<char>(nCharacter % ByteValues));
    if (nCharacter >= ByteValues)
        bytes.insert(bytes.begin(), static_cast<char>(nCharacter / ByteValues));
    return bytes;
}

/// Where a page's undefined bytes above 0x9F go, one after the other: to units for private use, from this one on.
wchar_t PrivateUnits(UINT nCodePage)
{
    const struct
    {
        UINT nCodePage;
        wchar_t nFirst;
    } rows[] = { { 874, 0xF8C1 }, { 932, 0xF8F0 },  { 936, 0xF8F5 },  { 949, 0xF8F7 },
                 { 950, 0xF8F8 }, { 1253, 0xF8F9 }, { 1255, 0xF88D }, { 1257, 0xF8FC } };
    for (const auto& row : rows)
        if (row.nCodePage == nCodePage)
            return row.nFirst;
    return 0;
}

} // namespace

/// iconv's two converters of a page.
struct CCodePageTable::CSource
{
    explicit CSource(UINT nCodePage) : toUnits("UTF-16LE", NameOf(nCodePage)), toPage(NameOf(nCodePage), "UTF-16LE") {}

    CConverter toUnits;
    CConverter toPage;
};

std::optional<CCodePageTable> CCodePageTable::Load(UINT nCodePage)
{
    CSource source(nCodePage);
    CCodePageTable table;
    if (!source.toUnits.IsOpen() || !source.toPage.IsOpen())
        return std::nullopt;
    table.LoadSingles(source);
    if (table.IsDoubleByte() && !table.LoadPairs(source))
        return std::nullopt;
    table.StandInForUndefined(PrivateUnits(nCodePage));
    table.Invert(source);
    table.m_bKeepsAscii = table.FindKeepsAscii();
    return table;
}

bool CCodePageTable::FindKeepsAscii() const
{
    bool bKeeps = true;
    for (BYTE nByte = 0; nByte < 0x80; ++nByte)
        bKeeps = bKeeps && !IsLead(nByte) && UnitOf(nByte) == nByte && CharacterOf(nByte) == nByte;
    return bKeeps;
}

void CCodePageTable::LoadSingles(CSource& source)
{
    m_units.resize(ByteValues);
    for (unsigned nByte = 0; nByte < ByteValues; ++nByte)
    {
        bool bIncomplete = false;
        m_units[nByte] = UnitIn(source.toUnits.Convert(BytesOf(nByte), bIncomplete));
        m_defined[nByte] = m_units[nByte] != Undefined;
        m_leads[nByte] = bIncomplete;
    }
}

bool CCodePageTable::LoadPairs(CSource& source)
{
    m_units.resize(UnitValues, Undefined);
    bool bIncomplete = false;
    for (unsigned nPair = ByteValues; nPair < UnitValues && !bIncomplete; ++nPair)
        if (m_leads[nPair / ByteValues])
        {
            m_units[nPair] = UnitIn(source.toUnits.Convert(BytesOf(nPair), bIncomplete));
            if (m_units[nPair] != Undefined)
                m_trails[nPair % ByteValues] = true;
        }
    return !bIncomplete;
}

void CCodePageTable::StandInForUndefined(wchar_t nPrivate)
{
    constexpr unsigned FirstControl = 0x80;
    constexpr unsigned LastControl = 0x9F;
    for (unsigned nByte = FirstControl; nByte < ByteValues; ++nByte)
        if (!m_defined[nByte] && !m_leads[nByte])
        {
            m_defined[nByte] = nByte <= LastControl;
            if (nByte <= LastControl)
                m_units[nByte] = static_cast<wchar_t>(nByte);
            else if (nPrivate != 0)
                m_units[nByte] = nPrivate++;
        }
}

void CCodePageTable::Invert(CSource& source)
{
    m_characters.resize(UnitValues);
    for (unsigned nCharacter = 1; nCharacter < m_units.size(); ++nCharacter)
        if (m_units[nCharacter] != Undefined)
        {
            WORD& nWritten = m_characters[static_cast<size_t>(m_units[nCharacter])];
            bool bIncomplete = false;
            // a unit may stand at two places of a page: iconv knows which of them is written
            const bool bTwice = nWritten != 0;
            nWritten = static_cast<WORD>(nCharacter);
            if (bTwice)
                nWritten =
                    static_cast<WORD>(CharacterIn(source.toPage.Convert(Utf16Of(m_units[nCharacter]), bIncomplete)));
        }
}

} // namespace OvPlatform
