// The one mapping between names of files as the platform writes them and the host system's (see Files.h).
// For the stand-in's own files only.
#pragma once

#include <string>
#include <string_view>

namespace OvPlatform
{

/// The host system's path, in UTF-8. Empty for a name on another computer and for an empty name.
std::string HostPath(std::wstring_view name);

/// The platform's name of an absolute path of the host system: "Z:" and backslashes.
std::wstring PlatformPath(std::string_view path);

} // namespace OvPlatform
