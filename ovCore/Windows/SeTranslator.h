// Translated faults, to the rest of this folder. See OvSeTranslator.h.
#pragma once

#include "OvSeTranslator.h"

/// The code of the C++ exceptions that the platform's own compiler throws.
constexpr DWORD OvMsCppException = 0xE06D7363;

/// The calling thread's translator when it is to have a fault with this code; null otherwise. Changes no last error.
_se_translator_function OvTranslatorFor(DWORD dwCode) noexcept;

/// Makes the calling thread's newest structured handler the limit of this library's own code: a fault under a newer one
/// is left to that one. @return the limit until now; null: the thread never set a translator.
const void* OvLimitOwnCode() noexcept;

/// Puts back a limit, which is not null. On the thread that had it.
void OvRestoreOwnCode(const void* pLimit) noexcept;
