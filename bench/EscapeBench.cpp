// Escaping of whole texts.
#include "Bench.h"
#include "ovCore/OvXmlEscape.h"
#include "PeerPugixml.h"
#include "PeerRapidxml.h"
#include "PeerTinyxml2.h"
#if OV_BENCH_NATIVE
#include "PeerLibxml2.h"
#endif

#include <memory>
#include <random>

namespace
{

constexpr size_t NEVER = 0;

/// Letters with one of the special ones in between, on average each nEvery characters, at places that can't be guessed.
std::wstring MakeText(size_t nUnits, const std::wstring& special, size_t nEvery)
{
    std::minstd_rand random(1);
    std::wstring text(nUnits, L'a');
    for (wchar_t& c : text)
        c = nEvery != NEVER && random() % nEvery == 0 ? special[random() % special.size()]
                                                      : static_cast<wchar_t>(L'a' + random() % 26);
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

#if OV_BENCH_NATIVE
void AddLibxml2(const std::string& row, const std::string& text, double nUnits)
{
    Add(row, "libxml2", nUnits, [=] { xmlFree(Libxml2Escape(text)); });
}
#else
void AddLibxml2(const std::string&, const std::string&, double) {}
#endif

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
        std::wstring special;
        size_t nEvery;
        bool bForAll; // done by all peers
    } kinds[] = { { "clean", L"", NEVER, true },
                  { "10 % markup", L"<>&\"'", 10, true },
                  { "non-ASCII", L"\xE9\x105\x3B1\x416", 1, false } };

    for (const auto& kind : kinds)
        for (const size_t nUnits : { 1024, 65536, 4 * 1024 * 1024 })
        {
            const std::wstring text = MakeText(nUnits, kind.special, kind.nEvery);
            const std::string row = std::string("escaping, ") + kind.szName + ", " + std::to_string(nUnits);
            AddOurs(row, text);
            AddLibxml2(row, Utf8Of(text), static_cast<double>(nUnits));
            if (kind.bForAll)
                AddOthers(row, Utf8Of(text), static_cast<double>(nUnits));
        }
}
