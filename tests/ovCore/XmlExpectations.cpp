#include "XmlExpectations.h"

#include "Wine.h"

// Of Windows we know what its documentation says, which is what the stand-in does.

const wchar_t* const EXPECTED_PARSE_ERROR =
    IsWine() ? L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nerror\nSource:\nNo source available.\n\n"
             : L"\nFile Pos:12\nLine: 2   Line Pos: 9\n\nReason:\nEnd tag 'a' does not match the start tag "
               L"'b'.\r\n\nSource:\n"
               L" <b></a>\n\n";
const wchar_t* const EXPECTED_ELEMENT_ONLY = IsWine() ? L"<a xmlns=\"u\" xmlns:p=\"v\"/>" : L"<a xmlns=\"u\"/>";
const wchar_t* const EXPECTED_QUERY_ERROR_OBJECT =
    IsWine() ? L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'."
             : L"Error Object Info: The query is not valid: [[";
const wchar_t* const EXPECTED_PROPERTY_ERROR_OBJECT =
    IsWine() ? L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'."
             : L"Error Object Info: This property, type or value is not supported: NoSuchProperty";
const wchar_t* const EXPECTED_TEXT_ERROR_OBJECT =
    IsWine() ? L"Error Object Info: This object does not implement the ISupportError interface."
             : L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'.";
