#include "FailingAllocations.h"

#include "FailingNew.h"

#include <optional>

namespace
{

std::optional<CFailingNew> s_failing; // every library of the process allocates through the program's operator new

} // namespace

CFailingAllocations::CFailingAllocations(HMODULE, unsigned nFail, bool bOnwards)
{
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
