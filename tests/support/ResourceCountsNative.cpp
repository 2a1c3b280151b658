#include "ResourceCounts.h"

#include "Platform/Control.h"

CResourceCounts CountResources()
{
    return { OvPlatform::OpenHandles(), OvPlatform::LiveComObjects(), OvPlatform::LiveBstrs() };
}
