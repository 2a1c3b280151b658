// What the tests of the XML wrapper share.
#pragma once

#include "Masking.h"
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvXmlDocument.h"
#include "ovCore/OvXmlNodeList.h"
#include "Raised.h"

#include <string>

/// The item "Error Object Info" of a call that answered S_FALSE, and of one that left no error object.
inline const wchar_t NO_ERROR_OBJECT[] =
    L"Error Object Info: The IErrorInfo interface returned the message 'error information is unavailable'.";

/// A document of that text.
inline COvXmlDocument Loaded(const std::wstring& text, bool bPreserveWhitespace = false)
{
    COvXmlDocument document(nullptr, XmlParserBest);
    constexpr bool bIsFile = false;
    constexpr bool bThrow = true;
    document.LoadXML(COvBstr(text).Get(), bIsFile, bThrow, bPreserveWhitespace);
    return document;
}

/// The first node that the query finds below the node; an empty node when there is none.
inline COvXmlNode Find(const COvXmlNode& node, const wchar_t* szPattern)
{
    const COvXmlNodeList found = node.SearchForNodes(COvBstr(szPattern).Get());
    return found.size() == 0 ? COvXmlNode() : found[0];
}

inline std::wstring TextOf(const COvBstr& str)
{
    return COvStringUtil::FromBSTR(str);
}

/// Raised, with the addresses masked.
template <class Work>
std::wstring RaisedMasked(Work&& work)
{
    return Masked(Raised(work));
}

/// The code of what the work raises; S_OK when it raises nothing.
template <class Work>
HRESULT CodeOf(Work&& work)
{
    try
    {
        work();
    }
    catch (const COvBaseException& e)
    {
        return e.GetCode();
    }
    return S_OK;
}
