// DOM objects that pass their calls on to real ones, but for the calls that are to fail.
#pragma once

#include "ovCore/OvBstr.h"
#include "ovCore/OvComPtr.h"
#include "OvPlatform.h"

#include <set>
#include <string>

/// Which calls of all proxies fail, and how. Cleared when it ends; one at a time.
class CFailingCalls
{
public:
    /// @param calls          the operations' names. @param hr  their result.
    /// @param szDescription  of the error object that they leave; null for none.
    CFailingCalls(const std::set<std::string>& calls, HRESULT hr, const wchar_t* szDescription)
        : m_calls(calls), m_hr(hr), m_szDescription(szDescription)
    {
        s_pCurrent = this;
    }
    ~CFailingCalls()
    {
        s_pCurrent = nullptr;
        ::SetErrorInfo(0, nullptr);
    }
    CFailingCalls(const CFailingCalls&) = delete;
    CFailingCalls& operator=(const CFailingCalls&) = delete;

    /// The work's result, or that of the failure.
    template <class Work>
    static HRESULT Run(const char* szCall, Work&& work)
    {
        if (s_pCurrent == nullptr || s_pCurrent->m_calls.count(szCall) == 0)
            return work();
        s_pCurrent->LeaveErrorObject();
        return s_pCurrent->m_hr;
    }

private:
    void LeaveErrorObject() const
    {
        if (m_szDescription == nullptr)
            return;
        COvComPtr<ICreateErrorInfo> spCreate;
        COvComPtr<IErrorInfo> spInfo;
        ::CreateErrorInfo(spCreate.Receive());
        spCreate->SetDescription(COvBstr(m_szDescription).Get());
        spCreate->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(spInfo.Receive()));
        ::SetErrorInfo(0, spInfo.Get());
    }

    static inline CFailingCalls* s_pCurrent = nullptr;
    const std::set<std::string> m_calls;
    const HRESULT m_hr;
    const wchar_t* const m_szDescription;
};

/// Proxies that are alive.
inline unsigned g_nProxies = 0;

/// The identity and the life of a proxy. The error objects are those of the real object's.
template <class Interface, const IID& iid>
class CProxy : public Interface
{
public:
    explicit CProxy(COvComPtr<Interface> spReal) : m_spReal(std::move(spReal)) { ++g_nProxies; }
    virtual ~CProxy() { --g_nProxies; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override
    {
        return CFailingCalls::Run("QueryInterface", [&]() -> HRESULT {
            if (riid == IID_ISupportErrorInfo)
                return m_spReal->QueryInterface(riid, ppvObject);
            if (!Answers(riid))
                return *ppvObject = nullptr, E_NOINTERFACE;
            *ppvObject = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        });
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG nLeft = --m_nReferences;
        if (nLeft == 0)
            delete this;
        return nLeft;
    }

protected:
    virtual bool Answers(REFIID riid) const { return riid == IID_IUnknown || riid == iid; }

    COvComPtr<Interface> m_spReal;

private:
    ULONG m_nReferences = 0;
};

/// Makes a proxy for what a call has put into *pp; null stays null.
template <class Proxy, class Interface>
HRESULT Wrapped(HRESULT hr, Interface** pp)
{
    COvComPtr<Interface> spReal;
    spReal.Attach(*pp);
    *pp = nullptr;
    if (spReal)
        *pp = COvComPtr<Interface>(new Proxy(std::move(spReal))).Detach();
    return hr;
}

class CListProxy final : public CProxy<IXMLDOMNodeList, IID_IXMLDOMNodeList>
{
public:
    using CProxy::CProxy;

    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** pp) override
    {
        return CFailingCalls::Run("nextNode", [&] { return m_spReal->nextNode(pp); });
    }
    HRESULT STDMETHODCALLTYPE get_item(LONG n, IXMLDOMNode** pp) override { return m_spReal->get_item(n, pp); }
    HRESULT STDMETHODCALLTYPE get_length(LONG* p) override { return m_spReal->get_length(p); }
    HRESULT STDMETHODCALLTYPE reset() override { return m_spReal->reset(); }
};

class CNodeProxy;

class CMapProxy final : public CProxy<IXMLDOMNamedNodeMap, IID_IXMLDOMNamedNodeMap>
{
public:
    using CProxy::CProxy;

    HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** pp) override
    {
        return CFailingCalls::Run("getNamedItem",
                                  [&] { return Wrapped<CNodeProxy>(m_spReal->getNamedItem(name, pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE get_item(LONG n, IXMLDOMNode** pp) override { return m_spReal->get_item(n, pp); }
    HRESULT STDMETHODCALLTYPE get_length(LONG* p) override { return m_spReal->get_length(p); }
};

/// The operations that every kind of node has.
template <class Interface, const IID& iid>
class CNodeOperations : public CProxy<Interface, iid>
{
public:
    using Base = CProxy<Interface, iid>;
    using Base::Base;

    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* p) override
    {
        return CFailingCalls::Run("get_nodeName", [&] { return Real()->get_nodeName(p); });
    }
    HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* p) override
    {
        return CFailingCalls::Run("get_nodeType", [&] { return Real()->get_nodeType(p); });
    }
    /// Also takes the thread's error object away, as a call may.
    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** pp) override
    {
        ::SetErrorInfo(0, nullptr);
        return CFailingCalls::Run("get_parentNode", [&] { return Real()->get_parentNode(pp); });
    }
    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** pp) override
    {
        return CFailingCalls::Run("get_childNodes",
                                  [&] { return Wrapped<CListProxy>(Real()->get_childNodes(pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** pp) override
    {
        return CFailingCalls::Run("get_attributes", [&] { return Wrapped<CMapProxy>(Real()->get_attributes(pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** pp) override
    {
        return CFailingCalls::Run("cloneNode", [&] { return Wrapped<CNodeProxy>(Real()->cloneNode(deep, pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE get_text(BSTR* p) override
    {
        return CFailingCalls::Run("get_text", [&] { return Real()->get_text(p); });
    }
    HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* p) override
    {
        return CFailingCalls::Run("get_nodeTypedValue", [&] { return Real()->get_nodeTypedValue(p); });
    }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR* p) override
    {
        return CFailingCalls::Run("get_xml", [&] { return Real()->get_xml(p); });
    }
    HRESULT STDMETHODCALLTYPE selectNodes(BSTR pattern, IXMLDOMNodeList** pp) override
    {
        return CFailingCalls::Run("selectNodes",
                                  [&] { return Wrapped<CListProxy>(Real()->selectNodes(pattern, pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE get_baseName(BSTR* p) override
    {
        return CFailingCalls::Run("get_baseName", [&] { return Real()->get_baseName(p); });
    }
    HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* p) override { return Real()->get_nodeValue(p); }
    HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR q, IXMLDOMNode** pp) override
    {
        return Real()->selectSingleNode(q, pp);
    }
    HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* p) override { return Real()->get_namespaceURI(p); }
    HRESULT STDMETHODCALLTYPE get_prefix(BSTR* p) override { return Real()->get_prefix(p); }

protected:
    Interface* Real() const { return this->m_spReal.Get(); }

    bool Answers(REFIID riid) const override { return Base::Answers(riid) || riid == IID_IXMLDOMNode; }
};

/// An element's own operations, of a proxy that the real node gives.
class CElementProxy final : public CNodeOperations<IXMLDOMElement, IID_IXMLDOMElement>
{
public:
    using CNodeOperations::CNodeOperations;

    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* p) override { return Real()->getAttribute(name, p); }
    HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) override
    {
        return CFailingCalls::Run("removeAttribute", [&] { return Real()->removeAttribute(name); });
    }
};

class CNodeProxy final : public CNodeOperations<IXMLDOMNode, IID_IXMLDOMNode>
{
public:
    using CNodeOperations::CNodeOperations;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override
    {
        if (riid != IID_IXMLDOMElement)
            return CNodeOperations::QueryInterface(riid, ppvObject);
        COvComPtr<IXMLDOMElement> spElement;
        const HRESULT hr = Real()->QueryInterface(riid, reinterpret_cast<void**>(spElement.Receive()));
        *ppvObject = nullptr;
        if (spElement)
            *ppvObject = COvComPtr<IXMLDOMElement>(new CElementProxy(std::move(spElement))).Detach();
        return hr;
    }
};

class CParseErrorProxy final : public CProxy<IXMLDOMParseError, IID_IXMLDOMParseError>
{
public:
    using CProxy::CProxy;

    HRESULT STDMETHODCALLTYPE get_reason(BSTR* p) override
    {
        return CFailingCalls::Run("get_reason", [&] { return m_spReal->get_reason(p); });
    }
    HRESULT STDMETHODCALLTYPE get_srcText(BSTR* p) override
    {
        return CFailingCalls::Run("get_srcText", [&] { return m_spReal->get_srcText(p); });
    }
    HRESULT STDMETHODCALLTYPE get_line(LONG* p) override
    {
        const HRESULT hr = m_spReal->get_line(p);
        return CFailingCalls::Run("get_line", [&] { return hr; });
    }
    HRESULT STDMETHODCALLTYPE get_linepos(LONG* p) override { return m_spReal->get_linepos(p); }
    HRESULT STDMETHODCALLTYPE get_filepos(LONG* p) override { return m_spReal->get_filepos(p); }
    HRESULT STDMETHODCALLTYPE get_errorCode(LONG* p) override { return m_spReal->get_errorCode(p); }
    HRESULT STDMETHODCALLTYPE get_url(BSTR* p) override { return m_spReal->get_url(p); }
};

class CDocumentProxy final : public CNodeOperations<IXMLDOMDocument2, IID_IXMLDOMDocument2>
{
public:
    using CNodeOperations::CNodeOperations;

    HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* p) override
    {
        return CFailingCalls::Run("load", [&] { return Real()->load(source, p); });
    }
    HRESULT STDMETHODCALLTYPE loadXML(BSTR text, VARIANT_BOOL* p) override
    {
        return CFailingCalls::Run("loadXML", [&] { return Real()->loadXML(text, p); });
    }
    HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** pp) override
    {
        return CFailingCalls::Run("get_parseError",
                                  [&] { return Wrapped<CParseErrorProxy>(Real()->get_parseError(pp), pp); });
    }
    HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL b) override
    {
        return CFailingCalls::Run("put_preserveWhiteSpace", [&] { return Real()->put_preserveWhiteSpace(b); });
    }
    HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT value) override
    {
        return CFailingCalls::Run("setProperty", [&] { return Real()->setProperty(name, value); });
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** pp) override
    {
        return Real()->get_documentElement(pp);
    }

protected:
    bool Answers(REFIID riid) const override { return CNodeOperations::Answers(riid) || riid == IID_IXMLDOMDocument; }
};
