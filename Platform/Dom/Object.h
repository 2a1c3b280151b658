// What the COM objects of the DOM have in common.
#pragma once

#include "Platform/Dom/Tree.h"

namespace OvPlatform::Dom
{

/// A counted object with one reference at first, which ends with the last.
template <class Interface>
class CObject : public Interface, public ISupportErrorInfo
{
public:
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override
    {
        if (ppvObject == nullptr)
            return E_POINTER;
        *ppvObject = nullptr;
        if (riid == IID_IUnknown || Offers(riid))
            *ppvObject = static_cast<Interface*>(this);
        else if (riid == IID_ISupportErrorInfo)
            *ppvObject = static_cast<ISupportErrorInfo*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }

    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG nLeft = --m_nReferences;
        if (nLeft == 0)
            delete this;
        return nLeft;
    }

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override { return Offers(riid) ? S_OK : S_FALSE; }

protected:
    CObject() = default;
    virtual ~CObject() = default;

private:
    /// Whether riid is the interface or one that it derives from, IUnknown aside.
    virtual bool Offers(REFIID riid) const = 0;

    std::atomic<ULONG> m_nReferences{ 1 };
    const CCountedComObject m_counted;
};

/// An output, emptied first. Throws for null.
template <class T>
T& Output(T* pOutput)
{
    if (pOutput == nullptr)
        throw CFailure{ E_INVALIDARG, L"The parameter is incorrect." };
    *pOutput = T();
    return *pOutput;
}

BSTR NewBstr(const std::wstring& wzText);

/// Puts a text into an output; none is S_FALSE.
HRESULT Give(const std::optional<std::wstring>& text, BSTR* pbstr);

/// The same as a value; none is VT_NULL and S_FALSE.
HRESULT Give(const std::optional<std::wstring>& text, VARIANT* pValue);

/// A text that a caller passed. Throws for null.
std::wstring Input(BSTR bstr);

} // namespace OvPlatform::Dom
