#include "FastPauses.h"

#include "Platform/Control.h"

CFastPauses::CFastPauses(HMODULE hModule) : m_hModule(hModule)
{
    OvPlatform::SetTimeScale(1000); // of every module
}

CFastPauses::~CFastPauses()
{
    OvPlatform::SetTimeScale(1);
}
