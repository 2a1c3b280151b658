// The component object model: apartments of threads, class objects, creation of objects.
#pragma once

#include "Platform/Errors.h"
#include "Platform/Types.h"

using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;

// The interfaces have no destructor that a caller could use: an object ends with its last Release.
struct IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};
using LPUNKNOWN = IUnknown*;

struct IClassFactory : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;

protected:
    ~IClassFactory() = default;
};

inline constexpr GUID GUID_NULL = { 0, 0, 0, { 0, 0, 0, 0, 0, 0, 0, 0 } };
inline constexpr IID IID_NULL = GUID_NULL;
inline constexpr IID IID_IUnknown = { 0x00000000, 0x0000, 0x0000, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };
inline constexpr IID IID_IClassFactory = { 0x00000001, 0x0000, 0x0000, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };

enum COINIT : DWORD
{
    COINIT_MULTITHREADED = 0x0,
    COINIT_APARTMENTTHREADED = 0x2
};

enum CLSCTX : DWORD
{
    CLSCTX_INPROC_SERVER = 0x1,
    CLSCTX_INPROC_HANDLER = 0x2,
    CLSCTX_LOCAL_SERVER = 0x4,
    CLSCTX_REMOTE_SERVER = 0x10
};
constexpr DWORD CLSCTX_SERVER = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
constexpr DWORD CLSCTX_ALL = CLSCTX_SERVER | CLSCTX_INPROC_HANDLER;

enum REGCLS : DWORD
{
    REGCLS_MULTIPLEUSE = 1
};

extern "C"
{
    /// Puts the calling thread into an apartment: its own (COINIT_APARTMENTTHREADED) or the process's multithreaded
    /// one.
    /// @return S_OK; S_FALSE when the thread was in that kind already (both want a CoUninitialize);
    ///         RPC_E_CHANGED_MODE when it is in the other kind (nothing changes); E_INVALIDARG for a non-null
    ///         pvReserved.
    OVPLATFORM_API HRESULT WINAPI CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit);

    /// Undoes one successful CoInitializeEx of the calling thread; without one it does nothing.
    OVPLATFORM_API void WINAPI CoUninitialize();

    /// Creates an object of a class that is registered in the calling thread's apartment or built into the platform.
    /// A thread without an apartment counts as in the multithreaded one while any thread of the process is in it.
    /// @param ppv  receives the interface, which the caller releases; null after a failure.
    /// @return E_POINTER for a null ppv; CO_E_NOTINITIALIZED without an apartment; REGDB_E_CLASSNOTREG when no class
    ///         object of this apartment and of one of the contexts dwClsContext is registered;
    ///         CLASS_E_NOAGGREGATION when the class refuses pUnkOuter; else what the class answers.
    OVPLATFORM_API HRESULT WINAPI CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext,
                                                   REFIID riid, LPVOID* ppv);

    /// Makes a class object known to creation calls of the same apartment. Keeps a reference until it is revoked or the
    /// apartment ends. One that is registered as a local server serves in-process contexts too. Nothing
    /// is marshalled: other apartments and processes do not see it, whatever the context.
    /// @param flags         REGCLS_MULTIPLEUSE.
    /// @param lpdwRegister  receives the cookie for CoRevokeClassObject, never 0.
    /// @return E_INVALIDARG for a null object or lpdwRegister or other flags; CO_E_NOTINITIALIZED without an apartment.
    OVPLATFORM_API HRESULT WINAPI CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext,
                                                        DWORD flags, LPDWORD lpdwRegister);

    /// Withdraws a class object. @return E_INVALIDARG for an unknown cookie; RPC_E_WRONG_THREAD in another apartment
    /// than the one that registered it.
    OVPLATFORM_API HRESULT WINAPI CoRevokeClassObject(DWORD dwRegister);

    /// A random GUID (version 4). @return E_INVALIDARG for a null pguid.
    OVPLATFORM_API HRESULT WINAPI CoCreateGuid(GUID* pguid);

    /// Writes the braced form in upper case, 38 units and a NUL. @param cchMax  room in lpsz, in units.
    /// @return the units written, the NUL included (39); 0 when they do not fit, then nothing is written.
    OVPLATFORM_API int WINAPI StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax);
}
