#include "ovCore/OvXmlDocument.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "OVTemplates.h"

#include <string_view>
#include <utility>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvXmlDocument";

struct CGeneration
{
    LONG m_nVersion;
    const CLSID* m_pClass;
};

const CGeneration s_generations[] = { // the order of preference
    { XmlParser6, &CLSID_DOMDocument60 },
    { XmlParser4, &CLSID_DOMDocument40 },
    { XmlParser3, &CLSID_DOMDocument30 }
};

const wchar_t* VersionName(LONG nVersion)
{
    switch (nVersion)
    {
    case XmlParser6:
        return L"DOM 6";
    case XmlParser4:
        return L"DOM 4";
    case XmlParser3:
        return L"DOM 3";
    case XmlParserBest:
        return L"Best DOM version";
    default:
        return L"Unknown version";
    }
}

/// What IXMLDOMParseError tells. The numbers are 0 where it does not.
struct CParseError
{
    std::wstring m_wzReason;
    std::wstring m_wzSource;
    LONG m_nFilePos = 0;
    LONG m_nLine = 0;
    LONG m_nLinePos = 0;
};

using ErrorText = HRESULT (STDMETHODCALLTYPE IXMLDOMParseError::*)(BSTR*);
using ErrorNumber = HRESULT (STDMETHODCALLTYPE IXMLDOMParseError::*)(LONG*);

std::wstring ReadErrorText(IXMLDOMParseError* pError, ErrorText pGetter, const wchar_t* szEmpty,
                           const wchar_t* szFailed)
{
    COvBstr strText;
    if (FAILED((pError->*pGetter)(strText.Receive())))
        return szFailed;
    const std::wstring wzText = COvStringUtil::FromBSTR(strText);
    return wzText.empty() ? szEmpty : wzText;
}

LONG ReadErrorNumber(IXMLDOMParseError* pError, ErrorNumber pGetter)
{
    LONG nValue = 0;
    return (pError->*pGetter)(&nValue) == S_OK ? nValue : 0;
}

CParseError ReadParseError(IXMLDOMNode* pNode)
{
    CParseError result;
    COvComPtr<IXMLDOMDocument> spDoc;
    COvComPtr<IXMLDOMParseError> spError;
    if (pNode == nullptr ||
        FAILED(pNode->QueryInterface(IID_IXMLDOMDocument, reinterpret_cast<void**>(spDoc.Receive()))) ||
        FAILED(spDoc->get_parseError(spError.Receive())) || !spError)
    {
        result.m_wzReason = L"Unable to retrieve the XML parse error(s).";
        return result;
    }
    IXMLDOMParseError* const pError = spError.Get();
    result.m_wzReason =
        ReadErrorText(pError, &IXMLDOMParseError::get_reason, L"No reason available.", L"Unable to retrieve reason.");
    result.m_wzSource =
        ReadErrorText(pError, &IXMLDOMParseError::get_srcText, L"No source available.", L"Unable to retrieve source.");
    result.m_nFilePos = ReadErrorNumber(pError, &IXMLDOMParseError::get_filepos);
    result.m_nLine = ReadErrorNumber(pError, &IXMLDOMParseError::get_line);
    result.m_nLinePos = ReadErrorNumber(pError, &IXMLDOMParseError::get_linepos);
    return result;
}

std::wstring OrNone(const std::wstring& wzText)
{
    return wzText.empty() ? L"n/a" : wzText;
}

/// Where the text goes on after something that begins at n; its end when that has none.
size_t Behind(std::wstring_view text, size_t n, std::wstring_view end)
{
    const size_t nEnd = text.find(end, n);
    return nEnd == std::wstring_view::npos ? text.size() : nEnd + end.size();
}

/// Whether a document type stands where one may: before the first element, among comments and instructions.
bool HasDocumentType(std::wstring_view text)
{
    const std::wstring_view comment = L"<!--";
    const std::wstring_view documentType = L"<!DOCTYPE";
    size_t n = 0;
    while ((n = text.find_first_not_of(L" \t\r\n\xFEFF", n)) < text.size())
    {
        const std::wstring_view rest = text.substr(n);
        if (rest.substr(0, comment.size()) == comment)
            n = Behind(text, n + comment.size(), L"-->");
        else if (rest.substr(0, 2) == L"<?")
            n = Behind(text, n, L"?>");
        else
            return rest.substr(0, documentType.size()) == documentType;
    }
    return false;
}

/// What generation 6 of the parser reports for a document type.
CParseError DocumentTypeRefused()
{
    CParseError result;
    result.m_wzReason = L"DTD is prohibited.";
    return result;
}

bool IsLoaded(HRESULT hr, VARIANT_BOOL bLoaded)
{
    return SUCCEEDED(hr) && hr != S_FALSE && bLoaded != VARIANT_FALSE;
}

COvEvidence ComCallFailed(const wchar_t* szMethod)
{
    return COvEvidence(L"Msg", L"A COM method call failed.") + COvEvidence(L"Method", szMethod);
}

} // namespace

COvXmlDocument::COvXmlDocument(IXMLDOMNode* node, LONG version) : COvXmlNode(node), m_nParserVersion(version) {}

void COvXmlDocument::Create()
{
    OV_SCOPE(L"COvXmlDocument::Create");
    COvXmlDocument created(nullptr, m_nParserVersion);
    const COvComPtr<IXMLDOMDocument> spDoc = created.CreateDoc();
    QueryInterfaceChecked(spDoc.Get(), created.m_spNode, IID_IXMLDOMNode, L"IXMLDOMNode");
    created.ApplyParserProperties();
    *this = std::move(created);
}

COvComPtr<IXMLDOMDocument> COvXmlDocument::CreateDoc()
{
    OV_SCOPE(L"COvXmlDocument::CreateDoc");
    HRESULT hr = E_FAIL;
    for (const CGeneration& generation : s_generations)
    {
        if (m_nParserVersion != generation.m_nVersion && m_nParserVersion != XmlParserBest)
            continue;
        COvComPtr<IUnknown> spUnknown;
        hr = ::CoCreateInstance(*generation.m_pClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                reinterpret_cast<void**>(spUnknown.Receive()));
        if (FAILED(hr))
            continue;
        COvComPtr<IXMLDOMDocument> spDoc;
        QueryInterfaceChecked(spUnknown.Get(), spDoc, IID_IXMLDOMDocument, L"IXMLDOMDocument");
        m_nParserVersion = generation.m_nVersion;
        return spDoc;
    }
    OvRaise(E_FAIL, s_szSource, __LINE__,
            COvEvidence(L"Info Msg", L"Unable to CoCreate the XML DOM.") + COvEvidence(L"hr", hr, true) +
                COvEvidence(L"Parser version", VersionName(m_nParserVersion)));
}

void COvXmlDocument::SetProperty(BSTR bstrName, const VARIANT& value)
{
    OV_SCOPE(L"COvXmlDocument::SetProperty");
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMDocument2> spDoc;
    QueryInterfaceChecked(m_spNode.Get(), spDoc, IID_IXMLDOMDocument2, L"IXMLDOMDocument2");
    const HRESULT hr = spDoc->setProperty(bstrName, value);
    if (FAILED(hr))
        OvRaise(hr, s_szSource, __LINE__,
                ComCallFailed(L"IXMLDOMDocument2::setProperty") +
                    COvEvidence(L"Parser version", VersionName(m_nParserVersion)) +
                    COvEvidence(L"bstrName", static_cast<const wchar_t*>(bstrName)) + COvEvidence(L"hr", hr, true) +
                    COvEvidence(L"Error Object Info", spDoc.Get(), IID_IXMLDOMDocument2));
}

void COvXmlDocument::PreserveWhitespace()
{
    OV_SCOPE(L"COvXmlDocument::PreserveWhitespace");
    const COvComPtr<IXMLDOMDocument> spDoc = QueryDocument();
    const HRESULT hr = spDoc->put_preserveWhiteSpace(VARIANT_TRUE);
    if (FAILED(hr))
        OvRaise(hr, s_szSource, __LINE__,
                ComCallFailed(L"IXMLDOMDocument::put_preserveWhiteSpace") +
                    COvEvidence(L"Error Object Info", spDoc.Get(), IID_IXMLDOMDocument));
}

bool COvXmlDocument::LoadDoc(BSTR bstrXml, bool bThrow)
{
    OV_SCOPE(L"COvXmlDocument::LoadDoc");
    const COvComPtr<IXMLDOMDocument> spDoc = QueryDocument();
    m_bTypeRefused = m_nParserVersion != XmlParser6 && HasDocumentType({ bstrXml, ::SysStringLen(bstrXml) });
    VARIANT_BOOL bLoaded = VARIANT_FALSE;
    const HRESULT hr = m_bTypeRefused ? S_FALSE : spDoc->loadXML(bstrXml, &bLoaded);
    if (IsLoaded(hr, bLoaded))
        return true;
    if (bThrow)
        RaiseLoadFailure(hr, __LINE__, spDoc.Get(),
                         ComCallFailed(L"IXMLDOMDocument::loadXML()") +
                             COvEvidence(L"pDoc", PointerValue(spDoc.Get())) +
                             COvEvidence(L"bstrXml", static_cast<const wchar_t*>(bstrXml)));
    return false;
}

bool COvXmlDocument::LoadDoc(const VARIANT& source, bool bThrow)
{
    OV_SCOPE(L"COvXmlDocument::LoadDoc");
    const COvComPtr<IXMLDOMDocument> spDoc = QueryDocument();
    m_bTypeRefused = false;
    VARIANT_BOOL bLoaded = VARIANT_FALSE;
    const HRESULT hr = spDoc->load(source, &bLoaded);
    if (IsLoaded(hr, bLoaded))
        return true;
    if (bThrow)
        RaiseLoadFailure(hr, __LINE__, spDoc.Get(),
                         ComCallFailed(L"IXMLDOMDocument::load()") + COvEvidence(L"vSource.vt", source.vt) +
                             COvEvidence(L"pDoc", PointerValue(spDoc.Get())));
    return false;
}

bool COvXmlDocument::LoadXML(BSTR strSource, bool bIsFile, bool bThrow, bool bPreserveWhitespace)
{
    OV_SCOPE(L"COvXmlDocument::LoadXML");
    if (!m_spNode)
        Create();
    if (bPreserveWhitespace)
        PreserveWhitespace();
    return bIsFile ? LoadDoc(_variant_t(static_cast<const wchar_t*>(strSource)), bThrow) : LoadDoc(strSource, bThrow);
}

std::wstring COvXmlDocument::GetParseError() const
{
    OV_SCOPE(L"COvXmlDocument::GetParseError");
    const CParseError error = m_bTypeRefused ? DocumentTypeRefused() : ReadParseError(m_spNode.Get());
    return L"\nFile Pos:" + std::to_wstring(error.m_nFilePos) + L"\nLine: " + std::to_wstring(error.m_nLine) +
           L"   Line Pos: " + std::to_wstring(error.m_nLinePos) + L"\n\nReason:\n" + OrNone(error.m_wzReason) +
           L"\nSource:\n" + OrNone(error.m_wzSource) + L"\n\n";
}

void COvXmlDocument::AddDiagnosticEvidence(COvEvidence& evidence) const noexcept
{
    try
    {
        evidence += COvEvidence(L"XML Parse Error", GetParseError());
    }
    catch (...)
    {
        // The failure that is being reported matters more than the parser's opinion.
    }
}

COvComPtr<IXMLDOMDocument> COvXmlDocument::QueryDocument() const
{
    RequireNode(__LINE__);
    COvComPtr<IXMLDOMDocument> spDoc;
    QueryInterfaceChecked(m_spNode.Get(), spDoc, IID_IXMLDOMDocument, L"IXMLDOMDocument");
    return spDoc;
}

void COvXmlDocument::ApplyParserProperties()
{
    if (m_nParserVersion == XmlParser3)
        SetProperty(COvBstr(L"SelectionLanguage").Get(), _variant_t(L"XPath"));
    else
        SetProperty(COvBstr(L"NewParser").Get(), _variant_t(true));
}

void COvXmlDocument::RaiseLoadFailure(HRESULT hr, LONG nLine, IXMLDOMDocument* pDoc, const COvEvidence& call) const
{
    const COvEvidence errorInfo(L"Error Object Info", pDoc, IID_IXMLDOMDocument); // first: as in COvXmlNode
    COvEvidence evidence = call;
    AddDiagnosticEvidence(evidence);
    OvRaise(hr, s_szSource, nLine, evidence + COvEvidence(L"hr", hr, true) + errorInfo);
}
