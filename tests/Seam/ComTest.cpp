// Apartments, class objects, error objects and GUIDs, as the platform has them.
#include "ComApartment.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <thread>
#include <tuple>

namespace
{

constexpr CLSID s_clsid = { 0x9C5A6A10, 0x4C1B, 0x4F5E, { 0x0A, 0x11, 0x5D, 0x2E, 0x77, 0x10, 0x3C, 0x01 } };

/// Offers one interface and IUnknown; lives on the stack.
template <class Interface>
class CTestUnknown : public Interface
{
public:
    explicit CTestUnknown(REFIID riid) : m_iid(riid) {}
    virtual ~CTestUnknown() { EXPECT_EQ(0u, m_nReferences); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == m_iid ? this : nullptr;
        return *ppv ? static_cast<HRESULT>(AddRef() & 0) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }

private:
    const IID m_iid;
    ULONG m_nReferences = 0;
};

struct CTestObject final : CTestUnknown<IUnknown>
{
    CTestObject() : CTestUnknown(IID_IUnknown) {}
};

/// Hands out one object.
class CTestFactory final : public CTestUnknown<IClassFactory>
{
public:
    CTestFactory() : CTestUnknown(IID_IClassFactory) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv) override
    {
        return pOuter ? CLASS_E_NOAGGREGATION : m_object.QueryInterface(riid, ppv);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    CTestObject m_object;
};

/// An error object, with nobody else's reference at the end.
struct CErrorObject
{
    CErrorObject()
    {
        void* pv = nullptr;
        EXPECT_EQ(S_OK, CreateErrorInfo(&m_pCreate));
        EXPECT_EQ(S_OK, m_pCreate->QueryInterface(IID_IErrorInfo, &pv));
        m_pError = static_cast<IErrorInfo*>(pv);
        m_pCreate->Release();
    }
    ~CErrorObject() { EXPECT_EQ(0u, m_pError->Release()); }
    IErrorInfo* operator->() const { return m_pError; }

    ICreateErrorInfo* m_pCreate = nullptr; // the same object
    IErrorInfo* m_pError = nullptr;
};

/// The result of creating the test class, which leaves nothing behind.
HRESULT Create(DWORD dwContext = CLSCTX_ALL, REFIID riid = IID_IUnknown, IUnknown* pOuter = nullptr)
{
    int nNothing = 0;
    void* pv = &nNothing;
    const HRESULT hr = CoCreateInstance(s_clsid, pOuter, dwContext, riid, &pv);
    EXPECT_EQ(FAILED(hr), pv == nullptr);
    if (SUCCEEDED(hr))
        static_cast<IUnknown*>(pv)->Release();
    return hr;
}

DWORD Register(CTestFactory& factory, DWORD dwContext = CLSCTX_INPROC_SERVER)
{
    DWORD dwCookie = 0;
    EXPECT_EQ(S_OK, CoRegisterClassObject(s_clsid, &factory, dwContext, REGCLS_MULTIPLEUSE, &dwCookie));
    EXPECT_NE(0u, dwCookie);
    return dwCookie;
}

void OnThread(const std::function<void()>& work)
{
    std::thread(work).join();
}

std::wstring Text(BSTR bstr)
{
    const std::wstring text = bstr ? std::wstring(bstr, SysStringLen(bstr)) : L"<null>";
    SysFreeString(bstr);
    return text;
}

} // namespace

TEST(Apartments, CountTheirEntries)
{
    CoUninitialize(); // without an entry: nothing
    EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(S_FALSE, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(RPC_E_CHANGED_MODE, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    CoUninitialize();
    EXPECT_EQ(REGDB_E_CLASSNOTREG, Create()); // still in
    CoUninitialize();
    EXPECT_EQ(CO_E_NOTINITIALIZED, Create());
    EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); // now the other kind may be entered
    CoUninitialize();
}

TEST(Apartments, AThreadOutsideCountsAsMultithreadedWhileThatExists)
{
    EXPECT_EQ(CO_E_NOTINITIALIZED, Create());
    {
        const CComApartment single(COINIT_APARTMENTTHREADED);
        OnThread([] { EXPECT_EQ(CO_E_NOTINITIALIZED, Create()); });
    }
    {
        const CComApartment multi;
        CTestFactory factory;
        const DWORD dwCookie = Register(factory);
        OnThread([] { EXPECT_EQ(S_OK, Create()); });
        EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
    }
    OnThread([] { EXPECT_EQ(CO_E_NOTINITIALIZED, Create()); });
}

TEST(ClassObjects, BelongToTheirApartment)
{
    const CComApartment multi;
    CTestFactory factory;
    DWORD dwCookie = Register(factory);
    OnThread([&] {
        const CComApartment single(COINIT_APARTMENTTHREADED);
        EXPECT_EQ(REGDB_E_CLASSNOTREG, Create());
        EXPECT_EQ(RPC_E_WRONG_THREAD, CoRevokeClassObject(dwCookie));
    });
    EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
    EXPECT_EQ(E_INVALIDARG, CoRevokeClassObject(dwCookie));
    OnThread([&] {
        const CComApartment single(COINIT_APARTMENTTHREADED);
        dwCookie = Register(factory);
        EXPECT_EQ(S_OK, Create());
        OnThread([] { EXPECT_EQ(REGDB_E_CLASSNOTREG, Create()); });
        OnThread([] {
            const CComApartment another(COINIT_APARTMENTTHREADED);
            EXPECT_EQ(REGDB_E_CLASSNOTREG, Create());
        });
        // not revoked: goes with its apartment
    });
    EXPECT_EQ(E_INVALIDARG, CoRevokeClassObject(dwCookie));
}

TEST(ClassObjects, ServeTheirContexts)
{
    const std::tuple<DWORD, DWORD, HRESULT> rows[] = {
        { CLSCTX_LOCAL_SERVER, CLSCTX_ALL, S_OK },
        { CLSCTX_LOCAL_SERVER, CLSCTX_LOCAL_SERVER, S_OK },
        { CLSCTX_LOCAL_SERVER, CLSCTX_INPROC_SERVER, S_OK }, // one for many uses serves its own process too
        { CLSCTX_LOCAL_SERVER, CLSCTX_INPROC_HANDLER, REGDB_E_CLASSNOTREG },
        { CLSCTX_LOCAL_SERVER, CLSCTX_REMOTE_SERVER, REGDB_E_CLASSNOTREG },
        { CLSCTX_INPROC_SERVER, CLSCTX_INPROC_SERVER, S_OK },
        { CLSCTX_INPROC_SERVER, CLSCTX_LOCAL_SERVER, REGDB_E_CLASSNOTREG },
    };
    const CComApartment multi;
    for (const auto& [dwRegistered, dwAsked, hr] : rows)
    {
        CTestFactory factory;
        const DWORD dwCookie = Register(factory, dwRegistered);
        EXPECT_EQ(hr, Create(dwAsked)) << dwRegistered << " asked " << dwAsked;
        EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
        EXPECT_EQ(REGDB_E_CLASSNOTREG, Create(dwAsked));
    }
}

TEST(ClassObjects, PassOnWhatTheClassAnswersAndRefuseWhatIsNone)
{
    CTestFactory factory;
    CTestObject outer;
    DWORD dwCookie = 0;
    const auto registerIt = [&](IUnknown* pFactory, DWORD* pCookie) {
        return CoRegisterClassObject(s_clsid, pFactory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, pCookie);
    };
    EXPECT_EQ(CO_E_NOTINITIALIZED, registerIt(&factory, &dwCookie));
    const CComApartment multi;
    EXPECT_EQ(E_INVALIDARG, registerIt(nullptr, &dwCookie));
    EXPECT_EQ(E_INVALIDARG, registerIt(&factory, nullptr));
    EXPECT_EQ(E_INVALIDARG, CoRevokeClassObject(0));
    EXPECT_EQ(S_OK, registerIt(&factory, &dwCookie));
    EXPECT_EQ(CLASS_E_NOAGGREGATION, Create(CLSCTX_ALL, IID_IUnknown, &outer));
    EXPECT_EQ(E_NOINTERFACE, Create(CLSCTX_ALL, IID_IDispatch));
    EXPECT_EQ(E_POINTER, CoCreateInstance(s_clsid, nullptr, CLSCTX_ALL, IID_IUnknown, nullptr));
    EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
}

TEST(ErrorObject, IsHandedOverOnceAndPerThread)
{
    CErrorObject error;
    IErrorInfo* const pError = error.m_pError;
    EXPECT_EQ(S_OK, SetErrorInfo(0, pError));
    OnThread([pError] {
        IErrorInfo* pNone = pError;
        EXPECT_EQ(S_FALSE, GetErrorInfo(0, &pNone));
        EXPECT_FALSE(pNone);
        SetErrorInfo(0, pError); // goes with its thread
    });
    IErrorInfo* pGot = nullptr;
    EXPECT_EQ(S_OK, GetErrorInfo(0, &pGot));
    EXPECT_EQ(pError, pGot);
    pError->Release();
    EXPECT_EQ(S_FALSE, GetErrorInfo(0, &pGot)); // only once
    EXPECT_EQ(S_OK, SetErrorInfo(0, nullptr));
    EXPECT_EQ(E_INVALIDARG, GetErrorInfo(1, &pGot));
    EXPECT_EQ(E_INVALIDARG, SetErrorInfo(1, nullptr));
    EXPECT_EQ(E_INVALIDARG, CreateErrorInfo(nullptr));
}

TEST(ErrorObject, KeepsItsFields)
{
    CErrorObject error;
    BSTR bstr = nullptr;
    void* pv = nullptr;
    EXPECT_EQ(S_OK, error->GetDescription(&bstr)); // nothing set: null
    EXPECT_FALSE(bstr);
    EXPECT_EQ(E_INVALIDARG, error->GetDescription(nullptr));
    EXPECT_EQ(E_NOINTERFACE, error->QueryInterface(IID_IDispatch, &pv));
    EXPECT_FALSE(pv);

    std::wstring texts[] = { L"", L"source", L"help" };
    DWORD dwContext = 0;
    GUID guid = GUID_NULL;
    EXPECT_EQ(S_OK, error.m_pCreate->SetDescription(texts[1].data()));
    EXPECT_EQ(S_OK, error.m_pCreate->SetDescription(texts[0].data()));
    EXPECT_EQ(S_OK, error.m_pCreate->SetSource(texts[1].data()));
    EXPECT_EQ(S_OK, error.m_pCreate->SetHelpFile(texts[2].data()));
    EXPECT_EQ(S_OK, error.m_pCreate->SetHelpContext(9));
    EXPECT_EQ(S_OK, error.m_pCreate->SetGUID(s_clsid));
    BSTR told[3] = {};
    EXPECT_EQ(S_OK, error->GetDescription(&told[0]));
    EXPECT_EQ(S_OK, error->GetSource(&told[1]));
    EXPECT_EQ(S_OK, error->GetHelpFile(&told[2]));
    for (size_t i = 0; i < std::size(told); ++i)
        EXPECT_EQ(texts[i], Text(told[i]));
    EXPECT_EQ(S_OK, error->GetHelpContext(&dwContext));
    EXPECT_EQ(9u, dwContext);
    EXPECT_EQ(S_OK, error->GetGUID(&guid));
    EXPECT_TRUE(guid == s_clsid);
}

TEST(ComError, KeepsTheErrorObjectWhileItIsCopied)
{
    CErrorObject error;
    error->AddRef(); // for the exception
    try
    {
        throw _com_error(E_FAIL, error.m_pError, false);
    }
    catch (const _com_error& e)
    {
        _com_error copy(E_ABORT);
        copy = e;
        copy = *&copy;
        EXPECT_EQ(E_FAIL, copy.Error());
        IErrorInfo* const pHeld = copy.ErrorInfo();
        EXPECT_EQ(error.m_pError, pHeld);
        pHeld->Release();
    }
}

TEST(Guids, HaveOneTextFormAndAreNewEachTime)
{
    OLECHAR szText[39] = L"x";
    EXPECT_EQ(0, StringFromGUID2(s_clsid, szText, 38));
    EXPECT_STREQ(L"x", szText);
    EXPECT_EQ(39, StringFromGUID2(s_clsid, szText, 39));
    EXPECT_STREQ(L"{9C5A6A10-4C1B-4F5E-0A11-5D2E77103C01}", szText);
    std::set<std::wstring> texts;
    for (int i = 0; i < 50; ++i)
    {
        GUID guid = GUID_NULL;
        ASSERT_EQ(S_OK, CoCreateGuid(&guid));
        StringFromGUID2(guid, szText, 39);
        EXPECT_EQ(L'4', szText[15]) << testing::PrintToString(szText); // random
        EXPECT_NE(std::wstring::npos, std::wstring(L"89AB").find(szText[20]));
        texts.insert(szText);
    }
    EXPECT_EQ(50u, texts.size());
    EXPECT_EQ(E_INVALIDARG, CoCreateGuid(nullptr));
}
