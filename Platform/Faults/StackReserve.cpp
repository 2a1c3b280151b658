#include "Platform/Faults/StackReserve.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

const size_t s_nReserve = 256 * 1024;
const size_t s_nSmallestStack = 4 * s_nReserve;
const size_t s_nMargin = 64 * 1024; // between what the stack uses and the reserve, when it is armed

bool IsStackUnlimited()
{
    rlimit limit = {};
    return ::getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY;
}

/// The lowest address of the calling thread's stack above its guard. @return null when the stack is too small.
char* StackLow()
{
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0)
        return nullptr;
    void* pLow = nullptr;
    size_t nSize = 0;
    size_t nGuard = 0;
    ::pthread_attr_getstack(&attributes, &pLow, &nSize);
    ::pthread_attr_getguardsize(&attributes, &nGuard);
    ::pthread_attr_destroy(&attributes);
    return nSize < s_nSmallestStack ? nullptr : static_cast<char*>(pLow) + nGuard;
}

} // namespace

CStackReserve::CStackReserve() : m_bFirstThread(::gettid() == ::getpid())
{
    char* const pLow = m_bFirstThread && IsStackUnlimited() ? nullptr : StackLow();
    if (pLow == nullptr)
        return;
    m_pLow = m_bFirstThread ? pLow - s_nReserve : pLow;
    m_nSize = s_nReserve;
}

CStackReserve::~CStackReserve()
{
    if (m_bArmed)
        Spend();
}

void CStackReserve::Arm()
{
    const char* const pUsed = static_cast<const char*>(__builtin_frame_address(0));
    if (m_nSize == 0 || m_bArmed || pUsed < m_pLow + m_nSize + s_nMargin)
        return;
    // Below the first thread's limit nothing is mapped, unless it was spent.
    m_bArmed = (m_bFirstThread ? ::munmap(m_pLow, m_nSize) : ::mprotect(m_pLow, m_nSize, PROT_NONE)) == 0;
}

bool CStackReserve::Spend()
{
    m_bArmed = !Open();
    return !m_bArmed;
}

bool CStackReserve::Open()
{
    const int nAccess = PROT_READ | PROT_WRITE;
    if (!m_bFirstThread)
        return ::mprotect(m_pLow, m_nSize, nAccess) == 0;
    const int nFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
    return ::mmap(m_pLow, m_nSize, nAccess, nFlags, -1, 0) == m_pLow;
}

} // namespace OvPlatform
