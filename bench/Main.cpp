// The benchmark program. `make bench` runs it on one core in random order and makes the tables of docs/performance.md.
#include "Bench.h"
#if OV_BENCH_NATIVE
#include "OvPlatform.h"
#include "Platform/Control.h"
#endif

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    AddDocuments();
    AddElements();
    AddEscaping();
    AddConversions();
    AddCalls();
#if OV_BENCH_NATIVE // elsewhere an adapter takes ten seconds to end
    OvPlatform::SetRegistryInMemory();
    OvPlatform::SetTimeScale(1000); // the monitor thread looks every ten milliseconds and ends as soon
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    AddAdapter();
    AddLoading();
#endif
    benchmark::RunSpecifiedBenchmarks();
#if OV_BENCH_NATIVE
    ::CoUninitialize();
#endif
    return 0;
}
