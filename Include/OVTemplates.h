// Small templates that more than one folder needs: the wiping buffer and the checked interface query. Their exceptions
// and trace, and the guarded call, are those of ovCore/.
#pragma once

#include "OvComPtr.h"
#include "ovCore/OvCallOut.h"
#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "OvPlatform.h"
#include "OvWipe.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

inline constexpr wchar_t OVTEMPLATES_SOURCE[] = L"Include\\OVTemplates";

/// A work buffer of plain elements: zeros when it is allocated, overwritten with zeros before it is freed.
/// Belongs to one thread at a time and can't be copied.
template <class T>
class COvBufferT
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_default_constructible_v<T>);

public:
    /// An empty buffer. @param bWipe  false: neither the zeros at the start nor those at the end.
    explicit COvBufferT(bool bWipe = true) : m_bWipe(bWipe) {}

    COvBufferT(const COvBufferT&) = delete;
    COvBufferT& operator=(const COvBufferT&) = delete;
    ~COvBufferT() { Clear(); }

    /// Frees the block and allocates one of exactly nSize elements; nothing is kept of the old one. With 0 the buffer
    /// owns no block. Raises std::bad_alloc; the buffer is then empty.
    void Resize(size_t nSize)
    {
        Clear();
        if (nSize == 0)
            return;
        if (nSize > std::numeric_limits<DWORD>::max() / sizeof(T))
            throw std::bad_alloc();
        m_pData = new T[nSize];
        m_bAllocated = true;
        m_dwSize = static_cast<DWORD>(nSize);
        m_dwCapacity = static_cast<DWORD>(nSize * sizeof(T));
        if (m_bWipe)
            std::memset(m_pData, 0, m_dwCapacity);
    }

    /// Frees the block; the buffer is empty afterwards.
    void Clear() noexcept
    {
        if (!m_bAllocated)
            return;
        if (m_bWipe)
            OvWipe(m_pData, m_dwCapacity);
        delete[] m_pData;
        m_bAllocated = false;
        m_dwSize = m_dwCapacity = 0;
        m_pData = nullptr;
    }

    /// The count of valid elements.
    DWORD Size() const { return m_dwSize; }

    /// The block, still the buffer's and valid until it is resized; null when the buffer is empty.
    T* Data() { return m_pData; }
    const T* Data() const { return m_pData; }

    /// The element at nIdx. Raises COvException E_FAIL with "nIdx" and "_size" when it lies outside.
    T& operator[](DWORD nIdx)
    {
        CheckIndex(nIdx);
        return m_pData[nIdx];
    }
    const T& operator[](DWORD nIdx) const
    {
        CheckIndex(nIdx);
        return m_pData[nIdx];
    }

private:
    void CheckIndex(DWORD nIdx) const
    {
        if (nIdx >= m_dwSize)
            OvRaise(E_FAIL, OVTEMPLATES_SOURCE, __LINE__,
                    COvEvidence(L"Info Msg", L"Index out of range.") + COvEvidence(L"nIdx", nIdx) +
                        COvEvidence(L"_size", m_dwSize));
    }

    bool m_bAllocated = false; // the buffer owns a block
    bool m_bWipe;
    DWORD m_dwSize = 0;     // valid elements
    DWORD m_dwCapacity = 0; // bytes of the block
    T* m_pData = nullptr;
};

using COvByteBuffer = COvBufferT<BYTE>;

/// Asks pSource for the interface iid and stores it, counted, in dest; what dest held before is released.
/// @param szInterfaceName  stands in the evidence of a failure; may be null.
/// Raises COvException with the query's own code, or E_POINTER when it succeeds without an interface; dest is then
/// empty. What the object throws leaves as OvCallOut lets it.
template <class Src, class Dst>
void QueryInterfaceChecked(Src* pSource, COvComPtr<Dst>& dest, REFIID iid, const wchar_t* szInterfaceName)
{
    OV_SCOPE_IN(OVTEMPLATES_SOURCE, L"QueryInterfaceChecked");
    dest.Reset();
    void* pFound = nullptr;
    HRESULT hr = E_FAIL;
    OvCallOut([&] { hr = pSource->QueryInterface(iid, &pFound); });
    if (SUCCEEDED(hr) && pFound != nullptr)
        return dest.Attach(static_cast<Dst*>(pFound));
    if (SUCCEEDED(hr))
        hr = E_POINTER;
    const int64_t nIn = reinterpret_cast<intptr_t>(pSource);
    const int64_t nOut = reinterpret_cast<intptr_t>(pFound);
    const wchar_t* szRequested = szInterfaceName != nullptr ? szInterfaceName : L"not supplied by caller";
    OvRaise(hr, OVTEMPLATES_SOURCE, __LINE__,
            COvEvidence(L"Msg", L"A QueryInterface call failed.") + COvEvidence(L"pIn", nIn) +
                COvEvidence(L"pOut", nOut) + COvEvidence(L"Current IID:", IID_IUnknown) +
                COvEvidence(L"Request IID:", iid) + COvEvidence(L"Request Nm:", szRequested) +
                COvEvidence(L"hr", hr, true));
}
