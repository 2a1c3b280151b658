// What the compiler's run-time library lacks of the platform's: the translator of machine faults. OvPlatform.h includes
// this on Windows.
#pragma once

#include <windows.h>

using _se_translator_function = void(__cdecl*)(unsigned int uCode, struct _EXCEPTION_POINTERS* pPointers);

/// Sets the calling thread's translator, for faults in this module's code. It is to throw; one that returns ends the
/// process. What it throws unwinds from the faulting instruction, so the code needs -fnon-call-exceptions.
///
/// Not translated, but left to the handlers that are there anyway: faults in code without unwind tables (the system's
/// libraries, another module; RaiseException is such code, so software exceptions are among them); faults under a
/// structured handler that was set up after the translator; C++ exceptions of any compiler; and the notes that are
/// meant for a debugger. OvCallIn and OvCallOut are such handlers, and translate what they meet of the first two.
///
/// After a stack overflow the thread has no guard for a second one until it sets its translator again.
/// @param pNew  null: none.  @return the thread's translator until now; null: none.
_se_translator_function __cdecl _set_se_translator(_se_translator_function pNew);
