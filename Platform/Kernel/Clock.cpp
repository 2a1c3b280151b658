#include "Platform/Kernel/Clock.h"

#include "Platform/Control.h"

#include <algorithm>
#include <mutex>

namespace OvPlatform
{

namespace
{

constexpr uint64_t NanosPerMilli = 1'000'000;
constexpr uint64_t NanosPerSecond = 1'000'000'000;

uint64_t RealNow()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * NanosPerSecond + static_cast<uint64_t>(now.tv_nsec);
}

/// The scale, and where the platform's time stood when it was set, so that it never jumps.
struct CScale
{
    uint64_t nDivisor = 1;
    uint64_t nRealStart = 0;
    uint64_t nPlatformStart = 0;

    uint64_t PlatformAt(uint64_t nReal) const { return nPlatformStart + (nReal - nRealStart) * nDivisor; }
};

std::mutex s_lock;
CScale s_scale; // guarded by s_lock

CScale CurrentScale()
{
    const std::lock_guard<std::mutex> lock(s_lock);
    return s_scale;
}

} // namespace

timespec DeadlineAfter(DWORD dwMilliseconds)
{
    const uint64_t nEnd = RealNow() + dwMilliseconds * NanosPerMilli / CurrentScale().nDivisor;
    return { static_cast<time_t>(nEnd / NanosPerSecond), static_cast<long>(nEnd % NanosPerSecond) };
}

ULONGLONG TickCount()
{
    return CurrentScale().PlatformAt(RealNow()) / NanosPerMilli;
}

void SetTimeScale(unsigned nDivisor)
{
    const std::lock_guard<std::mutex> lock(s_lock);
    const uint64_t nReal = RealNow();
    s_scale = { std::max(nDivisor, 1u), nReal, s_scale.PlatformAt(nReal) };
}

} // namespace OvPlatform
