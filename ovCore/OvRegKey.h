// One open registry key, and what belongs to it: names of root keys, value types and views.
#pragma once

#include "OvPlatform.h"
#include "OVTemplates.h"

#include <string>

/// Which of the two views of the registry a key is opened in, on a 64-bit system.
enum OvRegView : LONG
{
    RegView32 = 0, ///< the view of 32-bit programs
    RegView64 = 1  ///< the view of 64-bit programs
};

/// Options of COvRegKey::QueryValue.
enum OvQueryValueFlags : unsigned
{
    QueryReadData = 2, ///< read the data as well as the type
    QueryCheckType = 4 ///< raise when the type is not the one asked for
};

/// Code of an exception about a root key's name or a value's path that cannot be read.
constexpr HRESULT OV_E_REGISTRY_NAME = static_cast<HRESULT>(0xC000B031);

/// A registry key. Closed until it is opened; opening closes the key that was open before, so after a failed open none
/// is. Texts are UTF-16; names are compared without regard to letter case. Failures are raised as COvException, with
/// E_FAIL as code and the registry function, its result and the key as evidence, but for what an operation says.
/// An object belongs to one thread at a time; the static operations may be called on any thread.
///
/// The operations that take dwProcessId redirect a key under HKEY_USERS, when that is not 0, to the hive of the user
/// who runs the process of that id; they raise when there is no such process.
class COvRegKey
{
public:
    /// @param nView  an OvRegView.
    explicit COvRegKey(LONG nView);
    virtual ~COvRegKey(); ///< closes the key
    COvRegKey(const COvRegKey&) = delete;
    COvRegKey& operator=(const COvRegKey&) = delete;

    /// Opens a key, after making it, and those above it, if it is missing. Leading backslashes of the path are dropped.
    /// @param samDesired  the access mask without view flags; the view's flag is added.
    /// @return true when the key was made.
    bool Create(const std::wstring& path, HKEY hRoot, DWORD samDesired, DWORD dwProcessId);

    /// Create that reports a failure of the registry as its result.
    /// @param pdwDisposition  receives REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY, 0 after a failure.
    /// @param nOption         1 makes a key that is gone after a restart.
    LONG CreateEx(const std::wstring& path, HKEY hRoot, DWORD samDesired, DWORD dwProcessId, DWORD* pdwDisposition,
                  int nOption);

    /// Opens a key. @return false when it does not exist.
    bool OpenOpt(const std::wstring& strPath, HKEY hRoot, DWORD samDesired, DWORD dwProcessId);

    /// Closes the key, if one is open. The key counts as closed even when that raises.
    void Close();

    /// Raises "There is no registry key open." unless one is.
    void VerifyKeyOpen() const;

    bool IsOpen() const { return m_hKey != nullptr; }
    HKEY GetRoot() const { return m_hRoot; } ///< null when no key is open
    const std::wstring& GetPath() const
    {
        return m_wzPath;
    }                                                    ///< of the key opened last, below its root, as it was opened
    DWORD GetAccess() const { return m_samDesired; }     ///< without view flags; KEY_READ when none is open
    LONG GetLastResult() const { return m_lLastError; }  ///< of the last close, open or query
    DWORD GetProcessId() const { return m_dwProcessId; } ///< of the last redirection; 0 for none

    /// Asks for a value's type, and with QueryReadData for its data.
    /// @param pdwType  in: the type that QueryCheckType demands; out: the type found, 0 when there is no value.
    /// @param data     emptied first; receives the data's bytes.
    /// @param nFlags   OvQueryValueFlags.
    /// @return 0, or 2 (ERROR_FILE_NOT_FOUND) when there is no such value.
    LONG QueryValue(const std::wstring& tzValNm, DWORD* pdwType, COvByteBuffer& data, unsigned nFlags);

    /// @return false when there is no such value.
    bool GetOptValueType(const std::wstring& name, DWORD* pdwType);

    /// Reads a REG_SZ or REG_EXPAND_SZ value, without the NUL that ends it and without expanding it; raises for a value
    /// of another type.
    /// @param value  cleared first.
    /// @return false when there is no such value.
    bool GetOptStringValue(const std::wstring& tzName, std::wstring& value);

    /// GetOptStringValue that raises when there is no such value.
    std::wstring GetStringValue(const std::wstring& wzName);

    /// Writes a REG_SZ value, with a NUL behind it.
    void SetValue(const std::wstring& wszName, const std::wstring& value);

    /// @param tzName  root name, key path and value name joined by backslashes; raises OV_E_REGISTRY_NAME when it is
    /// not
    ///                that.
    /// @return false when the key or the value does not exist.
    static bool ValueExists(const std::wstring& tzName, LONG nView);

    /// @param strHkey  the short or long name of a root key, in any letter case; raises OV_E_REGISTRY_NAME for others.
    static HKEY Str2HKEY(const std::wstring& strHkey);

    static std::wstring HKEY2Str(HKEY hKey);         ///< a root key's short name; empty for any other key
    static std::wstring ValueType2Str(DWORD dwType); ///< "( 1 )" for REG_SZ; raises for a type above 11

    /// Splits "HKLM\SOFTWARE\Vendor" at its first backslash. Outputs may be null.
    /// @return false when there is none. Raises OV_E_REGISTRY_NAME when phRoot is given and the root is unknown.
    static bool Parse(const std::wstring& full, HKEY* phRoot, std::wstring* rest);

    /// Splits "HKLM\SOFTWARE\Vendor\Level" at its first and last backslash. Outputs may be null.
    /// @return false when there are no three parts; the root may have been set then.
    static bool Parse(const std::wstring& full, HKEY* phRoot, std::wstring* keyPath, std::wstring* valueName);

    /// The path to open for a process: without leading backslashes, redirected as the class says.
    /// @param phRoot  may be changed.
    std::wstring GetModifiedPath(HKEY* phRoot, const std::wstring& path, DWORD dwProcessId);

    /// The flag that this key's view adds to an access mask, in this process on this system.
    DWORD GetWOWDescriptor() const;

    /// The same for any process of a system that has views.
    /// @param nView       an OvRegView.
    /// @param bNative64   the process is a 64-bit one.
    /// @return KEY_WOW64_64KEY, KEY_WOW64_32KEY, or 0 when the process sees that view anyhow.
    static DWORD GetViewFlag(LONG nView, bool bNative64);

    static DWORD GetRegOption(int nOption); ///< REG_OPTION_VOLATILE for 1, else REG_OPTION_NON_VOLATILE

private:
    void SetOpened(HKEY hKey, HKEY hRoot, std::wstring&& wzPath, DWORD samDesired);
    void Query(const std::wstring& tzValNm, DWORD* pdwType, BYTE* pData, DWORD* pdwSize);
    [[noreturn]] void RaiseUnexpectedType(LONG nLine, const COvEvidence& name, const std::wstring& wzDesired,
                                          DWORD dwFound) const;

    std::wstring m_wzPath;
    HKEY m_hRoot;
    HKEY m_hKey;
    DWORD m_samDesired;
    LONG m_nView;
    LONG m_lLastError;
    DWORD m_dwProcessId;
};
