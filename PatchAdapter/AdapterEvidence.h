// The evidence items that the adapter's own lines and exceptions share.
#pragma once

#include "ovCore/OvEvidence.h"

/// The item that says what happened: "Info Msg".
inline COvEvidence InfoMsg(const wchar_t* szSentence) noexcept
{
    return COvEvidence(L"Info Msg", szSentence);
}

/// The item that names the operation: "Function". @param szName  the operation's qualified name.
inline COvEvidence FunctionName(const wchar_t* szName) noexcept
{
    return COvEvidence(L"Function", szName);
}
