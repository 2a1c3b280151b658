// The one mapping between names of files as the platform writes them and the host system's (see Files.h).
#pragma once

#include "Platform/Control.h" // HostPath
#include "Platform/Types.h"

#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace OvPlatform
{

/// The host system's path, in UTF-8.
/// @return 0, or ERROR_PATH_NOT_FOUND for an empty name, ERROR_BAD_NETPATH for one on another computer,
///         ERROR_INVALID_NAME for a slash behind "\\?\".
DWORD ParseFileName(std::wstring_view name, std::string& path);

/// The platform's name of an absolute path of the host system: "Z:" and backslashes.
std::wstring PlatformPath(std::string_view path);

/// A file, whatever its name is now.
using CFileId = std::pair<dev_t, ino_t>;

/// Looks for a file that can be read.
/// @return 0 and the file's path and identity, or an error of ParseFileName or ERROR_FILE_NOT_FOUND,
/// ERROR_PATH_NOT_FOUND
///         (its folder is missing) or ERROR_ACCESS_DENIED (also for what is no ordinary file).
DWORD FindFile(std::wstring_view name, std::string& path, CFileId& id);

} // namespace OvPlatform
