// Version numbers of four parts.
#pragma once

#include "ovCore/OvObject.h"
#include "OvPlatform.h"

#include <string>
#include <string_view>

/// A version number "major.minor.build.revision" of which the first 0 to 4 parts are significant. A plain value.
class COvVersion : public COvObject
{
    static constexpr LONG MAX_PARTS = 4;

public:
    /// 0.0.0.0 with four significant parts.
    COvVersion() = default;
    COvVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth);

    /// As SetVersion.
    explicit COvVersion(const wchar_t* szText);

    /// Four significant parts. @return true.
    bool SetVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth);

    /// The parts as a file's fixed version information holds them, two in each number, the first in the high half.
    /// @return true.
    bool SetVersion(DWORD dwFileVersionMS, DWORD dwFileVersionLS);

    /// Reads up to four parts separated by "." or ",". A part is the decimal number at its front, of which the low 16
    /// bits are kept; the first part without a digit at its front ends the reading. Parts not read are 0 and not
    /// significant.
    /// @param szText  null counts as empty.
    /// @return whether at least one part was read.
    bool SetVersion(const wchar_t* szText);
    bool SetVersion(std::wstring strText);

    /// Whether the parts that are significant in both are equal: "1.2" equals "1.2.7.9". Not transitive.
    bool operator==(const COvVersion& other) const;
    bool operator!=(const COvVersion& other) const;

    /// Whether there are significant parts and they differ from 0.0.0.0.
    bool IsValid() const;

    /// The significant parts in decimal, joined by "."; empty without any.
    std::wstring AsStr() const;

    /// The text that AsStr returns, terminated, without memory from the heap.
    struct CText
    {
        wchar_t sz[MAX_PARTS * sizeof("65535")];
    };
    CText Text() const;

    /// The item "Version", or szName, with AsStr().
    COvEvidence GetEvidence(const wchar_t* szName = nullptr) const override;

private:
    bool ReadParts(std::wstring_view text);

    LONG m_nCount = MAX_PARTS; // significant parts
    USHORT m_nParts[MAX_PARTS] = {};
};
