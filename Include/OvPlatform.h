// The one door to the platform: Windows' own headers on Windows, the stand-in's elsewhere.
// Everything above this header is written against the platform's own names and asks no more which of the two it has.
#pragma once

#ifdef _WIN32

#include <windows.h>

#include <comdef.h>
#include <msxml2.h>
#include <ole2.h>
#include <oleauto.h>
#include <process.h>

#else

#include "Platform/Platform.h"

#endif
