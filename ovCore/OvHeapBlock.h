// A block of the process heap, and its owner.
#pragma once

#include "ovCore/OvException.h"
#include "OvPlatform.h"

#include <memory>

struct COvHeapFree
{
    void operator()(void* p) const noexcept { ::HeapFree(::GetProcessHeap(), 0, p); }
};

using COvHeapBlock = std::unique_ptr<void, COvHeapFree>;

/// A block that is not zeroed. Raises COvException E_FAIL at the given place ("Method" = "HeapAlloc") without memory.
inline COvHeapBlock OvHeapAlloc(SIZE_T nBytes, const wchar_t* szSource, LONG nLine)
{
    COvHeapBlock block(::HeapAlloc(::GetProcessHeap(), 0, nBytes));
    if (!block)
        OvRaise(E_FAIL, szSource, nLine, COvEvidence(L"Method", L"HeapAlloc"));
    return block;
}
