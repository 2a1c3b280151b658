#include "Platform/Dom/ParseError.h"

#include "Platform/Dom/Object.h"
#include "Platform/Text/Text.h"

#include <algorithm>
#include <cstring>

namespace OvPlatform::Dom
{

namespace
{

struct CReason
{
    int m_nCode;
    uint32_t m_nResult;
    const wchar_t* m_szSentence; ///< {1} and {2} stand for the names; null for the library's words
};

// The platform's codes and sentences.
const CReason s_rootless = { XML_ERR_DOCUMENT_EMPTY, 0xC00CE558, L"XML document must have a top level element." };
const CReason s_atTopLevel = { XML_ERR_DOCUMENT_END, 0xC00CE556, L"Invalid at the top level of the document." };
const CReason s_manyRoots = { XML_ERR_DOCUMENT_END, 0xC00CE555,
                              L"Only one top level element is allowed in an XML document." };
const CReason s_other = { 0, 0x80004005, nullptr };

const CReason s_reasons[] = {
    { s_nDoctype, 0xC00CE584, L"DTD is prohibited." },
    { s_nTooManyAttributes, 0x80004005, L"A start tag has too many attributes." },
    { s_nTooManyNamespaces, 0x80004005, L"Too many namespace declarations are in scope." },
    { s_nTextTooLong, 0x80004005, L"A text is too long." },
    { XML_ERR_INTERNAL_ERROR, 0x80004005, L"The text exceeds a limit of the parser." }, // its depth, for instance
    { XML_ERR_INVALID_CHAR, 0xC00CE508, L"An invalid character was found in text content." },
    { XML_ERR_ENTITYREF_SEMICOL_MISSING, 0xC00CE50D, L"A semi colon character was expected." },
    { XML_ERR_UNDECLARED_ENTITY, 0x80004005, L"Reference to undefined entity '{1}'." },
    { XML_ERR_LT_IN_ATTRIBUTE, 0xC00CE506, L"The character '<' cannot be used in an attribute value." },
    { XML_ERR_ATTRIBUTE_NOT_STARTED, 0xC00CE502,
      L"A string literal was expected, but no opening quote character was found." },
    { XML_ERR_ATTRIBUTE_WITHOUT_VALUE, 0xC00CE501, L"Missing equals sign between attribute and attribute value." },
    { XML_ERR_ATTRIBUTE_REDEFINED, 0xC00CE554, L"Duplicate attribute." },
    { XML_NS_ERR_ATTRIBUTE_REDEFINED, 0xC00CE554, L"Duplicate attribute." },
    { XML_ERR_HYPHEN_IN_COMMENT, 0xC00CE503, L"Incorrect syntax was used in a comment." },
    { XML_ERR_SPACE_REQUIRED, 0xC00CE509, L"Required white space was missing." },
    { XML_ERR_GT_REQUIRED, 0xC00CE50A, L"The character '>' was expected." },
    { XML_ERR_TAG_NAME_MISMATCH, 0xC00CE56D, L"End tag '{2}' does not match the start tag '{1}'." },
    { XML_ERR_TAG_NOT_FINISHED, 0xC00CE553, L"The following tags were not closed: {1}." },
    { XML_NS_ERR_UNDEFINED_NAMESPACE, 0xC00CE01D, L"Reference to undeclared namespace prefix: '{1}'." }
};

void Replace(std::wstring& wzText, std::wstring_view mark, const std::wstring& wzReplacement)
{
    const size_t nAt = wzText.find(mark);
    if (nAt != std::wstring::npos)
        wzText.replace(nAt, mark.size(), wzReplacement);
}

/// The library has one code for everything that is wrong in front of the root, and one for everything behind it.
const CReason& ReasonOf(const CRawFault& raw, std::wstring_view text)
{
    const std::wstring_view rest = text.substr(std::min(raw.m_nPosition, text.size()));
    if (raw.m_nCode == XML_ERR_DOCUMENT_EMPTY)
        return rest.find_first_not_of(s_blanks) == std::wstring_view::npos ? s_rootless : s_atTopLevel;
    if (raw.m_nCode == XML_ERR_DOCUMENT_END)
        return rest.substr(0, 1) == L"<" && rest.substr(0, 2) != L"</" ? s_manyRoots : s_atTopLevel;
    const auto pReason = std::find_if(std::begin(s_reasons), std::end(s_reasons),
                                      [&](const CReason& reason) { return reason.m_nCode == raw.m_nCode; });
    return pReason == std::end(s_reasons) ? s_other : *pReason;
}

std::wstring Sentence(const CReason& reason, const CRawFault& raw)
{
    std::wstring wzSentence = WideFromUtf8(raw.m_szMessage);
    if (reason.m_szSentence != nullptr)
        wzSentence = reason.m_szSentence;
    while (!wzSentence.empty() && wzSentence.back() == L'\n')
        wzSentence.pop_back();
    Replace(wzSentence, L"{1}", WideFromUtf8(raw.m_szFirst));
    Replace(wzSentence, L"{2}", WideFromUtf8(raw.m_szSecond));
    return wzSentence + L"\r\n";
}

/// Lines end with LF, CR or both.
void Locate(std::wstring_view text, size_t nPosition, CParseFault& fault)
{
    size_t nLineStart = 0;
    LONG nLine = 1;
    for (size_t i = 0; i < nPosition; ++i)
    {
        const bool bBreak = text[i] == L'\n' || (text[i] == L'\r' && (i + 1 >= text.size() || text[i + 1] != L'\n'));
        if (!bBreak)
            continue;
        nLineStart = i + 1;
        ++nLine;
    }
    const std::wstring_view line = text.substr(nLineStart);
    fault.m_wzSource = line.substr(0, line.find_first_of(L"\r\n"));
    fault.m_nLine = nLine;
    fault.m_nLinePos = static_cast<LONG>(nPosition - nLineStart) + 1;
    fault.m_nFilePos = static_cast<LONG>(nPosition);
}

class CParseError final : public CObject<IXMLDOMParseError>
{
public:
    explicit CParseError(const CParseFault& fault) : m_fault(fault) {}

    HRESULT STDMETHODCALLTYPE get_errorCode(LONG* errorCode) override { return GiveNumber(m_fault.m_hr, errorCode); }
    HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) override { return GiveText(m_fault.m_wzUrl, urlString); }
    HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) override { return GiveText(m_fault.m_wzReason, reason); }
    HRESULT STDMETHODCALLTYPE get_srcText(BSTR* source) override { return GiveText(m_fault.m_wzSource, source); }
    HRESULT STDMETHODCALLTYPE get_line(LONG* line) override { return GiveNumber(m_fault.m_nLine, line); }
    HRESULT STDMETHODCALLTYPE get_linepos(LONG* linePos) override { return GiveNumber(m_fault.m_nLinePos, linePos); }
    HRESULT STDMETHODCALLTYPE get_filepos(LONG* filePos) override { return GiveNumber(m_fault.m_nFilePos, filePos); }

private:
    bool Offers(REFIID riid) const override { return riid == IID_IXMLDOMParseError; }

    static HRESULT GiveNumber(LONG nValue, LONG* pnValue)
    {
        return Answer([&] {
            Output(pnValue) = nValue;
            return S_OK;
        });
    }

    static HRESULT GiveText(const std::wstring& wzText, BSTR* pbstrText)
    {
        return Answer([&] { return Give(wzText.empty() ? std::nullopt : std::optional(wzText), pbstrText); });
    }

    const CParseFault m_fault;
};

} // namespace

bool IsTextTooLong(const xmlError& error)
{
    return error.message != nullptr && std::strstr(error.message, "huge text node") != nullptr;
}

CRawFault NewRawFault(const xmlError& error, size_t nPosition)
{
    return { IsTextTooLong(error) ? s_nTextTooLong : error.code, AsText(AsXml(error.str1)), AsText(AsXml(error.str2)),
             AsText(AsXml(error.message)), nPosition };
}

CParseFault Describe(const CRawFault& raw, std::wstring_view text)
{
    const CReason& reason = ReasonOf(raw, text);
    CParseFault fault;
    fault.m_hr = static_cast<HRESULT>(reason.m_nResult);
    fault.m_wzReason = Sentence(reason, raw);
    Locate(text, std::min(raw.m_nPosition, text.size()), fault);
    return fault;
}

IXMLDOMParseError* NewParseError(const CParseFault& fault)
{
    return new CParseError(fault);
}

} // namespace OvPlatform::Dom
