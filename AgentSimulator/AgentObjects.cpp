#include "AgentSimulator/AgentObjects.h"

#include "OvComPtr.h"

namespace
{

/// Counts the references to an object of one interface besides IUnknown, and the object itself among the live ones.
template <class Interface>
class CCounted : public Interface
{
public:
    explicit CCounted(std::shared_ptr<CAgentState> pState) : m_pState(std::move(pState)) {}
    CCounted(const CCounted&) = delete;
    CCounted& operator=(const CCounted&) = delete;

    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }

    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG nLeft = --m_nReferences;
        if (nLeft == 0)
            delete this;
        return nLeft;
    }

protected:
    virtual ~CCounted() = default;

    HRESULT Answer(bool bHasInterface, void** ppvObject)
    {
        *ppvObject = bHasInterface ? static_cast<Interface*>(this) : nullptr;
        if (bHasInterface)
            AddRef();
        return bHasInterface ? S_OK : E_NOINTERFACE;
    }

    const std::shared_ptr<CAgentState> m_pState;

private:
    std::atomic<ULONG> m_nReferences{ 1 };
};

class CErrorObject final : public CCounted<IErrorInfo>
{
public:
    CErrorObject(std::shared_ptr<CAgentState> pState, const CAgentErrorObject& content)
        : CCounted(std::move(pState)), m_content(content)
    {
        ++m_pState->m_nLiveObjects;
    }
    ~CErrorObject() override { --m_pState->m_nLiveObjects; }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppvObject) override
    {
        return Answer(IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IErrorInfo), ppvObject);
    }

    STDMETHODIMP GetDescription(BSTR* pBstrDescription) override
    {
        const bool bHasText = SUCCEEDED(m_content.hrDescription) && m_content.description;
        *pBstrDescription = bHasText ? ::SysAllocString(m_content.description->c_str()) : nullptr;
        return m_content.hrDescription;
    }

    STDMETHODIMP GetGUID(GUID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSource(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpContext(DWORD*) override { return E_NOTIMPL; }

private:
    const CAgentErrorObject m_content;
};

class CServiceObject final : public CCounted<ITrevokPatchApi>
{
public:
    explicit CServiceObject(std::shared_ptr<CAgentState> pState) : CCounted(std::move(pState))
    {
        ++m_pState->m_nLiveObjects;
    }
    ~CServiceObject() override { --m_pState->m_nLiveObjects; }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppvObject) override
    {
        if (!IsEqualIID(riid, IID_ITrevokPatchApi))
            return Answer(IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch), ppvObject);
        *ppvObject = nullptr;
        return m_pState->RunCall(AgentCall::Query, 0, m_nLife, [&] { return Answer(true, ppvObject); });
    }

    STDMETHODIMP SetState(LONG stateId, VARIANT value) override
    {
        return m_pState->RunCall(AgentCall::SetState, stateId, m_nLife, [&] { return TakeSettings(stateId, value); });
    }

    STDMETHODIMP GetState(LONG stateId, VARIANT* pValue) override
    {
        return m_pState->RunCall(AgentCall::GetState, stateId, m_nLife,
                                 [&] { return m_pState->ReadValue(stateId, pValue); });
    }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override
    {
        return E_NOTIMPL;
    }

private:
    HRESULT TakeSettings(LONG stateId, const VARIANT& value)
    {
        if (stateId != StateSettingsPolicy)
            return E_INVALIDARG;
        if (value.vt != VT_BSTR)
            return DISP_E_TYPEMISMATCH;
        m_pState->AddSettings(value.bstrVal == nullptr ? std::wstring()
                                                       : std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal)));
        return S_OK;
    }

    const unsigned m_nLife = m_pState->GetLife();
};

class CClassObject final : public CCounted<IClassFactory>
{
public:
    using CCounted::CCounted;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppvObject) override
    {
        return Answer(IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory), ppvObject);
    }

    STDMETHODIMP CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) override
    {
        *ppvObject = nullptr;
        if (pUnkOuter != nullptr)
            return CLASS_E_NOAGGREGATION;
        return m_pState->RunCall(AgentCall::Create, 0, 0, [&] { return Create(riid, ppvObject); });
    }

    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    HRESULT Create(REFIID riid, void** ppvObject)
    {
        COvComPtr<CServiceObject> spObject;
        spObject.Attach(new CServiceObject(m_pState));
        return spObject->QueryInterface(riid, ppvObject);
    }
};

} // namespace

IUnknown* MakeClassObject(const std::shared_ptr<CAgentState>& pState)
{
    return new CClassObject(pState);
}

void LeaveErrorObject(CAgentState& state, const CAgentErrorObject& content)
{
    COvComPtr<IErrorInfo> spErrorInfo;
    spErrorInfo.Attach(new CErrorObject(state.shared_from_this(), content));
    ::SetErrorInfo(0, spErrorInfo.Get());
}
