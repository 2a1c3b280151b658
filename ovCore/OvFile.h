// File names.
#pragma once

#include "OvPlatform.h"

#include <string>

/// Static operations on file names; any thread. Output pointers may be null. Failures raise COvException E_FAIL.
class COvFile
{
public:
    COvFile() = delete;

    /// Whether ":\" follows the first character. @param drive  receives the first three characters when it does.
    static bool HasDrivePath(const std::wstring& tzFileNm, std::wstring* drive);

    /// Whether the name begins with two backslashes. Raises when no backslash follows the server's name.
    /// @param root    receives the part up to the end of the share's name.
    /// @param server  receives the server's name. @param share  the share's, which ends at a backslash or with the
    /// text.
    static bool HasUncPath(const std::wstring& tzFileNm, std::wstring* root, std::wstring* server, std::wstring* share);

    /// Splits a path at its last backslash, and the file's name at its last ".". What is missing is empty.
    static void GetFileNameParts(const std::wstring& path, std::wstring* folder, std::wstring* baseName,
                                 std::wstring* extension, std::wstring* fileName);

    /// The name as the system takes it at any length: "\\?\" before a drive path, "\\?\UNC\" in place of a UNC path's
    /// two backslashes; any other name unchanged. Raises as HasUncPath.
    static std::wstring MakeUnicodeName(const std::wstring& path);

    /// The file's name of a loaded module, at most its first 1023 characters. @param module  null: the executable.
    static std::wstring GetModuleFileNameW(HMODULE module);

    /// The same for a module by its name. @param moduleName  empty: the executable.
    /// @return an empty text when the module is not loaded.
    static std::wstring GetModuleFileNameW(const std::wstring& moduleName);

    /// Whether a file can be opened for reading. A folder can't, nor a file that is open elsewhere for itself alone.
    /// @param bThrow  raise when it can't. @param tzDesc  what the file is, for the evidence; may be null.
    /// Raises as HasUncPath in any case.
    static bool FileExists(const std::wstring& tzFileNm, bool bThrow = false, const wchar_t* tzDesc = nullptr);
};
