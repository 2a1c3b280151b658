#include "State.h"

#include "Platform/Control.h"

#include <filesystem>

void UseStateFolder(const std::string& folder)
{
    if (folder.empty())
        return;
    std::filesystem::create_directories(folder);
    OvPlatform::SetRegistryFile((std::filesystem::path(folder) / "registry.db").string().c_str());
}
