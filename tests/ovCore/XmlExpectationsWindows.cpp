#include "XmlExpectations.h"

const wchar_t* const EXPECTED_PARSE_ERROR =
    L"\nFile Pos:0\nLine: 0   Line Pos: 0\n\nReason:\nerror\nSource:\nNo source available.\n\n";
const wchar_t* const EXPECTED_ELEMENT_ONLY = L"<a xmlns=\"u\" xmlns:p=\"v\"/>";
const wchar_t* const EXPECTED_QUERY_ERROR_OBJECT =
    L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'.";
const wchar_t* const EXPECTED_PROPERTY_ERROR_OBJECT =
    L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'.";
const wchar_t* const EXPECTED_TEXT_ERROR_OBJECT =
    L"Error Object Info: This object does not implement the ISupportError interface.";
