#include "Masking.h"

#include <regex>
#include <vector>

namespace
{

struct CMask
{
    std::wregex pattern;
    const wchar_t* replacement;
};

const std::vector<CMask>& Masks()
{
    static const std::vector<CMask> s_masks = {
        // compiling them takes milliseconds
        { std::wregex(L"( File: [^ ]* Line: )[0-9]+( Evidence: )"), L"$1#$2" },
        { std::wregex(L"((Source: |More Info From )[^ ()]*\\()[0-9]+\\)"), L"$1#)" },
        { std::wregex(L"( \\[[^ :\\[\\]]+:)[0-9]+(\\] \\^)"), L"$1#$2" },
        { std::wregex(L"\\b(pIn|pOut|pDoc|m_spNode): -?[0-9]+"), L"$1: #" },
        { std::wregex(L"( id=\")[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\""), L"$1#\"" },
        { std::wregex(L"( timestamp=\")[0-9]{4}(-[0-9]{2}){2}T[0-9]{2}(:[0-9]{2}){2}\\.000\""), L"$1#\"" },
    };
    return s_masks;
}

} // namespace

std::wstring Masked(std::wstring text)
{
    for (const CMask& mask : Masks())
        text = std::regex_replace(text, mask.pattern, mask.replacement);
    return text;
}

std::string Masked(const std::string& text)
{
    std::wstring wide; // a byte a unit, and back
    for (const char c : text)
        wide += static_cast<unsigned char>(c);
    std::string masked;
    for (const wchar_t c : Masked(wide))
        masked += static_cast<char>(c);
    return masked;
}
