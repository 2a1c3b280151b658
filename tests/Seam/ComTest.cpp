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

constexpr CLSID s_clsid = { 0x9C5A6A10, 0x4C1B, 0x4F5E, { 0x8A, 0x11, 0x5D, 0x2E, 0x77, 0x10, 0x3C, 0x01 } };

class CTestObject final : public IUnknown
{
public:
    virtual ~CTestObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown ? this : nullptr;
        return *ppv ? static_cast<HRESULT>(AddRef() & 0) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }

    ULONG References() const { return m_nReferences; }

private:
    ULONG m_nReferences = 0;
};

/// Hands out one object; lives on the stack.
class CTestFactory final : public IClassFactory
{
public:
    virtual ~CTestFactory() { EXPECT_EQ(0u, m_nReferences); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IClassFactory ? static_cast<IClassFactory*>(this) : nullptr;
        return *ppv ? static_cast<HRESULT>(AddRef() & 0) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv) override
    {
        return pOuter ? CLASS_E_NOAGGREGATION : m_object.QueryInterface(riid, ppv);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    CTestObject m_object;

private:
    ULONG m_nReferences = 0;
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
        OnThread([] { // a thread that ends without leaving is taken out
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            EXPECT_EQ(S_OK, Create());
        });
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
        EXPECT_EQ(0u, factory.m_object.References());
    }
}

TEST(ClassObjects, PassOnWhatTheClassAnswers)
{
    const CComApartment multi;
    CTestFactory factory;
    CTestObject outer;
    const DWORD dwCookie = Register(factory);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, Create(CLSCTX_ALL, IID_IUnknown, &outer));
    EXPECT_EQ(E_NOINTERFACE, Create(CLSCTX_ALL, IID_IDispatch));
    EXPECT_EQ(E_POINTER, CoCreateInstance(s_clsid, nullptr, CLSCTX_ALL, IID_IUnknown, nullptr));
    EXPECT_EQ(S_OK, CoRevokeClassObject(dwCookie));
}

TEST(ClassObjects, RefuseWhatCannotBeRegistered)
{
    CTestFactory factory;
    DWORD dwCookie = 0;
    const DWORD dwContext = CLSCTX_LOCAL_SERVER;
    EXPECT_EQ(CO_E_NOTINITIALIZED, CoRegisterClassObject(s_clsid, &factory, dwContext, REGCLS_MULTIPLEUSE, &dwCookie));
    const CComApartment multi;
    EXPECT_EQ(E_INVALIDARG, CoRegisterClassObject(s_clsid, nullptr, dwContext, REGCLS_MULTIPLEUSE, &dwCookie));
    EXPECT_EQ(E_INVALIDARG, CoRegisterClassObject(s_clsid, &factory, dwContext, REGCLS_MULTIPLEUSE, nullptr));
    EXPECT_EQ(E_INVALIDARG, CoRevokeClassObject(0));
}

TEST(ErrorObject, IsHandedOverOnceAndPerThread)
{
    ICreateErrorInfo* pCreate = nullptr;
    ASSERT_EQ(S_OK, CreateErrorInfo(&pCreate));
    wchar_t szText[] = L"what went wrong \xD83D\xDE00";
    EXPECT_EQ(S_OK, pCreate->SetDescription(szText));
    void* pv = nullptr;
    ASSERT_EQ(S_OK, pCreate->QueryInterface(IID_IErrorInfo, &pv));
    auto* pError = static_cast<IErrorInfo*>(pv);
    pCreate->Release();

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
    EXPECT_EQ(S_FALSE, GetErrorInfo(0, &pGot)); // only once
    pError->Release();
    BSTR bstr = nullptr;
    EXPECT_EQ(S_OK, pError->GetDescription(&bstr));
    EXPECT_EQ(szText, Text(bstr));
    EXPECT_EQ(0u, pError->Release());
    EXPECT_EQ(S_OK, SetErrorInfo(0, nullptr));
    EXPECT_EQ(E_INVALIDARG, GetErrorInfo(1, &pGot));
    EXPECT_EQ(E_INVALIDARG, SetErrorInfo(1, nullptr));
    EXPECT_EQ(E_INVALIDARG, CreateErrorInfo(nullptr));
}

TEST(ErrorObject, KeepsItsFields)
{
    ICreateErrorInfo* pCreate = nullptr;
    ASSERT_EQ(S_OK, CreateErrorInfo(&pCreate));
    void* pv = nullptr;
    ASSERT_EQ(S_OK, pCreate->QueryInterface(IID_IErrorInfo, &pv));
    auto* pError = static_cast<IErrorInfo*>(pv);
    BSTR bstr = nullptr;
    EXPECT_EQ(S_OK, pError->GetDescription(&bstr)); // nothing set: null
    EXPECT_FALSE(bstr);
    EXPECT_EQ(E_INVALIDARG, pError->GetDescription(nullptr));
    EXPECT_EQ(E_NOINTERFACE, pError->QueryInterface(IID_IDispatch, &pv));
    EXPECT_FALSE(pv);

    wchar_t szEmpty[] = L"";
    wchar_t szSource[] = L"source";
    wchar_t szHelp[] = L"help";
    DWORD dwContext = 0;
    GUID guid = GUID_NULL;
    EXPECT_EQ(S_OK, pCreate->SetDescription(szSource));
    EXPECT_EQ(S_OK, pCreate->SetDescription(szEmpty));
    EXPECT_EQ(S_OK, pCreate->SetSource(szSource));
    EXPECT_EQ(S_OK, pCreate->SetHelpFile(szHelp));
    EXPECT_EQ(S_OK, pCreate->SetHelpContext(9));
    EXPECT_EQ(S_OK, pCreate->SetGUID(s_clsid));
    EXPECT_EQ(S_OK, pError->GetDescription(&bstr));
    EXPECT_EQ(L"", Text(bstr));
    EXPECT_EQ(S_OK, pError->GetSource(&bstr));
    EXPECT_EQ(szSource, Text(bstr));
    EXPECT_EQ(S_OK, pError->GetHelpFile(&bstr));
    EXPECT_EQ(szHelp, Text(bstr));
    EXPECT_EQ(S_OK, pError->GetHelpContext(&dwContext));
    EXPECT_EQ(9u, dwContext);
    EXPECT_EQ(S_OK, pError->GetGUID(&guid));
    EXPECT_TRUE(guid == s_clsid);
    pError->Release();
    EXPECT_EQ(0u, pCreate->Release());
}

TEST(ComError, KeepsTheErrorObjectWhileItIsCopied)
{
    ICreateErrorInfo* pCreate = nullptr;
    ASSERT_EQ(S_OK, CreateErrorInfo(&pCreate));
    void* pv = nullptr;
    ASSERT_EQ(S_OK, pCreate->QueryInterface(IID_IErrorInfo, &pv));
    pCreate->Release();
    auto* pError = static_cast<IErrorInfo*>(pv);
    try
    {
        throw _com_error(E_FAIL, pError, true);
    }
    catch (const _com_error& e)
    {
        _com_error copy(E_ABORT);
        copy = e;
        copy = *&copy;
        EXPECT_EQ(E_FAIL, copy.Error());
        IErrorInfo* pHeld = copy.ErrorInfo();
        EXPECT_EQ(pError, pHeld);
        pHeld->Release();
    }
    EXPECT_EQ(0u, pError->Release());
}

TEST(Guids, HaveOneTextForm)
{
    const GUID guid = { 0x6F1D2C84, 0x3B57, 0x4E0A, { 0x0C, 0x41, 0x7A, 0x5E, 0x0D, 0x93, 0xB2, 0xF6 } };
    OLECHAR szText[39] = L"x";
    EXPECT_EQ(0, StringFromGUID2(guid, szText, 38));
    EXPECT_STREQ(L"x", szText);
    EXPECT_EQ(39, StringFromGUID2(guid, szText, 39));
    EXPECT_STREQ(L"{6F1D2C84-3B57-4E0A-0C41-7A5E0D93B2F6}", szText);
}

TEST(Guids, AreNewEachTime)
{
    std::set<std::wstring> texts;
    for (int i = 0; i < 50; ++i)
    {
        GUID guid = GUID_NULL;
        OLECHAR szText[39];
        ASSERT_EQ(S_OK, CoCreateGuid(&guid));
        StringFromGUID2(guid, szText, 39);
        EXPECT_EQ(L'4', szText[15]) << testing::PrintToString(szText); // random
        EXPECT_NE(std::wstring::npos, std::wstring(L"89AB").find(szText[20]));
        texts.insert(szText);
    }
    EXPECT_EQ(50u, texts.size());
    EXPECT_EQ(E_INVALIDARG, CoCreateGuid(nullptr));
}
