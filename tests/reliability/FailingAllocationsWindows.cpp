#include "FailingAllocations.h"

#include "ImportTable.h"

#include <cstdlib>

namespace
{

DWORD s_dwThreadId = 0;
unsigned s_nLeft = 0; // allocations up to the failing one, itself included; 0: none fails
bool s_bOnwards = false;
bool s_bReached = false;

/// What the library's own operator new calls.
void* __cdecl Allocate(size_t nBytes)
{
    if (::GetCurrentThreadId() != s_dwThreadId || s_nLeft == 0 || --s_nLeft != 0)
        return std::malloc(nBytes);
    s_bReached = true;
    s_nLeft = s_bOnwards ? 1 : 0;
    return nullptr;
}

} // namespace

CFailingAllocations::CFailingAllocations(HMODULE hLibrary, unsigned nFail, bool bOnwards)
{
    s_nLeft = nFail;
    s_bOnwards = bOnwards;
    s_bReached = false;
    s_dwThreadId = ::GetCurrentThreadId();
    ReplaceImport(hLibrary, SystemFunction("msvcrt", "malloc"), reinterpret_cast<const void*>(&Allocate));
}

CFailingAllocations::~CFailingAllocations()
{
    s_dwThreadId = 0;
}

// The compiler's run-time needs a few bytes for the lock of its reserve when it throws short of memory, and ends the
// process when it cannot have them.
bool CFailingAllocations::MayGoOn()
{
    return false;
}

bool CFailingAllocations::Reached() const
{
    return s_bReached;
}
