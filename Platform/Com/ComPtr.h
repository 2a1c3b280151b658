// A counted interface pointer.
#pragma once

#include <utility>

namespace OvPlatform
{

template <class T>
class CComPtr
{
public:
    CComPtr() = default;

    /// Adds a reference of its own.
    explicit CComPtr(T* p) : m_p(p)
    {
        if (m_p)
            m_p->AddRef();
    }

    CComPtr(const CComPtr& other) : CComPtr(other.m_p) {}
    CComPtr(CComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}

    CComPtr& operator=(CComPtr other) noexcept
    {
        std::swap(m_p, other.m_p);
        return *this;
    }

    ~CComPtr()
    {
        if (m_p)
            m_p->Release();
    }

    T* Get() const { return m_p; }
    T* operator->() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

    /// Hands the reference over.
    T* Detach() { return std::exchange(m_p, nullptr); }

private:
    T* m_p = nullptr;
};

} // namespace OvPlatform
