#include "ovCore/OvEvidence.h"

#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvException.h"
#include "ovCore/OvStringUtil.h"

#include <memory>
#include <string_view>

namespace
{

constexpr std::wstring_view MARK = L": "; // between name and value

struct CLocalFree
{
    void operator()(wchar_t* p) const noexcept { ::LocalFree(p); }
};

std::wstring_view TextOrNull(const wchar_t* szText)
{
    return szText == nullptr ? L"<null>" : szText;
}

std::wstring_view ViewOf(const COvBstr& str)
{
    return { str.Get(), ::SysStringLen(str.Get()) };
}

std::wstring Widen(const char* szText)
{
    return szText == nullptr ? std::wstring(TextOrNull(nullptr)) : COvStringUtil::NarrowToWide(szText, CP_THREAD_ACP);
}

std::wstring GuidText(const GUID& guid)
{
    wchar_t szGuid[45] = {};
    return ::StringFromGUID2(guid, szGuid, 45) == 0 ? L"<undetermined>" : szGuid;
}

/// The system's message without its line end; empty when it has none.
std::wstring SystemMessage(LONG nCode)
{
    wchar_t* pRaw = nullptr;
    const DWORD nLength =
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
                         nullptr, static_cast<DWORD>(nCode), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                         reinterpret_cast<LPWSTR>(&pRaw), 0, nullptr);
    const std::unique_ptr<wchar_t, CLocalFree> owner(pRaw);
    if (nLength == 0)
        return std::wstring();

    std::wstring message(pRaw, nLength);
    message.erase(message.find_last_not_of(L"\r\n") + 1);
    return message;
}

std::wstring ErrorCodeText(LONG nCode)
{
    const std::wstring message = SystemMessage(nCode);
    const std::wstring code = L"0x" + COvStringUtil::LongToString(nCode, 16);
    return message.empty() ? code : code + L" " + message;
}

std::wstring StandardExceptionText(const std::exception& e)
{
    std::wstring text = L"\r{\rCode: STL EXCEPTION";
    if (e.what() != nullptr)
        text += L"\rDescription:\r" + Widen(e.what());
    return text + L"\r}";
}

std::wstring ExceptionBlock(const COvBaseException& e)
{
    std::wstring text = L"\r{ *BEGIN Exception Collection* \rCode: " + ErrorCodeText(e.GetCode());
    if (const wchar_t* const szEvidence = e.GetEvidence(nullptr))
        text.append(L"\rEvidence:\r").append(szEvidence);
    if (const wchar_t* const szFile = e.GetFile())
        text.append(L"\rSource: ").append(szFile).append(L"(" + std::to_wstring(e.GetLine()) + L")");
    return text + L"\r **END Exception Collection** }";
}

} // namespace

COvEvidence::COvEvidence() noexcept = default;
COvEvidence::~COvEvidence() = default;

COvEvidence::COvEvidence(const COvEvidence& other) : m_text(other.m_text) {}

COvEvidence::COvEvidence(COvEvidence&& other) noexcept : m_text(std::move(other.m_text)) {}

COvEvidence& COvEvidence::operator=(const COvEvidence& other) noexcept
{
    try
    {
        m_text = other.m_text;
    }
    catch (...)
    {
        // keeps its text
    }
    return *this;
}

COvEvidence& COvEvidence::operator=(COvEvidence&& other) noexcept
{
    m_text = std::move(other.m_text);
    return *this;
}

/// Stores the name and the value, in one piece of memory.
void COvEvidence::SetText(const wchar_t* szName, std::wstring_view value) noexcept
{
    try
    {
        const std::wstring_view name = TextOrNull(szName);
        m_text.reserve(name.size() + MARK.size() + value.size());
        m_text.append(name).append(MARK).append(value);
    }
    catch (...)
    {
        // a raise site must reach its throw: without memory for all of it the item stays empty
    }
}

/// Stores the name and the value that the builder returns, as far as memory reaches.
template <class Build>
void COvEvidence::Set(const wchar_t* szName, Build&& build) noexcept
{
    try
    {
        m_text = TextOrNull(szName);
        m_text += MARK;
        m_text += build();
    }
    catch (...)
    {
        // a raise site must reach its throw: what is built so far is the item
    }
}

COvEvidence::COvEvidence(const wchar_t* szName, const wchar_t* szValue) noexcept
{
    SetText(szName, TextOrNull(szValue));
}

COvEvidence::COvEvidence(const wchar_t* szName, const std::wstring& strValue) noexcept
{
    SetText(szName, strValue);
}

COvEvidence::COvEvidence(const wchar_t* szName, const char* szValue) noexcept
{
    Set(szName, [&] { return Widen(szValue); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const COvBstr& strValue) noexcept
{
    SetText(szName, strValue.IsNull() ? TextOrNull(nullptr) : ViewOf(strValue));
}

COvEvidence::COvEvidence(const wchar_t* szName, const bool& bValue) noexcept
{
    SetText(szName, bValue ? L"<true>" : L"<false>");
}

COvEvidence::COvEvidence(const wchar_t* szName, const GUID& guid) noexcept
{
    Set(szName, [&] { return GuidText(guid); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const LONG& nValue) noexcept
{
    Set(szName, [&] { return std::to_wstring(nValue); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const DWORD& dwValue) noexcept
{
    Set(szName, [&] { return std::to_wstring(dwValue); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const int64_t& nValue) noexcept
{
    Set(szName, [&] { return std::to_wstring(nValue); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const LONG& nValue, bool bAsError) noexcept
{
    Set(szName, [&] { return bAsError ? ErrorCodeText(nValue) : std::to_wstring(nValue); });
}

COvEvidence::COvEvidence(const wchar_t* szName, const std::exception& e) noexcept
{
    Set(szName, [&] { return StandardExceptionText(e); });
}

COvEvidence::COvEvidence(const wchar_t* szName, IUnknown* pObject, IID iid) noexcept
{
    Set(szName, [&] { return OvGetErrorInfoText(pObject, iid); });
}

COvEvidence::COvEvidence(const wchar_t*, const COvBaseException& e) noexcept
{
    try
    {
        m_text = ExceptionBlock(e);
    }
    catch (...)
    {
        // stays empty
    }
}

const wchar_t* COvEvidence::ToString(const wchar_t* szSeparator) const
{
    if (szSeparator == nullptr || m_text.find(L'\r') == std::wstring::npos)
        return m_text.c_str();
    m_rendered = COvStringUtil::FindReplace(L"\r", szSeparator, m_text.c_str(), nullptr);
    return m_rendered.c_str();
}

COvEvidence COvEvidence::operator+(const COvEvidence& other) const& noexcept
{
    COvEvidence sum;
    sum = *this;
    sum.Append(other);
    return sum;
}

COvEvidence COvEvidence::operator+(const COvEvidence& other) && noexcept
{
    Append(other);
    return std::move(*this);
}

COvEvidence& COvEvidence::operator+=(const COvEvidence& other) noexcept
{
    Append(other);
    return *this;
}

void COvEvidence::Append(const COvEvidence& other) noexcept
{
    const size_t nLength = other.m_text.length(); // the other may be this very item
    if (nLength == 0)
        return;
    try
    {
        m_text += L'\r';
        m_text.append(other.m_text, 0, nLength);
    }
    catch (...)
    {
        // keeps what it holds
    }
}
