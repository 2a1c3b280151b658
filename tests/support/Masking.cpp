#include "Masking.h"

#include <regex>
#include <vector>

namespace
{

struct CMask
{
    const char* pattern;
    const char* replacement;
};

const CMask s_masks[] = {
    { "( File: [^ ]* Line: )[0-9]+( Evidence: )", "$1#$2" },
    { "(Source: [^ ()]*\\()[0-9]+\\)", "$1#)" },
    { "(More Info From [^ ()]*\\()[0-9]+\\)", "$1#)" },
    { "( \\[[^ :\\[\\]]+:)[0-9]+(\\] \\^)", "$1#$2" },
    { "\\b(pIn|pOut|pDoc|m_spNode): -?[0-9]+", "$1: #" },
    { "( id=\")[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\"", "$1#\"" },
    { "( timestamp=\")[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.000\"", "$1#\"" },
};

template <class Char>
struct CCompiledMask
{
    std::basic_regex<Char> pattern;
    std::basic_string<Char> replacement;
};

template <class Char>
std::vector<CCompiledMask<Char>> CompileMasks()
{
    std::vector<CCompiledMask<Char>> masks;
    for (const CMask& mask : s_masks)
    {
        const std::string pattern = mask.pattern;
        const std::string replacement = mask.replacement;
        masks.push_back({ std::basic_regex<Char>(pattern.begin(), pattern.end()),
                          std::basic_string<Char>(replacement.begin(), replacement.end()) });
    }
    return masks;
}

template <class Char>
std::basic_string<Char> MaskAll(std::basic_string<Char> text)
{
    static const std::vector<CCompiledMask<Char>> masks = CompileMasks<Char>(); // compiling them takes milliseconds
    for (const CCompiledMask<Char>& mask : masks)
        text = std::regex_replace(text, mask.pattern, mask.replacement);
    return text;
}

} // namespace

std::string Masked(const std::string& text)
{
    return MaskAll(text);
}

std::wstring Masked(const std::wstring& text)
{
    return MaskAll(text);
}
