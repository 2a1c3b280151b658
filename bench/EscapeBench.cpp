// Escaping of whole texts.
#include "Bench.h"
#include "ovCore/OvXmlEscape.h"
#include "PeerLibxml2.h"
#include "PeerPugixml.h"
#include "PeerRapidxml.h"
#include "PeerTinyxml2.h"

#include <memory>

namespace
{

/// nUnits characters; of each ten one is the given one, or all.
std::wstring MakeText(size_t nUnits, wchar_t cSpecial, bool bAll)
{
    std::wstring text(nUnits, L'a');
    for (size_t i = 0; i < nUnits; ++i)
        text[i] = cSpecial != 0 && (bAll || i % 10 == 5) ? cSpecial : static_cast<wchar_t>(L'a' + i % 26);
    return text;
}

std::string Utf8Of(const std::wstring& text)
{
    std::string result;
    for (const wchar_t c : text)
        if (c < 0x80)
            result += static_cast<char>(c);
        else
            (result += static_cast<char>(0xC0 | (c >> 6))) += static_cast<char>(0x80 | (c & 0x3F));
    return result;
}

void AddOurs(const std::string& row, const std::wstring& text)
{
    const double nUnits = static_cast<double>(text.size());
    Add(row, OURS, nUnits, [=] { benchmark::DoNotOptimize(COvXmlEscape::Escape(text)); });
    Add(row, "limit: copy of the text", nUnits, [=] { benchmark::DoNotOptimize(std::wstring(text)); });
}

void AddLibxml2(const std::string& row, const std::string& text, double nUnits)
{
    Add(row, "libxml2", nUnits, [=] { xmlFree(Libxml2Escape(text)); });
}

// These leave characters beyond ASCII as they are, so they have no part in that row.
void AddOthers(const std::string& row, const std::string& text, double nUnits)
{
    const auto pDoc = std::make_shared<pugi::xml_document>();
    pDoc->append_child(pugi::node_pcdata).set_value(text.c_str());
    Add(row, "pugixml", nUnits, [=] { benchmark::DoNotOptimize(PugixmlEscape(*pDoc)); });
    Add(row, "tinyxml2", nUnits, [=] { benchmark::DoNotOptimize(Tinyxml2Escape(text)); });
    Add(row, "rapidxml", nUnits, [=] {
        std::string output;
        RapidxmlEscape(text, output);
        benchmark::DoNotOptimize(output);
    });
}

} // namespace

void AddEscaping()
{
    const struct
    {
        const char* szName;
        wchar_t cSpecial;
        bool bAll;
    } kinds[] = { { "clean", 0, false }, { "10 % markup", L'<', false }, { "non-ASCII", 0xE9, true } };

    for (const auto& kind : kinds)
        for (const size_t nUnits : { 1024, 65536, 4 * 1024 * 1024 })
        {
            const std::wstring text = MakeText(nUnits, kind.cSpecial, kind.bAll);
            const std::string row = std::string("escaping, ") + kind.szName + ", " + std::to_string(nUnits);
            AddOurs(row, text);
            AddLibxml2(row, Utf8Of(text), static_cast<double>(nUnits));
            if (!kind.bAll)
                AddOthers(row, Utf8Of(text), static_cast<double>(nUnits));
        }
}
