// UTF-8, as the libraries below the stand-in take it, and UTF-16 units, as the code above the seam has them.
#pragma once

#include <string>
#include <string_view>

namespace OvPlatform
{

/// A lone surrogate becomes U+FFFD, and so does a value that is no UTF-16 unit.
std::string Utf8FromWide(std::wstring_view text);

/// Each byte that is not part of valid UTF-8 becomes U+FFFD, as the platform does it: one for the longest beginning of
/// a character. A character outside the basic plane becomes two units.
std::wstring WideFromUtf8(std::string_view text);

/// Compares letters A to Z without regard to case; other units as they are.
bool EqualsNoCase(std::wstring_view a, std::wstring_view b);

} // namespace OvPlatform
