// The border between the adapter and its host: no exception crosses it.
#pragma once

#include "PatchTrace.h"

#include <utility>

/// Writes the exception that is being handled to the trace, as an exception: a COvException as it is, any other one
/// wrapped. To be called from a catch block.
/// @param szSource    the source's fixed name, for the wrapping exception.
/// @param szFunction  the operation's qualified name, for its evidence.
void TraceCurrentException(CPatchTrace& trace, const wchar_t* szSource, const wchar_t* szFunction) noexcept;

/// Runs the work of an operation that the host has called and traces whatever it throws.
/// What must outlive the line about the failure, a lock for instance, is declared before and taken inside the work.
template <class Work>
void GuardBoundary(CPatchTrace& trace, const wchar_t* szSource, const wchar_t* szFunction, Work&& work) noexcept
{
    try
    {
        std::forward<Work>(work)();
    }
    catch (...)
    {
        TraceCurrentException(trace, szSource, szFunction);
    }
}
