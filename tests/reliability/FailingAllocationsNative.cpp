#include "FailingAllocations.h"

#include "FailingNew.h"

#include <cstdlib>
#include <cstring>
#include <libxml/xmlmemory.h>
#include <optional>

namespace
{

std::optional<CFailingNew> s_failing; // every C++ library of the process allocates through the program's operator new

// The parser below the DOM has functions of its own.

void* Allocate(size_t nSize)
{
    return CFailingNew::Fails() ? nullptr : std::malloc(nSize);
}

void* Reallocate(void* p, size_t nSize)
{
    return CFailingNew::Fails() ? nullptr : std::realloc(p, nSize);
}

char* Duplicate(const char* sz)
{
    return CFailingNew::Fails() ? nullptr : ::strdup(sz);
}

} // namespace

CFailingAllocations::CFailingAllocations(HMODULE, unsigned nFail, bool bOnwards)
{
    ::xmlMemSetup(&std::free, &Allocate, &Reallocate, &Duplicate); // what was allocated before is free's, too
    s_failing.emplace(nFail, bOnwards);
}

CFailingAllocations::~CFailingAllocations()
{
    s_failing.reset();
}

bool CFailingAllocations::MayGoOn()
{
    return true;
}

bool CFailingAllocations::Reached() const
{
    return s_failing->Reached();
}
