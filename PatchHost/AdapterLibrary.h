// The adapter library as a host sees it: a module with two exported functions.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <stdexcept>
#include <string>

/// The library cannot be used: it cannot be loaded, lacks a function or has another interface version.
class CLibraryError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Loads the library and unloads it when destroyed; every factory must be gone by then.
class CAdapterLibrary
{
public:
    /// @param path  UTF-8; a bare name is looked for beside the program.
    /// @throw CLibraryError with a sentence that says what is wrong.
    explicit CAdapterLibrary(const std::string& path);
    ~CAdapterLibrary();

    CAdapterLibrary(const CAdapterLibrary&) = delete;
    CAdapterLibrary& operator=(const CAdapterLibrary&) = delete;

    uint32_t GetMajor() const { return m_nMajor; }
    uint32_t GetMinor() const { return m_nMinor; }
    const std::string& GetPath() const { return m_path; }

    /// A sentence about another minor interface version, with which a host goes on; empty for the same one.
    std::string GetRemark() const;

    /// A new factory, owned by the caller (DeleteAdapterFactory).
    IAdapterFactory* MakeFactory() const { return m_pGetFactory(); }

private:
    template <class Function>
    Function Find(const char* name) const;
    void CheckVersion();

    std::string m_path;
    HMODULE m_hModule = nullptr;
    GetAdapterFactory1_0Function m_pGetFactory = nullptr;
    uint32_t m_nMajor = 0;
    uint32_t m_nMinor = 0;
};
