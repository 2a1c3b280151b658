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
#include <tlhelp32.h>
#include <winternl.h>

#include "OvSeTranslator.h"

// The identifiers of the DOM that mingw-w64 declares and does not define, or lacks.
#define OV_DEFINE_ID(name, ...) extern "C" const GUID __declspec(selectany) name = { __VA_ARGS__ }
OV_DEFINE_ID(CLSID_DOMDocument30, 0xF5078F32, 0xC551, 0x11D3, { 0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21 });
OV_DEFINE_ID(CLSID_DOMDocument40, 0x88D969C0, 0xF192, 0x11D4, { 0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5 });
OV_DEFINE_ID(CLSID_DOMDocument60, 0x88D96A05, 0xF192, 0x11D4, { 0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5 });
OV_DEFINE_ID(IID_IXMLDOMDocument2, 0x2933BF95, 0x7B36, 0x11D2, { 0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60 });
#undef OV_DEFINE_ID

#else

#include "Platform/Platform.h"

#endif
