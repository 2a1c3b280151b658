// A piece of a thread's stack that is kept back, so that a stack overflow leaves room to throw on.
#pragma once

#include <cstddef>

namespace OvPlatform
{

/// The calling thread's reserve: the lowest part of its stack, made inaccessible. Of the process's first thread, whose
/// stack grows on demand, it lies just below the limit. One object per thread, made and destroyed on it.
class CStackReserve
{
public:
    /// Finds where the reserve is to be; Arm makes it.
    CStackReserve();
    CStackReserve(const CStackReserve&) = delete;
    CStackReserve& operator=(const CStackReserve&) = delete;

    /// Gives the stack back whole, as a thread must leave it.
    ~CStackReserve();

    /// Makes the reserve inaccessible, again if it was spent; does nothing where the stack is too small or nearly used
    /// up.
    void Arm();

    /// Whether an address lies in the reserve while it is inaccessible. For signal handlers.
    bool Guards(const void* p) const { return m_bArmed && p >= m_pLow && p < m_pLow + m_nSize; }

    /// Makes the reserve accessible. For signal handlers. @return false when the system refuses.
    bool Spend();

private:
    bool Open();

    char* m_pLow = nullptr;
    size_t m_nSize = 0; // 0: no reserve
    bool m_bFirstThread;
    bool m_bArmed = false;
};

} // namespace OvPlatform
