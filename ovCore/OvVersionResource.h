// Reads the version resource of a file.
#pragma once

#include "ovCore/Api_Version.h"
#include "OvPlatform.h"
#include "OVTemplates.h"

#include <string>

class COvVersion;

/// The version information of one executable file or library. It holds a copy, which is wiped before it is freed. One
/// thread at a time.
class COvVersionResource
{
public:
    COvVersionResource() = default;
    COvVersionResource(const COvVersionResource&) = delete;
    COvVersionResource& operator=(const COvVersionResource&) = delete;

    /// Reads the version information of a file.
    /// @param path  empty: the executable of the process.
    /// @return false when there is no such file or it has none; what was read before is kept then. Raises COvException
    ///         when the information is there and can't be read; nothing is held then.
    bool Open(const std::wstring& path);

    /// The same for the file of a loaded module, whose name is at most 260 characters long. @return false for null.
    bool Open(HMODULE module);

    /// Looks up a part of the information.
    /// @param subBlock  as VerQueryValueW takes it.
    /// @param value     receives the address of the part; valid until the next Open or the object's end.
    /// @param length    receives its length.
    /// @return false when nothing was read or the part does not exist or is empty.
    bool Query(const wchar_t* subBlock, void** value, UINT* length);

    /// The fixed information, valid until the next Open or the object's end; null when there is none.
    const VS_FIXEDFILEINFO* FixedInfoOpt();

    /// The file's version (not the product's), or 0.0.0.0 when false is returned.
    bool GetVersion(COvVersion& version);

private:
    CApi_Version m_api; // loaded as long as the object lives
    COvByteBuffer m_block;
};
