// One running process: what it is and whose.
#pragma once

#include "OvHandleT.h"
#include "OvPlatform.h"

#include <string>

/// A process as it was when it was listed. A plain value; any thread.
class COvProcessInfo
{
public:
    /// The entry that stands for no process: id 0, no name.
    COvProcessInfo() = default;

    /// @param wzPath  the executable's path, or its name alone.
    COvProcessInfo(const std::wstring& wzPath, DWORD dwProcessId);

    DWORD GetProcessId() const { return m_dwProcessId; }
    const std::wstring& GetName() const { return m_wzName; }     ///< the executable's file name
    const std::wstring& GetFolder() const { return m_wzFolder; } ///< its folder; empty when it is not known

    /// The access token of a running process, opened for everything; an empty holder when the process or its token does
    /// not open.
    static COvHandle GetTokenFromPID(DWORD dwProcessId);

    /// The security identifier of the user who runs the process, as text (S-1-5-18).
    /// @param bDefault  what is returned where there is no token to read: true for ".DEFAULT", false for an empty text.
    /// Raises COvException E_FAIL when the token opens but tells nothing.
    std::wstring GetTextualSID(bool bDefault) const;

    /// A security identifier as text. Raises COvException E_FAIL for one that is not valid.
    /// @param pSid  not null; stays the caller's.
    static std::wstring GetTextual(PSID pSid);

private:
    DWORD m_dwProcessId = 0;
    std::wstring m_wzName;
    std::wstring m_wzFolder;
};
