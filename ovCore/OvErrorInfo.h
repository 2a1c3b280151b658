// The COM error information that an object leaves on its caller's thread.
#pragma once

#include "OvPlatform.h"

#include <string>

/// The description that a failed COM operation left behind, or a sentence that says why there is none.
/// @param pObject  the object whose operation failed; null counts as one without error information.
/// @param iid      the interface through which it was called.
/// Takes the error information from the calling thread. Raises nothing but a failed allocation.
std::wstring OvGetErrorInfoText(IUnknown* pObject, IID iid);

/// As OvGetErrorInfoText, of whichever object left the error information.
/// @param szLead  stands before a description.
std::wstring OvTakeErrorInfoText(const wchar_t* szLead);
