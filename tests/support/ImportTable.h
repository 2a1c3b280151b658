// The import table of a loaded library: where its calls of the system's functions go. Windows only.
#pragma once

#include "OvPlatform.h"

/// Makes a loaded library's calls of an imported function go elsewhere.
/// @param szFunction  the function's exported name; the library must import it by name.
/// @param pNew        a function of the same signature and calling convention.
/// @return what was called before; null, and nothing changes, when the library does not import the function.
/// Calls that run at this moment are not waited for.
void* PatchImport(HMODULE hModule, const char* szFunction, void* pNew);
