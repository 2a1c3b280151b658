#include "Platform/Text/CodePageBestFit.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace OvPlatform
{

namespace
{

/// What stands for a run of units that the page lacks; "." where nothing does.
struct CRun
{
    wchar_t nFirst;
    std::string_view bytes;
};

// Latin, Greek, punctuation, super- and subscripts, letter-like, mathematical and box-drawing characters, by the unit.
constexpr CRun Runs[] = {
    { 0x0100, "AaAaAaCcCcCcCcDd\xD0"
              "dEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIi..JjKk.LlLlLl..LlNnNnNn...OoOoOo..RrRrRrSsSsSs..TtTtTtUuUuUuUuUuUuWwYy."
              "ZzZz...b" },
    { 0x0189, "\xD0" },
    { 0x0191, "\x83.....I..l....OOo" },
    { 0x01AB, "t..TUu.....z" },
    { 0x01C0, "|..!" },
    { 0x01CD, "AaIiOoUuUuUuUuUu.Aa....GgGgKkOoOo..j" },
    { 0x0261, "g" },
    { 0x02B9, "'\".'" },
    { 0x02C4, "^...'\xAF\xB4`._" },
    { 0x02DA, "\xB0" },
    { 0x0300, "`\xB4^~\xAF\xAF..\xA8.\xB0...\"" },
    { 0x0327, "\xB8" },
    { 0x0331, "__" },
    { 0x037E, ";" },
    { 0x0393, "G....T" },
    { 0x03A3, "S..F..O" },
    { 0x03B1, "a\xDF.de" },
    { 0x03BC, "\xB5...p..st.f" },
    { 0x04BB, "h" },
    { 0x0589, ":" },
    { 0x066A, "%" },
    { 0x2000, "       " },
    { 0x2010, "--.....=" },
    { 0x2024, "\xB7" },
    { 0x2032, "'..`" },
    { 0x2044, "/" },
    { 0x2070, "\xB0...45678" },
    { 0x207F, "n0123456789" },
    { 0x20A1, "\xA2..\xA3..P" },
    { 0x2102, "C....E..gHHHh.IILl.N..PPQRRR" },
    { 0x2124, "Z...Z.K\xC5"
              "BCeeEF.Mo" },
    { 0x2205, "\xD8" },
    { 0x2212, "-\xB1./\\*\xB0\xB7v...8....|.....n" },
    { 0x2236, ":.....~" },
    { 0x2248, "\x98" },
    { 0x2261, "=..==....\xAB\xBB" },
    { 0x22C5, "\xB7" },
    { 0x2302, "\xA6^" },
    { 0x2310, "\xAC" },
    { 0x2320, "()" },
    { 0x2329, "<>" },
    { 0x2500, "-.\xA6" },
    { 0x250C, "+...+...+...+...+" },
    { 0x2524, "\xA6" },
    { 0x252C, "-" },
    { 0x2534, "-" },
    { 0x253C, "+" },
    { 0x2550, "-\xA6++++++++++++\xA6\xA6\xA6\xA6\xA6\xA6------+++" },
    { 0x2580, "\xAF..._...\xA6...\xA6...\xA6\xA6\xA6\xA6" },
    { 0x25A0, "\xA6" },
    { 0x263C, "\xA4" },
    { 0x2758, "|" },
    { 0x3000, " " },
    { 0x3008, "<>\xAB\xBB" },
    { 0x301A, "[]" },
    { 0x30FB, "\xB7" },
};

constexpr wchar_t FullWidthFirst = 0xFF01; // the printable ASCII characters in full width
constexpr wchar_t FullWidthLast = 0xFF5E;
constexpr wchar_t FullWidthQuestionMark = 0xFF1F;
constexpr char None = '.';

} // namespace

char BestFit1252(wchar_t nUnit)
{
    if (nUnit == FullWidthQuestionMark) // the platform takes "?" for the mark of a failure here
        return 0;
    if (nUnit >= FullWidthFirst && nUnit <= FullWidthLast)
        return static_cast<char>(nUnit - FullWidthFirst + '!');
    const auto above = std::upper_bound(std::begin(Runs), std::end(Runs), nUnit,
                                        [](wchar_t nValue, const CRun& run) { return nValue < run.nFirst; });
    if (above == std::begin(Runs))
        return 0;
    const CRun& run = *std::prev(above);
    const auto nIndex = static_cast<size_t>(nUnit - run.nFirst);
    return nIndex < run.bytes.size() && run.bytes[nIndex] != None ? run.bytes[nIndex] : '\0';
}

} // namespace OvPlatform
