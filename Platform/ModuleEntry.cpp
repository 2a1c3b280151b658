// Linked into each library that has a DllMain: calls it when the library is loaded and unloaded. The library's static
// objects are destroyed after the second call, as on Windows; at the first, those of object files that the linker
// places behind this one have not been constructed yet, so a DllMain may note its arguments but not use such objects.
// There are no calls for threads.
#include "Platform/Modules.h"

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

__attribute__((constructor)) void OnLoad()
{
    if (!DllMain(ThisModule(), DLL_PROCESS_ATTACH, nullptr))
        OvModuleEntryFailed();
}

__attribute__((destructor)) void OnUnload()
{
    DllMain(ThisModule(), DLL_PROCESS_DETACH, nullptr);
}

} // namespace
