#include "Platform/Kernel/Counters.h"

#include "Platform/Control.h"

namespace OvPlatform
{

std::atomic<unsigned>& HandleCounter()
{
    static std::atomic<unsigned> s_nHandles{ 0 };
    return s_nHandles;
}

std::atomic<unsigned>& ComObjectCounter()
{
    static std::atomic<unsigned> s_nObjects{ 0 };
    return s_nObjects;
}

std::atomic<unsigned>& BstrCounter()
{
    static std::atomic<unsigned> s_nStrings{ 0 };
    return s_nStrings;
}

std::atomic<unsigned>& AbandonedApartmentCounter()
{
    static std::atomic<unsigned> s_nApartments{ 0 };
    return s_nApartments;
}

unsigned OpenHandles()
{
    return HandleCounter();
}

unsigned LiveComObjects()
{
    return ComObjectCounter();
}

unsigned LiveBstrs()
{
    return BstrCounter();
}

unsigned AbandonedApartments()
{
    return AbandonedApartmentCounter();
}

} // namespace OvPlatform
