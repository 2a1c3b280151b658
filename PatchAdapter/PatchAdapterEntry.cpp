// The library's entry points.
#include "PatchAdapter/PatchAdapterFactory.h"

#include <new>

extern "C"
{
    BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved);
    IAdapterFactory* __cdecl GetAdapterFactory1_0();
    void __cdecl GetAdapterVersion(uint32_t* pnMajor, uint32_t* pnMinor);
}

BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD, LPVOID)
{
    g_hInstance = hInstance;
    return TRUE;
}

/// A new factory, which the host deletes with DeleteAdapterFactory; null when there is no memory for one.
IAdapterFactory* __cdecl GetAdapterFactory1_0()
{
    return new (std::nothrow) PatchAdapterFactory;
}

/// Stores the plug-in interface version; nothing when either pointer is null.
void __cdecl GetAdapterVersion(uint32_t* pnMajor, uint32_t* pnMinor)
{
    if (pnMajor == nullptr || pnMinor == nullptr)
        return;
    *pnMajor = PATCHADAPTER_INTERFACE_MAJOR;
    *pnMinor = PATCHADAPTER_INTERFACE_MINOR;
}
