#include "ovCore/OvBstr.h"

#include <climits>
#include <utility>

namespace
{

BSTR AllocCopy(const wchar_t* szText, size_t nLength)
{
    const BSTR str = nLength <= INT_MAX ? ::SysAllocStringLen(szText, static_cast<UINT>(nLength)) : nullptr;
    if (str == nullptr)
        _com_issue_error(E_OUTOFMEMORY);
    return str;
}

} // namespace

COvBstr::COvBstr(const wchar_t* szText)
    : m_str(szText == nullptr ? nullptr : AllocCopy(szText, std::char_traits<wchar_t>::length(szText)))
{
}

COvBstr::COvBstr(const std::wstring& strText) : m_str(AllocCopy(strText.data(), strText.length())) {}

COvBstr::COvBstr(const COvBstr& other)
    : m_str(other.IsNull() ? nullptr : AllocCopy(other.m_str, ::SysStringLen(other.m_str)))
{
}

COvBstr& COvBstr::operator=(const COvBstr& other)
{
    return *this = COvBstr(other);
}

COvBstr& COvBstr::operator=(COvBstr&& other) noexcept
{
    if (this != &other)
        Attach(other.Detach());
    return *this;
}

BSTR* COvBstr::Receive() noexcept
{
    Attach(nullptr);
    return &m_str;
}

BSTR COvBstr::Detach() noexcept
{
    return std::exchange(m_str, nullptr);
}

void COvBstr::Attach(BSTR str) noexcept
{
    ::SysFreeString(std::exchange(m_str, str));
}
