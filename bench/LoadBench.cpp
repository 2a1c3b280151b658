// From nothing to an adapter, step by step, as a host does it.
#include "Bench.h"
#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <chrono>

namespace
{

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Loads, makes the adapter and takes everything down again; one of the two steps is timed.
void Load(benchmark::State& state, bool bAdapter)
{
    for (auto _ : state)
    {
        auto start = Clock::now();
        const HMODULE hModule = ::LoadLibraryW(OV_LIBRARY);
        const double loaded = SecondsSince(start);
        const auto pGetFactory = reinterpret_cast<GetAdapterFactory1_0Function>(
            reinterpret_cast<void*>(::GetProcAddress(hModule, PATCHADAPTER_GET_FACTORY_NAME)));
        start = Clock::now();
        IAdapterFactory* const pFactory = pGetFactory();
        IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, nullptr, nullptr);
        const double made = SecondsSince(start);
        pFactory->Uninitialise(pAdapter);
        DeleteAdapterFactory(pFactory);
        ::FreeLibrary(hModule);
        state.SetIterationTime(bAdapter ? made : loaded);
    }
    state.counters["units"] = 1;
}

} // namespace

void AddLoading()
{
    for (const bool bAdapter : { false, true })
        benchmark::RegisterBenchmark(
            (std::string(bAdapter ? "factory and adapter" : "loading the library") + "|" + OURS).c_str(),
            [=](benchmark::State& state) { Load(state, bAdapter); })
            ->UseManualTime()
            ->Iterations(5);
}
