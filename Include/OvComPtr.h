// The one owner of a COM interface pointer.
#pragma once

#include <utility>

/// Holds one counted reference to a COM object and releases it. May be empty. Raises nothing of its own.
/// Not locked: one thread at a time; the object's own rules say which threads may call it.
template <class T>
class COvComPtr
{
public:
    COvComPtr() noexcept = default;

    /// Adds a reference of its own; the caller keeps his. Null gives an empty holder.
    explicit COvComPtr(T* p) : m_p(p)
    {
        if (m_p != nullptr)
            m_p->AddRef();
    }

    COvComPtr(const COvComPtr& other) : COvComPtr(other.m_p) {}
    COvComPtr(COvComPtr&& other) noexcept : m_p(other.Detach()) {}

    COvComPtr& operator=(const COvComPtr& other)
    {
        COvComPtr(other).Swap(*this); // the new reference is taken before the old one goes
        return *this;
    }

    COvComPtr& operator=(COvComPtr&& other) noexcept
    {
        COvComPtr(std::move(other)).Swap(*this);
        return *this;
    }

    ~COvComPtr() { Reset(); }

    /// The pointer without a reference for the caller; may be null.
    T* Get() const noexcept { return m_p; }

    /// The holder must not be empty.
    T* operator->() const noexcept { return m_p; }

    explicit operator bool() const noexcept { return m_p != nullptr; }

    /// Releases what is held and gives the place where a call stores a pointer with a reference, then owned here.
    T** Receive()
    {
        Reset();
        return &m_p;
    }

    /// Releases what is held and takes over the caller's reference.
    void Attach(T* p)
    {
        Reset();
        m_p = p;
    }

    /// Hands the reference to the caller, who releases it; the holder is empty afterwards.
    T* Detach() noexcept { return std::exchange(m_p, nullptr); }

    /// Releases what is held; the holder is empty before the object hears of it.
    void Reset()
    {
        if (T* const p = Detach())
            p->Release();
    }

    void Swap(COvComPtr& other) noexcept { std::swap(m_p, other.m_p); }

private:
    T* m_p = nullptr;
};
