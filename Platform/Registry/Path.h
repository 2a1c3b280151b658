// Names and paths of registry keys.
#pragma once

#include "Platform/Registry.h"

#include <string>
#include <vector>

namespace OvPlatform
{

/// The names from HKEY_LOCAL_MACHINE or HKEY_USERS down to a key.
using CKeyPath = std::vector<std::wstring>;

/// The form in which two names are equal when they differ in letter case alone.
std::wstring FoldName(const std::wstring& name);

/// The path behind a predefined key; empty for a key that is none.
CKeyPath PredefinedPath(HKEY hKey);

/// The names between the backslashes; empty ones are left out, null counts as empty.
/// Throws CRegistryError: ERROR_BAD_PATHNAME for a leading backslash, ERROR_INVALID_PARAMETER for a name that is too
/// long.
CKeyPath SplitSubKey(const wchar_t* szSubKey);

/// The place in the 32-bit view of a path that is given as of the 64-bit one.
CKeyPath RedirectTo32(const CKeyPath& path);

/// The keys that every registry has from the start, without those above them.
std::vector<CKeyPath> FixedKeys();

/// Whether every registry has the key from the start.
bool IsFixedKey(const CKeyPath& path);

} // namespace OvPlatform
