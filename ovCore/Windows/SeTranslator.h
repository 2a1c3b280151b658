// Translated faults, to the rest of this folder. See OvSeTranslator.h.
#pragma once

#include "OvSeTranslator.h"

/// The code of the C++ exceptions that the platform's own compiler throws.
constexpr DWORD OvMsCppException = 0xE06D7363;

/// The calling thread's translator when it is to have a fault with this code; null otherwise. Changes no last error.
_se_translator_function OvTranslatorFor(DWORD dwCode) noexcept;
