#include "Platform/Control.h"
#include "ScaledTime.h"

CScaledTime::CScaledTime(unsigned nDivisor)
{
    OvPlatform::SetTimeScale(nDivisor);
}

CScaledTime::~CScaledTime()
{
    OvPlatform::SetTimeScale(1);
}
