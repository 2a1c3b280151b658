// Long documents: elements with three attributes, one value in ten with markup in it.
#include "Bench.h"
#include "PeerPugixml.h"
#include "PeerRapidxml.h"
#include "PeerTinyxml2.h"
#include "WriterOurs.h"
#if OV_BENCH_NATIVE
#include "PeerLibxml2.h"
#endif

#include <memory>
#include <vector>

namespace
{

template <class Char>
using Values = std::vector<std::basic_string<Char>>;

template <class Char>
Values<Char> MakeValues(size_t nElements)
{
    Values<Char> values;
    for (size_t i = 0; i < nElements * 3; ++i)
    {
        const std::string value = (i % 10 == 0 ? "a < b & c " : "KB-update ") + std::to_string(i);
        values.emplace_back(value.begin(), value.end());
    }
    return values;
}

template <class Writer, class Char, class Names>
void Write(const Values<Char>& values, const Names& names)
{
    const auto pWriter = std::make_unique<Writer>();
    pWriter->Start(names[0]);
    for (size_t i = 0; i < values.size(); i += 3)
    {
        pWriter->Start(names[1]);
        for (size_t k = 0; k < 3; ++k)
            pWriter->Attribute(names[2 + k], values[i + k].c_str());
        pWriter->End();
    }
    pWriter->End();
    benchmark::DoNotOptimize(pWriter->Text(values.size() * 48));
}

const char* const s_narrowNames[] = { "list", "item", "id", "name", "state" };
const wchar_t* const s_wideNames[] = { L"list", L"item", L"id", L"name", L"state" };

/// The values of the last size that was asked for.
template <class Char>
const Values<Char>& ValuesFor(size_t nElements)
{
    static Values<Char> values;
    if (values.size() != nElements * 3)
        values = MakeValues<Char>(nElements);
    return values;
}

template <class Writer, class Char, class Names>
void AddWriter(const std::string& row, size_t nElements, const char* szName, const Names& names)
{
    benchmark::RegisterBenchmark((row + "|" + szName).c_str(), [nElements, &names](benchmark::State& state) {
        const Values<Char>& values = ValuesFor<Char>(nElements);
        Run(state, static_cast<double>(nElements), [&] { Write<Writer, Char>(values, names); });
    });
}

} // namespace

void AddElements()
{
    for (const size_t n : { 10'000, 100'000, 1'000'000 })
    {
        const std::string row = "elements, " + std::to_string(n);
        AddWriter<CWriterOurs, wchar_t>(row, n, OURS, s_wideNames);
        AddWriter<CRapidxmlWriter, char>(row, n, "rapidxml", s_narrowNames);
        AddWriter<CPugixmlWriter, char>(row, n, "pugixml", s_narrowNames);
        AddWriter<CTinyxml2Writer, char>(row, n, "tinyxml2", s_narrowNames);
#if OV_BENCH_NATIVE
        AddWriter<CLibxml2Writer, char>(row, n, "libxml2", s_narrowNames);
#endif
    }
}
