#include "ForeignService.h"

#include "HostThrow.h"

namespace
{

ForeignCall s_call = ForeignCall::None;
Misdeed s_misdeed = Misdeed::Throw;
int s_nReferences = 0; // to the one object
const volatile char* volatile s_pNowhere = reinterpret_cast<const volatile char*>(8);

bool Is(ForeignCall call, Misdeed misdeed)
{
    return s_call == call && s_misdeed == misdeed;
}

void Pass(ForeignCall call)
{
    if (Is(call, Misdeed::Throw))
        ThrowAsHost();
    if (Is(call, Misdeed::Fault))
        static_cast<void>(*s_pNowhere);
}

class CForeignError final : public IErrorInfo
{
public:
    virtual ~CForeignError() = default;
    STDMETHODIMP QueryInterface(REFIID, void** pp) override { return *pp = this, S_OK; }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override
    {
        Pass(ForeignCall::ReleaseError);
        return 1;
    }
    STDMETHODIMP GetDescription(BSTR* pDescription) override
    {
        Pass(ForeignCall::GetDescription);
        *pDescription = ::SysAllocString(L"of another maker");
        return S_OK;
    }
    STDMETHODIMP GetGUID(GUID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSource(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpContext(DWORD*) override { return E_NOTIMPL; }
};

CForeignError s_error;

class CForeignObject final : public ITrevokPatchApi
{
public:
    virtual ~CForeignObject() = default;
    STDMETHODIMP QueryInterface(REFIID riid, void** pp) override
    {
        if (riid == IID_ITrevokPatchApi)
            Pass(ForeignCall::Query);
        *pp = riid == IID_ITrevokPatchApi && Is(ForeignCall::Query, Misdeed::AnswerNull) ? nullptr : this;
        s_nReferences += *pp != nullptr ? 1 : 0;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++s_nReferences); }
    STDMETHODIMP_(ULONG) Release() override
    {
        Pass(--s_nReferences == 0 ? ForeignCall::LastRelease : ForeignCall::FirstRelease);
        return static_cast<ULONG>(s_nReferences);
    }
    STDMETHODIMP SetState(LONG, VARIANT) override
    {
        Pass(ForeignCall::SetState);
        return S_OK;
    }
    STDMETHODIMP GetState(LONG stateId, VARIANT* pValue) override
    {
        Pass(ForeignCall::GetState);
        const bool bVersion = stateId == StateWuaCurrentVersion || stateId == StateWuaRequiredVersion;
        if (s_call == ForeignCall::GetDescription || s_call == ForeignCall::ReleaseError)
            return ::SetErrorInfo(0, &s_error), E_FAIL;
        pValue->vt = bVersion ? VT_BSTR : VT_BOOL;
        if (!bVersion)
            pValue->boolVal = VARIANT_TRUE;
        else
            pValue->bstrVal = ::SysAllocString(L"1.2.3.4");
        return S_OK;
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override
    {
        return E_NOTIMPL;
    }
};

CForeignObject s_object;

class CForeignClass final : public IClassFactory
{
public:
    virtual ~CForeignClass() = default;
    STDMETHODIMP QueryInterface(REFIID, void** pp) override { return *pp = this, S_OK; }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** pp) override
    {
        Pass(ForeignCall::Create);
        s_nReferences = 0;
        *pp = nullptr;
        return Is(ForeignCall::Create, Misdeed::AnswerNull) ? S_OK : s_object.QueryInterface(riid, pp);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

CForeignClass s_class;

} // namespace

IUnknown* ForeignClass()
{
    return &s_class;
}

void SetMisdeed(ForeignCall call, Misdeed misdeed)
{
    s_call = call;
    s_misdeed = misdeed;
}
