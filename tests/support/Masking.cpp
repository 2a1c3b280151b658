#include "Masking.h"

#include <regex>

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
std::basic_string<Char> MaskAll(std::basic_string<Char> text)
{
    for (const CMask& mask : s_masks)
    {
        const std::string pattern = mask.pattern;
        const std::string replacement = mask.replacement;
        text = std::regex_replace(text, std::basic_regex<Char>(pattern.begin(), pattern.end()),
                                  std::basic_string<Char>(replacement.begin(), replacement.end()));
    }
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
