// Libraries that are loaded at run time.
#pragma once

#include "OvPlatform.h"

#include <string>

/// Owns one loaded library. A bare name is looked for in the system's folder alone only when the caller says so with
/// LOAD_LIBRARY_SEARCH_SYSTEM32; where the system does not know that flag, the full path takes its place. Failures
/// raise COvException E_FAIL. One thread at a time, but for GetProcAddr and GetProc, which any threads may call once
/// the library is loaded.
class COvDynamicLib
{
public:
    /// Nothing loaded.
    COvDynamicLib() = default;

    /// As Init, raising when the library can't be loaded.
    COvDynamicLib(const wchar_t* name, HANDLE reserved, DWORD flags);

    COvDynamicLib(const COvDynamicLib&) = delete;
    COvDynamicLib& operator=(const COvDynamicLib&) = delete;
    ~COvDynamicLib();

    /// Loads a library after freeing the one loaded before.
    /// @param name      null or empty: does nothing. @param reserved  null.
    /// @param flags     of LoadLibraryExW. @param bThrow  raise when it can't be loaded.
    void Init(const wchar_t* name, HANDLE reserved, DWORD flags, bool bThrow);

    bool IsLoaded() const { return m_hModule != nullptr; }

    /// The address of a function that the library exports; valid while it is loaded.
    /// @param bThrow  raise when nothing is loaded or there is no such function; otherwise null is returned.
    FARPROC GetProcAddr(const wchar_t* tzFuncNm, bool bThrow) const;

    /// The same as a pointer to a function of the type Function.
    template <class Function>
    Function* GetProc(const wchar_t* tzFuncNm, bool bThrow) const
    {
        using AnyFunction = void (*)();
        return reinterpret_cast<Function*>(reinterpret_cast<AnyFunction>(GetProcAddr(tzFuncNm, bThrow)));
    }

    /// Frees the library, if one is loaded.
    void Clear();

private:
    HMODULE m_hModule = nullptr;
    std::wstring m_wzFileNm; // the name by which it was loaded
};
