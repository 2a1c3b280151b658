// How a parse error is recorded and put into words.
#pragma once

#include "Platform/Dom/Tree.h"

#include <string>
#include <string_view>

namespace OvPlatform::Dom
{

// Faults that the library does not know, beside its own codes, which are positive.
constexpr int s_nDoctype = -1;
constexpr int s_nTooManyAttributes = -2;
constexpr int s_nTooManyNamespaces = -3;
constexpr int s_nTextTooLong = -4;

/// A fault as the parser met it.
struct CRawFault
{
    int m_nCode = 0;
    std::string m_szFirst; ///< the names that the fault is about
    std::string m_szSecond;
    std::string m_szMessage; ///< the library's words
    size_t m_nPosition = 0;  ///< in units of the text
};

/// The library reports a text that is too long as a lack of memory.
bool IsTextTooLong(const xmlError& error);

CRawFault NewRawFault(const xmlError& error, size_t nPosition);

/// The fault in the platform's words where it has some, with its place in the text.
CParseFault Describe(const CRawFault& raw, std::wstring_view text);

} // namespace OvPlatform::Dom
