// Where the parsers that the tests run with differ: Wine's, and those of Windows and of the stand-in.
#pragma once

/// The parse error of "<a>\n <b></a>", as it is rendered.
extern const wchar_t* const EXPECTED_PARSE_ERROR;

/// <a xmlns="u" xmlns:p="v" b="1" p:d="2">t<c/></a> copied without content and attributes.
extern const wchar_t* const EXPECTED_ELEMENT_ONLY;

/// The item "Error Object Info" of a query with a fault in it.
extern const wchar_t* const EXPECTED_QUERY_ERROR_OBJECT;

/// The item "Error Object Info" of a property that does not exist.
extern const wchar_t* const EXPECTED_PROPERTY_ERROR_OBJECT;

/// The item "Error Object Info" of a call of a text node that answered S_FALSE.
extern const wchar_t* const EXPECTED_TEXT_ERROR_OBJECT;
