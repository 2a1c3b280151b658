// What the Trevok Patch Agent service and its vendor define. Each value can be replaced when the build is configured
// (the CMake cache variables TREVOK_PATCH_CLSID, TREVOK_PATCH_IID, TREVOK_WEB_HOST and TREVOK_REVERSE_DOMAIN).
#pragma once

#include "OvPlatform.h"
#include "TrevokPatchValues.h" // generated from the cache variables

/// The service's COM class.
inline constexpr CLSID CLSID_TrevokPatchApi = TREVOK_PATCH_CLSID_VALUE;

/// The interface ITrevokPatchApi.
inline constexpr IID IID_ITrevokPatchApi = TREVOK_PATCH_IID_VALUE;

/// The vendor's web host and reverse domain, from which the namespace values are made.
#define TREVOK_WEB_HOST TREVOK_WEB_HOST_VALUE
#define TREVOK_REVERSE_DOMAIN TREVOK_REVERSE_DOMAIN_VALUE

/// The kernel event that the service keeps signalled while it runs.
inline constexpr wchar_t TREVOK_SERVICE_EVENT[] = L"Global\\_HDQ_EVENT_03_";

/// The value in which the revision of the applied policy is recorded: under HKEY_LOCAL_MACHINE, in the 64-bit view.
#define TREVOK_REVISION_KEY L"SOFTWARE\\Trevok\\Trevok Patch Agent"
#define TREVOK_REVISION_NAME L"PolicyRevId"

/// The states of the service that are set or read.
enum PatchApiStateId : LONG
{
    StateSettingsPolicy = 2,     ///< set: VT_BSTR, the whole settings document
    StateWuaInstalled = 4,       ///< get: VT_BOOL
    StateWuaCompatible = 5,      ///< get: VT_BOOL
    StateWuaCurrentVersion = 6,  ///< get: VT_BSTR
    StateWuaRequiredVersion = 7, ///< get: VT_BSTR
    StateAssessmentEnabled = 8,  ///< get: VT_BOOL
    StateServerKeyStatus = 11    ///< get: VT_BOOL
};

/// The service's interface: two operations after the seven slots of IDispatch, which are not called. Each is called on
/// the thread that created the object. One that fails may leave a COM error object on that thread, which is then
/// described.
struct ITrevokPatchApi : public IDispatch
{
    /// @param value  passed by value; stays the caller's.
    virtual HRESULT STDMETHODCALLTYPE SetState(LONG stateId, VARIANT value) = 0;

    /// @param pValue  empty on entry; the caller clears it afterwards.
    virtual HRESULT STDMETHODCALLTYPE GetState(LONG stateId, VARIANT* pValue) = 0;

protected:
    ~ITrevokPatchApi() = default;
};
