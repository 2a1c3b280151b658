// What is called all the time: scopes, trace calls, locks, looks at an event.
#include "Bench.h"
#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvEvent.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStackTrace.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/PatchTrace.h"

#include <condition_variable>
#include <mutex>

namespace
{

__attribute__((noinline)) void BareCall()
{
    benchmark::ClobberMemory();
}

__attribute__((noinline)) void CallWithScope()
{
    const COvStackTraceScope scope(L"CallWithScope", L"bench\\CallsBench", __LINE__, COvStackTrace::Get());
    benchmark::ClobberMemory();
}

/// Calls in a row, so that the loop around them does not count.
template <class Call>
void AddCall(const std::string& row, const std::string& contender, Call call)
{
    constexpr int CALLS = 100;
    Add(row, contender, CALLS, [=] {
        for (int i = 0; i < CALLS; ++i)
            call();
    });
}

void AddTrace()
{
    static CPatchTrace s_unbound;
    AddCall("scope, switched off", OURS, [] { CallWithScope(); });
    AddCall("scope, switched off", "bare call", [] { BareCall(); });
    AddCall("trace call, unbound", OURS, [] { s_unbound.Enter(L"CallsBench"); });
    AddCall("trace call, unbound", "bare call", [] { BareCall(); });
    AddCall("trace call with evidence, unbound", OURS, [] { s_unbound.Info(InfoMsg(L"A sentence for the log")); });
    AddCall("trace call with evidence, unbound", "bare call", [] { BareCall(); });
}

void AddLocks()
{
    static COvCriticalSection s_section;
    static std::recursive_mutex s_mutex;
    AddCall("lock, uncontended", OURS, [] {
        const COvSingleLock lock(&s_section, true);
        benchmark::ClobberMemory();
    });
    AddCall("lock, uncontended", "std::recursive_mutex", [] {
        const std::lock_guard<std::recursive_mutex> lock(s_mutex);
        benchmark::ClobberMemory();
    });
}

void AddWaits()
{
    static COvEvent s_event(false, true, nullptr, nullptr);
    static std::mutex s_mutex;
    static std::condition_variable s_condition;
    AddCall("wait with time-out 0", OURS, [] { benchmark::DoNotOptimize(s_event.Lock(0)); });
    AddCall("wait with time-out 0", "std::condition_variable", [] {
        std::unique_lock<std::mutex> lock(s_mutex);
        benchmark::DoNotOptimize(s_condition.wait_for(lock, std::chrono::milliseconds(0)));
    });
    AddCall("wait with time-out 0", "limit: std::mutex", [] {
        const std::lock_guard<std::mutex> lock(s_mutex);
        benchmark::ClobberMemory();
    });
}

} // namespace

void AddCalls()
{
    AddTrace();
    AddLocks();
    AddWaits();
}
