// Which types a VARIANT can have here.
#pragma once

#include "Platform/Automation.h"

namespace OvPlatform
{

/// Dates, currencies, decimals, arrays and references are not among them.
inline bool IsVariantType(VARTYPE vt)
{
    return vt <= VT_ERROR ? vt < 6 || vt > 7 : vt <= VT_UINT && vt != 12 && vt != 14 && vt != 15;
}

inline IUnknown* InterfaceOf(const VARIANT& value)
{
    return value.vt == VT_UNKNOWN ? value.punkVal : value.vt == VT_DISPATCH ? value.pdispVal : nullptr;
}

} // namespace OvPlatform
