// Translated faults, to the rest of this folder. See OvSeTranslator.h.
#pragma once

#include "OvSeTranslator.h"

/// The code of the C++ exceptions that the platform's own compiler throws.
constexpr DWORD OvMsCppException = 0xE06D7363;

/// Claims a fault for the calling thread's translator, which the caller then calls. Changes no last error.
/// @return null when there is no translator, or it is not for this code.
_se_translator_function OvClaimFault(DWORD dwCode) noexcept;
