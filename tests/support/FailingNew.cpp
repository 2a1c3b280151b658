#include "FailingNew.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local unsigned s_nLeft = 0; // allocations up to the failing one, itself included; 0: none fails
thread_local bool s_bOnwards = false;
thread_local bool s_bReached = false;

} // namespace

CFailingNew::CFailingNew(unsigned nFail, bool bOnwards)
{
    s_nLeft = nFail;
    s_bOnwards = bOnwards;
    s_bReached = false;
}

CFailingNew::~CFailingNew()
{
    s_nLeft = 0;
}

bool CFailingNew::Reached() const
{
    return s_bReached;
}

bool CFailingNew::Fails()
{
    if (s_nLeft == 0 || --s_nLeft != 0)
        return false;
    s_bReached = true;
    s_nLeft = s_bOnwards ? 1 : 0;
    return true;
}

void* operator new(std::size_t nSize)
{
    if (CFailingNew::Fails())
        throw std::bad_alloc();
    if (void* const p = std::malloc(nSize != 0 ? nSize : 1))
        return p;
    throw std::bad_alloc();
}

void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    try
    {
        return ::operator new(nSize);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void operator delete(void* p) noexcept
{
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
