#include "Platform/Control.h"
#include "ResourceCounts.h"

std::string CountResources()
{
    return std::to_string(OvPlatform::OpenHandles()) + " handles, " + std::to_string(OvPlatform::LiveComObjects()) +
           " COM objects, " + std::to_string(OvPlatform::LiveBstrs()) + " BSTRs, " +
           std::to_string(OvPlatform::AbandonedApartments()) + " apartments that were not left";
}
