// The one owner of a COM string.
#pragma once

#include "OvPlatform.h"

#include <string>

/// Owns one BSTR and frees it. Its only member is the BSTR, so it stands where the platform's own holder would.
/// Null and empty texts are kept apart. Not locked: one thread at a time.
class COvBstr
{
public:
    COvBstr() noexcept = default;

    /// Copies a NUL-terminated text; null gives a null BSTR.
    /// A failed allocation raises a COM error object (_com_error) with E_OUTOFMEMORY, as every copy here does.
    explicit COvBstr(const wchar_t* szText);

    /// Copies the whole text, embedded NULs included; an empty text gives an empty BSTR, not a null one.
    explicit COvBstr(const std::wstring& strText);

    COvBstr(const COvBstr& other);
    COvBstr(COvBstr&& other) noexcept : m_str(other.Detach()) {}

    /// After a failed copy the object holds what it held before.
    COvBstr& operator=(const COvBstr& other);
    COvBstr& operator=(COvBstr&& other) noexcept;
    ~COvBstr() { ::SysFreeString(m_str); }

    /// The BSTR, still owned here; may be null. Valid until the object changes.
    BSTR Get() const noexcept { return m_str; }

    /// Frees the BSTR and gives the place where a call stores a new one, which is then owned here.
    BSTR* Receive() noexcept;

    /// Hands the BSTR to the caller, who frees it; the object is null afterwards.
    BSTR Detach() noexcept;

    /// Frees the BSTR and takes over another one, which may be null.
    void Attach(BSTR str) noexcept;

    bool IsNull() const noexcept { return m_str == nullptr; }

private:
    BSTR m_str = nullptr;
};
