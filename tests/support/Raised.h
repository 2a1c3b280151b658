// What a piece of work raises, as one text that a test compares whole.
#pragma once

#include "ovCore/OvException.h"

#include <string>

/// "code file | item | item ...": the code in hexadecimal, the source file and the evidence with " | " between its
/// items, the item "Stack Dump" left out; "nothing" when the work raises nothing. An exception without that last item,
/// or with frames in it, shows as such.
template <class Work>
std::wstring Raised(Work&& work)
{
    try
    {
        work();
    }
    catch (const COvBaseException& e)
    {
        const std::wstring strDump = L"\rStack Dump: \r";
        std::wstring strEvidence = e.GetEvidence(nullptr);
        const size_t nDump = strEvidence.rfind(strDump);
        if (nDump != std::wstring::npos && nDump + strDump.size() == strEvidence.size())
            strEvidence.resize(nDump);
        else
            strEvidence += L"\r(no empty stack dump)";
        for (size_t n = 0; (n = strEvidence.find(L'\r', n)) != std::wstring::npos;)
            strEvidence.replace(n, 1, L" | ");
        const std::wstring strCode = COvEvidence(L"", e.GetCode(), true).ToString(nullptr);
        return strCode.substr(2, strCode.find(L' ', 2) - 2) + L" " + e.GetFile() + L" | " + strEvidence;
    }
    return L"nothing";
}

/// The item with a Win32 error and the system's message for it.
inline std::wstring ErrorItem(const wchar_t* szName, LONG lError)
{
    return COvEvidence(szName, lError, true).ToString(nullptr);
}
