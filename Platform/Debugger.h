// The debugger's output stream. Nothing listens to it but a test that captures it (see Control.h).
#pragma once

#include "Platform/Types.h"

extern "C"
{
    /// @param szText  null counts as empty.
    OVPLATFORM_API void WINAPI OutputDebugStringW(LPCWSTR szText);
}
