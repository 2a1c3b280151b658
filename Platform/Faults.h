// Machine faults: a thread's translator is called, on the faulting thread and from the faulting instruction, for each
// fault that the processor reports.
#pragma once

#include "Platform/Types.h"

constexpr DWORD EXCEPTION_DATATYPE_MISALIGNMENT = 0x80000002u;
constexpr DWORD EXCEPTION_BREAKPOINT = 0x80000003u;
constexpr DWORD EXCEPTION_SINGLE_STEP = 0x80000004u;
constexpr DWORD EXCEPTION_ACCESS_VIOLATION = 0xC0000005u;
constexpr DWORD EXCEPTION_IN_PAGE_ERROR = 0xC0000006u;
constexpr DWORD EXCEPTION_ILLEGAL_INSTRUCTION = 0xC000001Du;
constexpr DWORD EXCEPTION_NONCONTINUABLE_EXCEPTION = 0xC0000025u;
constexpr DWORD EXCEPTION_INVALID_DISPOSITION = 0xC0000026u;
constexpr DWORD EXCEPTION_ARRAY_BOUNDS_EXCEEDED = 0xC000008Cu;
constexpr DWORD EXCEPTION_FLT_DENORMAL_OPERAND = 0xC000008Du;
constexpr DWORD EXCEPTION_FLT_DIVIDE_BY_ZERO = 0xC000008Eu;
constexpr DWORD EXCEPTION_FLT_INEXACT_RESULT = 0xC000008Fu;
constexpr DWORD EXCEPTION_FLT_INVALID_OPERATION = 0xC0000090u;
constexpr DWORD EXCEPTION_FLT_OVERFLOW = 0xC0000091u;
constexpr DWORD EXCEPTION_FLT_STACK_CHECK = 0xC0000092u;
constexpr DWORD EXCEPTION_FLT_UNDERFLOW = 0xC0000093u;
constexpr DWORD EXCEPTION_INT_DIVIDE_BY_ZERO = 0xC0000094u;
constexpr DWORD EXCEPTION_INT_OVERFLOW = 0xC0000095u;
constexpr DWORD EXCEPTION_PRIV_INSTRUCTION = 0xC0000096u;
constexpr DWORD EXCEPTION_STACK_OVERFLOW = 0xC00000FDu;

constexpr DWORD EXCEPTION_MAXIMUM_PARAMETERS = 15;

struct EXCEPTION_RECORD
{
    DWORD ExceptionCode;
    DWORD ExceptionFlags;
    EXCEPTION_RECORD* ExceptionRecord; // the fault during whose handling this one came; null: none
    PVOID ExceptionAddress;
    DWORD NumberParameters;
    ULONG_PTR ExceptionInformation[EXCEPTION_MAXIMUM_PARAMETERS];
};

struct CONTEXT; // not given out

struct EXCEPTION_POINTERS
{
    EXCEPTION_RECORD* ExceptionRecord;
    CONTEXT* ContextRecord; // always null
};

using _se_translator_function = void(__cdecl*)(unsigned int uCode, EXCEPTION_POINTERS* pPointers);

/// Sets the calling thread's translator. It is to throw; one that returns ends the process. What it throws unwinds from
/// the faulting instruction: code that is to be unwound needs -fnon-call-exceptions, and unwind tables.
/// Faults on a thread without a translator, and signals that someone sent, go to the handler that was there before.
/// After a stack overflow the thread has no reserve for a second one until it sets its translator again. An overflow of
/// the process's first thread is translated too, unless its stack is unlimited.
/// @param pNew  null: none.  @return the thread's translator until now; null: none.
OVPLATFORM_API _se_translator_function _set_se_translator(_se_translator_function pNew);
