// Writes XML without a DOM: a sequence of operations makes a document, which is rendered as one text. The sources are
// in ovCore/.
#pragma once

#include "ovCore/OvEvidence.h"
#include "ovCore/OvStackTrace.h"
#include "OvPlatform.h"

#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

class COvXmlWriterDocument;
struct COvXmlWriterNode;

/// Records XML nodes and renders them. Texts are UTF-16. Names and prefixes are written as they are passed: nothing is
/// validated and nothing indented. `bEscape` says whether a value is escaped to printable ASCII or written as it is.
/// Texts are copied; a required one that is null raises COvException E_INVALIDARG.
///
/// An operation that the open node does not allow raises COvException E_FAIL. Without memory an operation with an
/// escaped value raises what COvXmlEscape::Escape does, any other std::bad_alloc. After any failure the document and
/// the open node are what they were before. One thread at a time; separate writers are independent.
class COvXmlWriter
{
public:
    /// @param bStartDocument  start the document at once, as WriteStartDocument does.
    explicit COvXmlWriter(bool bStartDocument);

    COvXmlWriter(const COvXmlWriter&) = delete;
    COvXmlWriter& operator=(const COvXmlWriter&) = delete;
    ~COvXmlWriter();

    /// Starts afresh with an empty document, which is the open node. What was written before is gone.
    void WriteStartDocument();

    /// Adds a processing instruction; the document must be the open node. An XML declaration is one with the target
    /// "xml"; the writer adds none of its own.
    void WriteProcessingInstruction(const wchar_t* tzPiName, const wchar_t* tzPiText);

    /// Adds an element to the document or element that is open and makes it the open node.
    /// @param prefix  null for none; an empty one is written, with its colon.
    void WriteStartElement(const wchar_t* tzElemName, const wchar_t* prefix = nullptr);

    /// Adds a namespace declaration to the open element, into its start tag, at any time while it is open.
    /// @param tzPrefix  empty for the default namespace.
    void WriteNameSpace(const wchar_t* tzPrefix, const wchar_t* tzValue, bool bEscape);

    /// Adds an attribute to the open element, into its start tag, at any time while it is open.
    void WriteAttrW(const wchar_t* tzAttrName, const wchar_t* wzAttrValue, bool bEscape);

    /// As WriteAttrW. A text ends at its first zero.
    void WriteAttr(const std::wstring& name, const std::wstring& value, bool bEscape)
    {
        OV_SCOPE(L"COvXmlWriter::WriteAttr");
        WriteAttrW(name.c_str(), value.c_str(), bEscape);
    }

    /// As WriteAttrW.
    void WriteAttr(const std::wstring& name, const wchar_t* value, bool bEscape)
    {
        OV_SCOPE(L"COvXmlWriter::WriteAttr");
        WriteAttrW(name.c_str(), value, bEscape);
    }

    /// As WriteAttrW, with what a wide stream makes of the value: numbers in plain decimal, whatever the locale. Lets
    /// out what the value's operator<< throws.
    template <class T>
    void WriteAttr(const std::wstring& name, const T& value, bool bEscape)
    {
        OV_SCOPE(L"COvXmlWriter::WriteAttr");
        WriteAttrW(name.c_str(), AsText(value).c_str(), bEscape);
    }

    /// Adds text to the document or element that is open.
    void WriteStringW(const wchar_t* wzText, bool bEscape);

    /// As WriteStringW. The text ends at its first zero.
    void WriteString(const std::wstring& text, bool bEscape)
    {
        OV_SCOPE(L"COvXmlWriter::WriteString");
        WriteStringW(text.c_str(), bEscape);
    }

    /// Adds a CDATA section to the document or element that is open. The text is never escaped, nor a "]]>" in it
    /// split.
    void WriteCData(const wchar_t* tzText);

    /// Makes the open node's parent the open node. Closing the document leaves none; only WriteStartDocument is allowed
    /// then, and rendering.
    void WriteEndElement();

    /// The rendering of the whole document: every element with a start and an end tag, those that are still open too.
    /// Empty without a document or with an empty one. May be asked for at any point, any number of times; its depth
    /// costs no stack. Raises std::bad_alloc when memory runs out.
    std::wstring ToStringW() const;

    /// The same text as ToStringW.
    std::wstring ToString() const;

private:
    template <class T>
    static std::wstring AsText(const T& value)
    {
        if constexpr (std::is_integral_v<T> && sizeof(T) >= sizeof(short) && !std::is_same_v<T, wchar_t>)
        {
            const std::string digits = std::to_string(value);
            return std::wstring(digits.begin(), digits.end());
        }
        else
        {
            std::wostringstream stream;
            stream.imbue(std::locale::classic());
            stream.exceptions(std::ios_base::badbit); // a stream without memory would drop the value silently
            stream << value;
            return stream.str();
        }
    }

    [[noreturn]] void Refuse(LONG nLine, const wchar_t* szMessage, const COvEvidence& arguments) const;

    static constexpr const wchar_t* s_szSource = L"ovCore\\OvXmlWriter";

    std::unique_ptr<COvXmlWriterDocument> m_pDocument; // null before the first one
    COvXmlWriterNode* m_pCurrent = nullptr; // not owned: the open node, the document or an element; null for none
};
