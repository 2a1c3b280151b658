// Numbers in texts, as automation reads them in the English (United States) locale.
#pragma once

#include "Platform/Types.h"

#include <optional>
#include <string>

namespace OvPlatform
{

/// A number as it was written: decimal digits with an exponent, or the bits of a hexadecimal or octal one.
struct CNumberText
{
    bool bNegative = false; ///< of a decimal number; bits have no sign
    bool bBits = false;
    std::string digits;    ///< decimal digits without leading zeros; empty for zero
    int64_t nExponent = 0; ///< the value is 0.digits x 10^nExponent
    uint64_t nBits = 0;    ///< instead of digits when bBits
    bool bTooLong = false; ///< more bits than 64
};

/// Reads the whole text up to its NUL: blanks around; one "+", "-", "$" and pair of parentheses (which negate) in any
/// order; "," between digits; an exponent; or "&H" and "&O" with their digits.
/// @return nothing for what is no number.
std::optional<CNumberText> ParseNumber(const wchar_t* szText);

/// The integer's magnitude, rounded to the nearest, halves to even; nothing when it has more than 64 bits.
/// The number must not be bits.
std::optional<uint64_t> RoundToInteger(const CNumberText& number);

/// The nearest double, negative numbers included; nothing when it is out of range. The number must not be bits.
std::optional<double> ToDouble(const CNumberText& number);

} // namespace OvPlatform
