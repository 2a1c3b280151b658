// Conversions between wide and narrow texts.
#include "Bench.h"
#include "ovCore/OvStringUtil.h"
#if OV_BENCH_NATIVE
#include "PeerIconv.h"
#endif

#include <memory>

namespace
{

template <class To, class From, class Convert>
void AddDirection(const std::string& row, const std::basic_string<From>& text, [[maybe_unused]] const char* szTo,
                  [[maybe_unused]] const char* szFrom, Convert convert)
{
    const double nUnits = static_cast<double>(text.size());
    Add(row, OURS, nUnits, [=] { benchmark::DoNotOptimize(convert(text)); });
#if OV_BENCH_NATIVE
    const auto pIconv = std::make_shared<CIconv>(szTo, szFrom);
    Add(row, "iconv", nUnits, [=] { benchmark::DoNotOptimize(pIconv->Convert<To>(text)); });
#endif
    Add(row, "limit: plain loop", nUnits,
        [=] { benchmark::DoNotOptimize(std::basic_string<To>(text.begin(), text.end())); });
}

} // namespace

void AddConversions()
{
    const struct
    {
        const char* szName;
        char cEach10th;
    } kinds[] = { { "ASCII", 'x' }, { "1 in 10 not ASCII", '\xE9' } };
    for (const auto& kind : kinds)
        for (const size_t nUnits : { 1500, 1'000'000 })
        {
            std::string narrow(nUnits, 'a');
            for (size_t i = 5; i < nUnits; i += 10)
                narrow[i] = kind.cEach10th;
            const std::wstring wide = COvStringUtil::NarrowToWide(narrow);
            const std::string what = std::string(", ") + kind.szName + ", " + std::to_string(nUnits);
            AddDirection<char>("to narrow" + what, wide, "CP1252", "WCHAR_T",
                               [](const std::wstring& text) { return COvStringUtil::WideToNarrow(text); });
            AddDirection<wchar_t>("to wide" + what, narrow, "WCHAR_T", "CP1252",
                                  [](const std::string& text) { return COvStringUtil::NarrowToWide(text); });
        }
}
