#include "Platform/Com.h"

#include "Platform/Com/Apartments.h"
#include "Platform/Com/ClassTable.h"
#include "Platform/Com/ComPtr.h"
#include "Platform/Control.h"
#include "Platform/Kernel/Counters.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <new>
#include <vector>

using namespace OvPlatform;

namespace
{

/// A class object that a thread has registered.
struct CClassObject
{
    DWORD dwCookie;
    CLSID clsid;
    DWORD dwContext;
    ApartmentId apartment;
    CComPtr<IUnknown> pObject;
    CCountedComObject counted;
};

/// A class that the platform brings.
struct CBuiltInClass
{
    CLSID clsid;
    InprocCreator pCreate;
    bool bAvailable;
};

struct CClassTable
{
    std::mutex lock;
    std::list<CClassObject> objects;
    std::vector<CBuiltInClass> builtIn;
    DWORD dwLastCookie = 0;
};

/// Never destroyed: threads may still run while the process ends.
CClassTable& Table()
{
    static CClassTable& s_table = *new CClassTable;
    return s_table;
}

CComPtr<IUnknown> FindClassObject(REFCLSID rclsid, DWORD dwContext, ApartmentId apartment)
{
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    for (const CClassObject& object : table.objects)
        if (object.clsid == rclsid && (object.dwContext & dwContext) != 0 && object.apartment == apartment)
            return object.pObject;
    return CComPtr<IUnknown>();
}

InprocCreator FindBuiltInClass(REFCLSID rclsid, DWORD dwContext)
{
    if ((dwContext & CLSCTX_INPROC_SERVER) == 0)
        return nullptr;
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    for (const CBuiltInClass& builtIn : table.builtIn)
        if (builtIn.clsid == rclsid && builtIn.bAvailable)
            return builtIn.pCreate;
    return nullptr;
}

HRESULT CreateFromObject(IUnknown& classObject, LPUNKNOWN pUnkOuter, REFIID riid, LPVOID* ppv)
{
    void* pFactory = nullptr;
    const HRESULT hr = classObject.QueryInterface(IID_IClassFactory, &pFactory);
    if (FAILED(hr))
        return hr;
    auto* pClassFactory = static_cast<IClassFactory*>(pFactory);
    const HRESULT hrCreate = pClassFactory->CreateInstance(pUnkOuter, riid, ppv);
    pClassFactory->Release();
    return hrCreate;
}

HRESULT Create(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwContext, REFIID riid, LPVOID* ppv)
{
    const ApartmentId apartment = CurrentApartment();
    if (apartment == NoApartment)
        return CO_E_NOTINITIALIZED;
    if (const CComPtr<IUnknown> pObject = FindClassObject(rclsid, dwContext, apartment))
        return CreateFromObject(*pObject.Get(), pUnkOuter, riid, ppv);
    const InprocCreator pCreate = FindBuiltInClass(rclsid, dwContext);
    if (!pCreate)
        return REGDB_E_CLASSNOTREG;
    return pUnkOuter ? CLASS_E_NOAGGREGATION : pCreate(riid, ppv);
}

} // namespace

namespace OvPlatform
{

void RegisterInprocClass(REFCLSID rclsid, InprocCreator pCreate)
{
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    table.builtIn.push_back({ rclsid, pCreate, true });
}

void SetClassAvailable(REFCLSID rclsid, bool bAvailable)
{
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    for (CBuiltInClass& builtIn : table.builtIn)
        if (builtIn.clsid == rclsid)
            builtIn.bAvailable = bAvailable;
}

void RevokeClassObjects(ApartmentId apartment)
{
    std::list<CClassObject> revoked; // let go after the lock
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    for (auto at = table.objects.begin(); at != table.objects.end();)
    {
        const auto current = at++;
        if (current->apartment == apartment)
            revoked.splice(revoked.end(), table.objects, current);
    }
}

} // namespace OvPlatform

HRESULT CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid, LPVOID* ppv)
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    return Create(rclsid, pUnkOuter, dwClsContext, riid, ppv);
}

HRESULT CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags, LPDWORD lpdwRegister)
{
    if (!pUnk || !lpdwRegister || flags != REGCLS_MULTIPLEUSE)
        return E_INVALIDARG;
    const ApartmentId apartment = CurrentApartment();
    if (apartment == NoApartment)
        return CO_E_NOTINITIALIZED;
    // A class object for many uses that serves other processes serves its own one too.
    const DWORD dwServed = dwClsContext & CLSCTX_LOCAL_SERVER ? dwClsContext | CLSCTX_INPROC_SERVER : dwClsContext;
    try
    {
        CClassTable& table = Table();
        const std::lock_guard<std::mutex> lock(table.lock);
        table.objects.push_back({ table.dwLastCookie + 1, rclsid, dwServed, apartment, CComPtr<IUnknown>(pUnk), {} });
        *lpdwRegister = ++table.dwLastCookie;
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT CoRevokeClassObject(DWORD dwRegister)
{
    std::list<CClassObject> revoked; // let go after the lock
    CClassTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.lock);
    const auto at = std::find_if(table.objects.begin(), table.objects.end(),
                                 [&](const CClassObject& object) { return object.dwCookie == dwRegister; });
    if (at == table.objects.end())
        return E_INVALIDARG;
    if (at->apartment != CurrentApartment())
        return RPC_E_WRONG_THREAD;
    revoked.splice(revoked.end(), table.objects, at);
    return S_OK;
}
