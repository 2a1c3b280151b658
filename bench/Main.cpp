// The benchmark program. `make bench` runs it on one core in random order and makes the tables of docs/performance.md.
#include "Bench.h"
#include "OvPlatform.h"
#include "Platform/Control.h"

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    OvPlatform::SetRegistryInMemory();
    OvPlatform::SetTimeScale(1000); // the monitor thread looks every ten milliseconds and ends as soon
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    AddDocuments();
    AddElements();
    AddEscaping();
    AddConversions();
    AddAdapter();
    AddCalls();
    AddLoading();
    benchmark::RunSpecifiedBenchmarks();
    ::CoUninitialize();
    return 0;
}
