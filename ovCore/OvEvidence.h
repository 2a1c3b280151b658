// Evidence: the named items that an exception or a report is made of.
#pragma once

#include "ovCore/OvBstr.h"
#include "OvPlatform.h"

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <type_traits>

class COvBaseException;

/// The kind of number as which an integer of another type is written: 32 or 64 bits, signed or not.
template <class T>
struct OvEvidenceNumber
{
    static constexpr bool bText = std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
                                  std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;
    static_assert(!bText, "a single character is no evidence value: make a text of it");
    static_assert(sizeof(T) <= 4 || std::is_signed_v<T>, "cast an unsigned 64-bit value to DWORD or int64_t");
    using Type = std::conditional_t<sizeof(T) == 8, int64_t, std::conditional_t<std::is_signed_v<T>, LONG, DWORD>>;
};

/// One evidence item "name: value", or several in the order in which they were put together.
///
/// The stored text marks each line break with a single CR (the break mark); rendering turns the marks into a separator.
/// A null name or text pointer is written as "<null>". The name and the value are copied.
///
/// Building evidence never fails its caller: when a value constructor, an assignment or a combination runs out of
/// memory (or cannot convert), it keeps what it has built so far and returns normally. Only copy construction and
/// ToString let a failed allocation out.
///
/// A plain value: one thread at a time, rendering included.
class COvEvidence
{
public:
    /// An empty item.
    COvEvidence() noexcept;

    COvEvidence(const COvEvidence& other);
    COvEvidence(COvEvidence&& other) noexcept;

    /// Copies the stored text; when that fails the target stays as it was.
    COvEvidence& operator=(const COvEvidence& other) noexcept;
    COvEvidence& operator=(COvEvidence&& other) noexcept;
    virtual ~COvEvidence();

    COvEvidence(const wchar_t* szName, const wchar_t* szValue) noexcept;
    COvEvidence(const wchar_t* szName, const std::wstring& strValue) noexcept;

    /// @param szValue  narrow text in the calling thread's ANSI code page.
    COvEvidence(const wchar_t* szName, const char* szValue) noexcept;

    /// The BSTR's text.
    COvEvidence(const wchar_t* szName, const COvBstr& strValue) noexcept;

    /// "<true>" or "<false>".
    COvEvidence(const wchar_t* szName, const bool& bValue) noexcept;

    /// The braced form in upper-case hexadecimal.
    COvEvidence(const wchar_t* szName, const GUID& guid) noexcept;

    // Numbers, in decimal.
    COvEvidence(const wchar_t* szName, const LONG& nValue) noexcept;
    COvEvidence(const wchar_t* szName, const DWORD& dwValue) noexcept;
    COvEvidence(const wchar_t* szName, const int64_t& nValue) noexcept;

    /// Any other integer type (int where LONG is long, USHORT, an int64_t of the other spelling): written as the
    /// number of its width and sign. An enumeration is cast by the caller.
    template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    COvEvidence(const wchar_t* szName, const T& nValue) noexcept
        : COvEvidence(szName, static_cast<typename OvEvidenceNumber<T>::Type>(nValue))
    {
    }

    /// An error code. @param bAsError  true: "0x" and the 32 bits in lower-case hexadecimal, then a blank and the
    /// system's message when it has one; false: signed decimal.
    COvEvidence(const wchar_t* szName, const LONG& nValue, bool bAsError) noexcept;

    /// A standard exception: a block with its text, which is narrow text in the calling thread's ANSI code page.
    COvEvidence(const wchar_t* szName, const std::exception& e) noexcept;

    /// The text of the calling thread's COM error information, as OvGetErrorInfoText tells it; takes that error
    /// information from the thread. @param pObject  the object whose operation failed.
    COvEvidence(const wchar_t* szName, IUnknown* pObject, IID iid) noexcept;

    /// An exception with its code, evidence and source as one block. The name is not written.
    COvEvidence(const wchar_t* szName, const COvBaseException& e) noexcept;

    /// No other pointer is a value: pass an address as static_cast<int64_t>(reinterpret_cast<intptr_t>(p)).
    template <class T, std::enable_if_t<!std::is_same_v<std::remove_const_t<T>, wchar_t> &&
                                            !std::is_same_v<std::remove_const_t<T>, char>,
                                        int> = 0>
    COvEvidence(const wchar_t* szName, T* p) = delete;

    /// Renders the text.
    /// @param szSeparator  replaces each break mark; null: the text as stored.
    /// @return NUL-terminated, valid until the next call, a change of the item or its end.
    const wchar_t* ToString(const wchar_t* szSeparator) const;

    /// This text, then, when the other is not empty, a break mark and the other's text.
    COvEvidence operator+(const COvEvidence& other) const& noexcept;

    /// The same for a temporary, whose text is not copied.
    COvEvidence operator+(const COvEvidence& other) && noexcept;

    /// Appends as operator+ does: an empty item becomes the other's text with a break mark in front.
    COvEvidence& operator+=(const COvEvidence& other) noexcept;

private:
    template <class Build>
    void Set(const wchar_t* szName, Build&& value) noexcept;
    void SetText(const wchar_t* szName, std::wstring_view value) noexcept;
    void Append(const COvEvidence& other) noexcept;

    std::wstring m_text;
    mutable std::wstring m_rendered; // what the last ToString returned
};
