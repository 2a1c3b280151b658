// The owner of a kernel handle. Its exceptions and trace are those of ovCore/.
#pragma once

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "OvPlatform.h"

/// What COvHandleT needs to know of a kind of handle. Stateless.
template <class T>
struct CHandleInfoT;

template <>
struct CHandleInfoT<void*>
{
    static void* Empty() { return nullptr; }
    static void* Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(void* h) { ::CloseHandle(h); }
};

/// Owns one handle; two objects never own the same one. The order of the virtual operations is fixed. An object belongs
/// to one thread at a time.
template <class T, class TInfo>
class COvHandleT
{
public:
    COvHandleT() = default;

    /// Takes h over.
    explicit COvHandleT(const T& h) : m_h(h) {}

    /// Duplicates the other's handle; stays empty when that one is. Raises as Duplicate does.
    COvHandleT(const COvHandleT& other) { CopyFrom(other); }

    COvHandleT(COvHandleT&& other) noexcept : m_h(other.Detach()) {}

    /// Closes the handle held before, then as the copy constructor. When it raises, the object is left empty.
    COvHandleT& operator=(const COvHandleT& other)
    {
        if (this != &other)
            CopyFrom(other);
        return *this;
    }

    COvHandleT& operator=(COvHandleT&& other) noexcept
    {
        if (this != &other)
        {
            CloseHeld();
            m_h = other.Detach();
        }
        return *this;
    }

    virtual ~COvHandleT() { CloseHeld(); }

    /// Closes the handle when there is one; the object is empty afterwards.
    virtual void Close()
    {
        OV_SCOPE(L"COvHandleT<void *,class CHandleInfoT<void *> >::Close");
        CloseHeld();
    }

    /// Closes the handle held before and takes h over; its own one it keeps.
    virtual void Set(const T& h)
    {
        OV_SCOPE(L"COvHandleT<void *,class CHandleInfoT<void *> >::Set");
        if (h == m_h) // which may be the very same variable
            return;
        Close();
        m_h = h;
    }

    /// Hands the handle to the caller, who closes it; the object is empty afterwards.
    virtual T Release()
    {
        OV_SCOPE(L"COvHandleT<void *,class CHandleInfoT<void *> >::Release");
        return Detach();
    }

    /// Whether the handle differs from INVALID_HANDLE_VALUE; an empty object counts as valid.
    virtual bool IsValid() const { return m_h != TInfo::Invalid(); }

    /// Closes the handle held before and owns a duplicate of source, with the same access, not inheritable; its own one
    /// it keeps.
    /// Raises COvException E_FAIL with the Win32 error; the object is then empty.
    void Duplicate(const T& source)
    {
        OV_SCOPE(L"COvHandleT<void *,class CHandleInfoT<void *> >::Duplicate");
        if (source == m_h && m_h != TInfo::Empty())
            return;
        Close();
        if (::DuplicateHandle(::GetCurrentProcess(), source, ::GetCurrentProcess(), &m_h, 0, FALSE,
                              DUPLICATE_SAME_ACCESS))
            return;
        const LONG lError = static_cast<LONG>(::GetLastError());
        m_h = TInfo::Empty();
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Method", L"DuplicateHandle") + COvEvidence(L"Win32 GetLastError", lError, true));
    }

    /// The handle, still owned by the object; 0 when empty.
    const T& Get() const { return m_h; }

private:
    static constexpr const wchar_t* s_szSource = L"Include\\OvHandleT";

    void CopyFrom(const COvHandleT& other)
    {
        if (other.m_h != TInfo::Empty())
            Duplicate(other.m_h);
        else
            Close();
    }

    T Detach() noexcept
    {
        const T h = m_h;
        m_h = TInfo::Empty();
        return h;
    }

    void CloseHeld() noexcept
    {
        if (m_h != TInfo::Empty())
            TInfo::Close(Detach());
    }

    T m_h = TInfo::Empty();
};

using COvHandle = COvHandleT<void*, CHandleInfoT<void*>>;
