// Error objects, and the one that each thread holds for its caller.
#include "Platform/Automation.h"
#include "Platform/Com/ComPtr.h"
#include "Platform/Kernel/Counters.h"

#include <atomic>
#include <cwchar>
#include <new>
#include <string>

using namespace OvPlatform;

namespace
{

/// A text that may be absent.
class CErrorText
{
public:
    CErrorText() = default;
    CErrorText(const CErrorText&) = delete;
    CErrorText& operator=(const CErrorText&) = delete;
    ~CErrorText() { SysFreeString(m_bstr); }

    HRESULT Set(const OLECHAR* szText)
    {
        BSTR bstr = SysAllocString(szText);
        if (szText && !bstr)
            return E_OUTOFMEMORY;
        SysFreeString(std::exchange(m_bstr, bstr));
        return S_OK;
    }

    HRESULT Get(BSTR* pbstr) const
    {
        if (!pbstr)
            return E_INVALIDARG;
        *pbstr = m_bstr ? SysAllocStringLen(m_bstr, SysStringLen(m_bstr)) : nullptr;
        return m_bstr && !*pbstr ? E_OUTOFMEMORY : S_OK;
    }

private:
    BSTR m_bstr = nullptr;
};

template <class T>
HRESULT GetField(const T& field, T* pResult)
{
    if (!pResult)
        return E_INVALIDARG;
    *pResult = field;
    return S_OK;
}

class CErrorInfo final : public IErrorInfo, public ICreateErrorInfo
{
public:
    HRESULT QueryInterface(REFIID riid, void** ppvObject) override
    {
        if (!ppvObject)
            return E_POINTER;
        *ppvObject = nullptr;
        if (riid == IID_ICreateErrorInfo)
            *ppvObject = static_cast<ICreateErrorInfo*>(this);
        else if (riid == IID_IErrorInfo || riid == IID_IUnknown)
            *ppvObject = static_cast<IErrorInfo*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG AddRef() override { return ++m_nReferences; }

    ULONG Release() override
    {
        const ULONG nLeft = --m_nReferences;
        if (nLeft == 0)
            delete this;
        return nLeft;
    }

    HRESULT GetGUID(GUID* pGUID) override { return GetField(m_guid, pGUID); }
    HRESULT GetSource(BSTR* pBstrSource) override { return m_source.Get(pBstrSource); }
    HRESULT GetDescription(BSTR* pBstrDescription) override { return m_description.Get(pBstrDescription); }
    HRESULT GetHelpFile(BSTR* pBstrHelpFile) override { return m_helpFile.Get(pBstrHelpFile); }
    HRESULT GetHelpContext(DWORD* pdwHelpContext) override { return GetField(m_dwHelpContext, pdwHelpContext); }

    HRESULT SetGUID(REFGUID rguid) override
    {
        m_guid = rguid;
        return S_OK;
    }

    HRESULT SetSource(LPOLESTR szSource) override { return m_source.Set(szSource); }
    HRESULT SetDescription(LPOLESTR szDescription) override { return m_description.Set(szDescription); }
    HRESULT SetHelpFile(LPOLESTR szHelpFile) override { return m_helpFile.Set(szHelpFile); }

    HRESULT SetHelpContext(DWORD dwHelpContext) override
    {
        m_dwHelpContext = dwHelpContext;
        return S_OK;
    }

private:
    ~CErrorInfo() = default;

    CCountedComObject m_counted;
    std::atomic<ULONG> m_nReferences{ 1 };
    GUID m_guid = GUID_NULL;
    CErrorText m_source;
    CErrorText m_description;
    CErrorText m_helpFile;
    DWORD m_dwHelpContext = 0;
};

/// The calling thread's error object; let go when the thread ends.
CComPtr<IErrorInfo>& ThreadError()
{
    thread_local CComPtr<IErrorInfo> t_pError;
    return t_pError;
}

} // namespace

HRESULT CreateErrorInfo(ICreateErrorInfo** pperrinfo)
{
    if (!pperrinfo)
        return E_INVALIDARG;
    *pperrinfo = new (std::nothrow) CErrorInfo;
    return *pperrinfo ? S_OK : E_OUTOFMEMORY;
}

HRESULT SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo)
{
    if (dwReserved != 0)
        return E_INVALIDARG;
    ThreadError() = CComPtr<IErrorInfo>(perrinfo);
    return S_OK;
}

HRESULT GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo)
{
    if (dwReserved != 0 || !pperrinfo)
        return E_INVALIDARG;
    *pperrinfo = ThreadError().Detach();
    return *pperrinfo ? S_OK : S_FALSE;
}
