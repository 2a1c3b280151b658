// The border between the adapter and its host: no exception crosses it.
#pragma once

#include "ovCore/OvCallOut.h"
#include "PatchAdapter/PatchTrace.h"

/// Writes the exception that is being handled to the trace, as an exception: a COvException as it is, any other one
/// wrapped. To be called from a catch block.
/// @param szSource    the source's fixed name, for the wrapping exception.
/// @param nLine       the line of the operation's own catch site, for it too.
/// @param szFunction  the operation's qualified name, for its evidence.
void TraceCurrentException(CPatchTrace& trace, const wchar_t* szSource, LONG nLine, const wchar_t* szFunction) noexcept;

/// Runs the work of an operation that the host has called and traces whatever it throws.
/// What must outlive the line about the failure, a lock for instance, is declared before and taken inside the work.
template <class Work>
void GuardBoundary(CPatchTrace& trace, const wchar_t* szSource, LONG nLine, const wchar_t* szFunction,
                   Work&& work) noexcept
{
    try
    {
        OvCallIn(work);
    }
    catch (...)
    {
        TraceCurrentException(trace, szSource, nLine, szFunction);
    }
}
