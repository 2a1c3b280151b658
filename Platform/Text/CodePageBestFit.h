// Characters that stand for those that code page 1252 lacks.
#pragma once

namespace OvPlatform
{

/// The byte that the platform writes for a unit that is not in code page 1252 but is similar to one that is; 0 for
/// none.
char BestFit1252(wchar_t nUnit);

} // namespace OvPlatform
