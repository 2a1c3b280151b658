#include "Platform/Com/ClassTable.h"
#include "Platform/Dom/NodeObject.h"

namespace OvPlatform::Dom
{

namespace
{

[[noreturn]] void RefuseProperty(const std::wstring& wzName)
{
    throw CFailure{ E_FAIL, L"This property, type or value is not supported: " + wzName };
}

class CDocument final : public CNodeObject<IXMLDOMDocument2>
{
public:
    explicit CDocument(const CTreePtr& spTree) : CNodeObject(spTree, spTree->Document()) {}

    HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** DOMElement) override
    {
        return Answer([&] {
            Output(DOMElement);
            IXMLDOMNode* pElement = nullptr;
            const HRESULT hr = GiveNode(xmlDocGetRootElement(Tree()->m_spDoc.get()), pElement);
            *DOMElement = static_cast<IXMLDOMElement*>(pElement); // the object of an element is one
            return hr;
        });
    }

    HRESULT STDMETHODCALLTYPE load(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) override
    {
        return Answer([&] {
            Output(isSuccessful);
            if (xmlSource.vt != VT_BSTR)
                throw CFailure{ E_INVALIDARG, L"The source is not a path." };
            const std::wstring wzPath = Input(xmlSource.bstrVal);
            CParseFault fault;
            const std::optional<std::wstring> text = ReadTextFile(wzPath, fault);
            CTreePtr spTree = text ? Parse(*text, Tree()->m_spSettings, fault) : nullptr;
            fault.m_wzUrl = wzPath;
            return TakeOver(std::move(spTree), std::move(fault), *isSuccessful);
        });
    }

    HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** errorObj) override
    {
        return Answer([&] {
            Output(errorObj);
            *errorObj = NewParseError(m_fault);
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE loadXML(BSTR bstrXML, VARIANT_BOOL* isSuccessful) override
    {
        return Answer([&] {
            Output(isSuccessful);
            CParseFault fault;
            CTreePtr spTree = Parse({ bstrXML, ::SysStringLen(bstrXML) }, Tree()->m_spSettings, fault);
            return TakeOver(std::move(spTree), std::move(fault), *isSuccessful);
        });
    }

    HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) override
    {
        Tree()->m_spSettings->m_bPreserveWhiteSpace = isPreserving != VARIANT_FALSE;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT value) override
    {
        return Answer([&] {
            const std::wstring wzName = name == nullptr ? std::wstring() : Input(name);
            if (value.vt == VT_BOOL)
                SetFlag(wzName, value.boolVal != VARIANT_FALSE);
            else if (value.vt == VT_BSTR)
                SetText(wzName, std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal)));
            else
                RefuseProperty(wzName);
            return S_OK;
        });
    }

private:
    bool Offers(REFIID riid) const override
    {
        return riid == IID_IXMLDOMDocument || riid == IID_IXMLDOMDocument2 || CNodeObject::Offers(riid);
    }

    /// Makes the outcome of a load the document's content; null is an empty document.
    HRESULT TakeOver(CTreePtr spTree, CParseFault fault, VARIANT_BOOL& bSuccessful)
    {
        const bool bLoaded = spTree != nullptr;
        if (!bLoaded)
            spTree = NewTree(Tree()->m_spSettings);
        const xmlNodePtr pDocument = spTree->Document();
        MoveTo(std::move(spTree), pDocument);
        m_fault = std::move(fault);
        bSuccessful = bLoaded ? VARIANT_TRUE : VARIANT_FALSE;
        return bLoaded ? S_OK : S_FALSE;
    }

    void SetFlag(const std::wstring& wzName, bool bValue) const
    {
        const bool bAccepted = (wzName == L"NewParser" && Tree()->m_spSettings->m_nGeneration != 3) ||
                               (wzName == L"ProhibitDTD" && bValue);
        if (!bAccepted)
            RefuseProperty(wzName);
    }

    void SetText(const std::wstring& wzName, const std::wstring& wzValue) const
    {
        CSettings& settings = *Tree()->m_spSettings;
        if (wzName == L"SelectionLanguage" && wzValue == L"XPath")
            settings.m_bXPath = true;
        else if (wzName == L"SelectionNamespaces")
            settings.m_namespaces = ParseDeclarations(wzValue);
        else
            RefuseProperty(wzName);
    }

    CParseFault m_fault;
};

template <unsigned nGeneration>
HRESULT CreateDocument(REFIID riid, void** ppvObject)
{
    return Answer([&] {
        IXMLDOMNode* const pDocument = NewDocumentObject(NewTree(std::make_shared<CSettings>(nGeneration)));
        const HRESULT hr = pDocument->QueryInterface(riid, ppvObject);
        pDocument->Release();
        return hr;
    });
}

const CInprocClass s_generation3(CLSID_DOMDocument30, &CreateDocument<3>);
const CInprocClass s_generation4(CLSID_DOMDocument40, &CreateDocument<4>);
const CInprocClass s_generation6(CLSID_DOMDocument60, &CreateDocument<6>);

} // namespace

IXMLDOMNode* NewDocumentObject(const CTreePtr& spTree)
{
    return new CDocument(spTree);
}

} // namespace OvPlatform::Dom
