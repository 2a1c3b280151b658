// What the stand-in adds to COM for tests: its own classes, and the counts.
#include "OvPlatform.h"
#include "Platform/Control.h"

#include "ComApartment.h"

#include <gtest/gtest.h>

namespace
{

HRESULT CreateDocument(DWORD dwContext, IUnknown* pOuter = nullptr)
{
    void* pv = nullptr;
    const HRESULT hr = CoCreateInstance(CLSID_DOMDocument60, pOuter, dwContext, IID_IUnknown, &pv);
    if (pv)
        static_cast<IUnknown*>(pv)->Release();
    return hr;
}

} // namespace

TEST(BuiltInClasses, AreCreatedInProcessOnly)
{
    const CComApartment multi;
    EXPECT_EQ(S_OK, CreateDocument(CLSCTX_INPROC_SERVER));
    EXPECT_EQ(S_OK, CreateDocument(CLSCTX_ALL));
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CreateDocument(CLSCTX_LOCAL_SERVER));
    void* pOuter = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_DOMDocument60, nullptr, CLSCTX_ALL, IID_IUnknown, &pOuter));
    EXPECT_EQ(CLASS_E_NOAGGREGATION, CreateDocument(CLSCTX_INPROC_SERVER, static_cast<IUnknown*>(pOuter)));
    static_cast<IUnknown*>(pOuter)->Release();
}

TEST(BuiltInClasses, CanBeMissing)
{
    const CComApartment multi;
    OvPlatform::SetClassAvailable(CLSID_DOMDocument60, false);
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CreateDocument(CLSCTX_ALL));
    OvPlatform::SetClassAvailable(CLSID_DOMDocument60, true);
    EXPECT_EQ(S_OK, CreateDocument(CLSCTX_ALL));
}

TEST(Counts, FollowWhatIsAlive)
{
    const unsigned nStrings = OvPlatform::LiveBstrs();
    const unsigned nObjects = OvPlatform::LiveComObjects();
    const unsigned nHandles = OvPlatform::OpenHandles();
    BSTR bstr = SysAllocString(L"x");
    EXPECT_EQ(nStrings + 1, OvPlatform::LiveBstrs());
    SysFreeString(bstr);
    EXPECT_EQ(nStrings, OvPlatform::LiveBstrs());

    ICreateErrorInfo* pCreate = nullptr;
    ASSERT_EQ(S_OK, CreateErrorInfo(&pCreate));
    EXPECT_EQ(nObjects + 1, OvPlatform::LiveComObjects());
    {
        const CComApartment multi;
        DWORD dwCookie = 0;
        ASSERT_EQ(S_OK, CoRegisterClassObject(IID_NULL, pCreate, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &dwCookie));
        EXPECT_EQ(nObjects + 2, OvPlatform::LiveComObjects());
        EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
    }
    pCreate->Release();
    EXPECT_EQ(nObjects, OvPlatform::LiveComObjects());

    OvPlatform::SetRegistryInMemory();
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_READ, &hKey));
    EXPECT_EQ(nHandles + 1, OvPlatform::OpenHandles());
    RegCloseKey(hKey);
    EXPECT_EQ(nHandles, OvPlatform::OpenHandles());
}
