// Linked into each library that has a DllMain: calls it when the library is loaded and unloaded, as the start-up code
// of a library does on Windows. The library's own static objects exist at both times: they are initialised before the
// constructor below runs and destroyed after the destructor.
#include "Modules.h"

extern "C"
{
    BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved);
    extern const char __ehdr_start __attribute__((visibility("hidden"))); // the library's first byte in memory
    OVPLATFORM_API void OvModuleEntryFailed();
}

namespace
{

HINSTANCE ThisModule()
{
    return reinterpret_cast<HINSTANCE>(reinterpret_cast<uintptr_t>(&__ehdr_start));
}

// Constructs after the library's other statics, as the linker runs constructors of a higher priority number later.
__attribute__((constructor(65535))) void OnLoad()
{
    if (!DllMain(ThisModule(), DLL_PROCESS_ATTACH, nullptr))
        OvModuleEntryFailed();
}

__attribute__((destructor(65535))) void OnUnload()
{
    DllMain(ThisModule(), DLL_PROCESS_DETACH, nullptr);
}

} // namespace
