// Any text as a version number, beside a reader that goes character by character.
#include "Fuzz.h"
#include "ovCore/OvVersion.h"

#include <cwctype>
#include <vector>

namespace
{

bool IsSeparator(wchar_t c)
{
    return c == L'\0' || c == L'.' || c == L',';
}

/// Whether what begins at the text is a number: with "0x" before it, a hexadecimal one.
bool BeginsWithNumber(const wchar_t* szText)
{
    const bool bHex = szText[0] == L'0' && (szText[1] == L'x' || szText[1] == L'X');
    return bHex ? IsSeparator(szText[2]) || std::iswxdigit(static_cast<wint_t>(szText[2])) != 0
                : szText[0] >= L'0' && szText[0] <= L'9';
}

/// The parts that count, of a text without zeros in it.
std::vector<unsigned> PlainParts(const std::wstring& strText)
{
    std::vector<unsigned> parts;
    const auto isDigit = [&](size_t i) { return strText.c_str()[i] >= L'0' && strText.c_str()[i] <= L'9'; };
    for (size_t i = 0; parts.size() < 4 && i < strText.size() && BeginsWithNumber(&strText[i]); ++i)
    {
        unsigned nPart = 0;
        for (; isDigit(i); ++i)
            nPart = (nPart * 10 + static_cast<unsigned>(strText[i] - L'0')) & 0xFFFF; // the low bits are the same
        parts.push_back(nPart);
        while (!IsSeparator(strText.c_str()[i]))
            ++i;
    }
    return parts;
}

std::wstring Joined(const std::vector<unsigned>& parts)
{
    std::wstring strText;
    for (const unsigned nPart : parts)
        strText += (strText.empty() ? L"" : L".") + std::to_wstring(nPart);
    return strText;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    std::wstring strText;
    for (size_t i = 0; i < nSize && pData[i] != 0; ++i)
        strText += static_cast<wchar_t>(pData[i] < 0x80 ? pData[i] : pData[i] << 8); // other digits too
    const std::vector<unsigned> parts = PlainParts(strText);

    COvVersion version(1, 2, 3, 4);
    Demand(version.SetVersion(strText) == !parts.empty(), "a part was read or none");
    Demand(version.AsStr() == Joined(parts), "the parts are those of the plain reading");
    COvVersion again;
    again.SetVersion(version.AsStr());
    Demand(again == version && again.AsStr() == version.AsStr(), "what is written reads back");

    const auto at = [&](size_t n) { return static_cast<USHORT>(n < parts.size() ? parts[n] : 0); };
    Demand(version == COvVersion(at(0), at(1), at(2), at(3)), "a version equals its parts");
    Demand(version.IsValid() == (at(0) + at(1) + at(2) + at(3) != 0), "0.0.0.0 is not valid, nor is no part");
    return 0;
}
