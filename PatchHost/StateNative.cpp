#include "PatchHost/State.h"

#include "Platform/Control.h"

#include <cstdlib>
#include <filesystem>

namespace
{

std::string Environment(const char* szName)
{
    const char* const szValue = std::getenv(szName);
    return szValue == nullptr ? "" : szValue;
}

/// As Control.h describes it.
std::string DefaultFile()
{
    const std::string file = Environment("OVPLATFORM_REGISTRY");
    if (!file.empty())
        return file;
    const std::string state = Environment("XDG_STATE_HOME");
    return (state.empty() ? Environment("HOME") + "/.local/state" : state) + "/pyx-patch-adapter/registry.db";
}

} // namespace

CStatePlace::CStatePlace(StateKind kind, const std::string& folder) : m_kind(kind)
{
    if (m_kind == StateKind::Throwaway)
    {
        OvPlatform::SetRegistryInMemory();
        m_description = "nowhere";
        return;
    }
    m_file = DefaultFile();
    if (!folder.empty())
    {
        std::filesystem::create_directories(folder);
        m_file = (std::filesystem::path(folder) / "registry.db").string();
        OvPlatform::SetRegistryFile(m_file.c_str());
    }
    m_description = m_file + ", HKLM\\SOFTWARE\\Trevok\\Trevok Patch Agent, PolicyRevId";
}

CStatePlace::~CStatePlace() = default;
