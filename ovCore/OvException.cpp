#include "ovCore/OvException.h"

#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"

/// Stores the file's name and the evidence; without memory the exception says no more than that it is one.
template <class Take>
void COvException::Fill(const wchar_t* szFile, Take&& takeEvidence) noexcept
{
    try
    {
        if (szFile != nullptr)
            m_strFile = COvStringUtil::FileNameOf(szFile);
        takeEvidence();
    }
    catch (...)
    {
        m_hr = E_FAIL;
        m_strFile.clear();
        m_nLine = 0;
        m_Evidence = COvEvidence();
    }
}

COvException::COvException(const HRESULT& hr, const wchar_t* szFile, LONG nLine, COvEvidence&& evidence) noexcept
    : m_hr(hr), m_nLine(nLine)
{
    Fill(szFile, [&] { m_Evidence = std::move(evidence); });
}

COvException::COvException(const HRESULT& hr, const wchar_t* szFile, LONG nLine, const COvEvidence& evidence) noexcept
    : m_hr(hr), m_nLine(nLine)
{
    Fill(szFile, [&] { m_Evidence = COvEvidence(evidence); }); // the copy may throw, a plain assignment would hide it
}

void COvException::AddInfo(const wchar_t* szFile, LONG nLine, const COvEvidence& evidence) noexcept
{
    try
    {
        const std::wstring name =
            L"More Info From " + std::wstring(COvStringUtil::FileNameOf(szFile)) + L"(" + std::to_wstring(nLine) + L")";
        m_Evidence += COvEvidence(name.c_str(), evidence.ToString(nullptr));
    }
    catch (...)
    {
        // the exception is worth more than the addition
    }
}

void COvException::WriteDebug() const noexcept
{
    try
    {
        const std::wstring code = std::to_wstring(m_hr);
        const std::wstring header = m_strFile + L"(" + std::to_wstring(m_nLine) + L"): Error:" + code + L" " + code +
                                    L": TID:" + std::to_wstring(::GetCurrentThreadId()) + L" ";
        ::OutputDebugStringW(L"\r\n++++ COvException::WriteDebug() ++++\r\n");
        ::OutputDebugStringW(header.c_str());
        ::OutputDebugStringW(L"\r\n");
        ::OutputDebugStringW(L"\r\n");
        ::OutputDebugStringW(GetEvidence(L"\r\n"));
        ::OutputDebugStringW(L"\r\n");
    }
    catch (...)
    {
        // the dump is a courtesy
    }
}

COvEvidence OvStackDump() noexcept
{
    try
    {
        return COvEvidence(L"Stack Dump", COvStackTrace::Get()->Dump());
    }
    catch (...)
    {
        return COvEvidence();
    }
}

void OvRaise(HRESULT hr, const wchar_t* szSource, LONG nLine, const COvEvidence& evidence)
{
    throw COvException(hr, szSource, nLine, evidence + OvStackDump());
}

void OvRaiseNullPointer(const wchar_t* szName, const wchar_t* szFile, LONG nLine)
{
    OvRaise(E_INVALIDARG, szFile, nLine, COvEvidence(L"Info Msg", L"Invalid pointer") + COvEvidence(szName, 0));
}
