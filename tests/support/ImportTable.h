// The import table of a loaded module: where its calls of the system's functions go.
#pragma once

#include "OvPlatform.h"

/// Makes a loaded module's calls of an imported function go elsewhere. Throws std::runtime_error when it imports no
/// such function. Calls that run at this moment are not waited for.
/// @param pFunction  where its calls go now: the function itself, or what took its place before.
/// @param pNew       a function of the same signature and calling convention.
void ReplaceImport(HMODULE hModule, const void* pFunction, const void* pNew);

/// The address of a function of a system library that is loaded. Windows only.
void* SystemFunction(const char* szLibrary, const char* szFunction);
