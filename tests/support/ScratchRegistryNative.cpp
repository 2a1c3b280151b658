#include "ScratchRegistry.h"

#include "Platform/Control.h"

CScratchRegistry::CScratchRegistry()
{
    OvPlatform::SetRegistryInMemory();
}

CScratchRegistry::~CScratchRegistry()
{
    OvPlatform::SetRegistryInMemory();
}
