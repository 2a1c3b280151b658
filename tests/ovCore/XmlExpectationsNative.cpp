#include "XmlExpectations.h"

const wchar_t* const EXPECTED_PARSE_ERROR =
    L"\nFile Pos:12\nLine: 2   Line Pos: 9\n\nReason:\nEnd tag 'a' does not match the start tag 'b'.\r\n\nSource:\n"
    L" <b></a>\n\n";
const wchar_t* const EXPECTED_ELEMENT_ONLY = L"<a xmlns=\"u\"/>";
const wchar_t* const EXPECTED_QUERY_ERROR_OBJECT = L"Error Object Info: The query is not valid: [[";
const wchar_t* const EXPECTED_PROPERTY_ERROR_OBJECT =
    L"Error Object Info: This property, type or value is not supported: NoSuchProperty";
const wchar_t* const EXPECTED_TEXT_ERROR_OBJECT =
    L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'.";
