#include "LoadedLibrary.h"

#include "Platform/Control.h"

CFastPauses::CFastPauses(const CLoadedLibrary&)
{
    OvPlatform::SetTimeScale(1000);
}

CFastPauses::~CFastPauses()
{
    OvPlatform::SetTimeScale(1);
}
