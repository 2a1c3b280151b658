// Machine faults as exceptions.
#pragma once

#include "OvPlatform.h"

/// The translator for _set_se_translator: turns the machine fault that the calling thread met into a COvException with
/// code 0xC000B02F, whose evidence names each of the fault's records and explains it in words. Writes one line to the
/// debugger.
/// @param uSEH                the fault's code.
/// @param pExceptionPointers  the fault's records; null gives the code alone.
[[noreturn]] void SEHtoExceptionTranslation(unsigned int uSEH, EXCEPTION_POINTERS* pExceptionPointers);
