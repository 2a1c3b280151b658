// The built library, loaded as a host loads it. Nothing here knows the library's classes.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <string>

/// Loads the library from the folder of the test program and unloads it when destroyed, so that every object starts
/// with the library's state as it is at load. Throws std::runtime_error when that fails.
class CLoadedLibrary
{
public:
    CLoadedLibrary();
    ~CLoadedLibrary();
    CLoadedLibrary(const CLoadedLibrary&) = delete;
    CLoadedLibrary& operator=(const CLoadedLibrary&) = delete;

    IAdapterFactory* MakeFactory() const { return m_pGetFactory(); }
    void GetVersion(uint32_t* pMajor, uint32_t* pMinor) const { m_pGetVersion(pMajor, pMinor); }
    HMODULE GetModule() const { return m_hModule; }

private:
    HMODULE m_hModule;
    GetAdapterFactory1_0Function m_pGetFactory;
    GetAdapterVersionFunction m_pGetVersion;
};

/// The library's file, beside the test program.
std::wstring LibraryPath();
