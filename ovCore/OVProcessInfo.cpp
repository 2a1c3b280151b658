#include "ovCore/OVProcessInfo.h"

#include "ovCore/OvFile.h"
#include "ovCore/OvHeapBlock.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvStackTrace.h"

#include <cstdint>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OVProcessInfo";

[[noreturn]] void RaiseTokenFailure(LONG nLine)
{
    const LONG lError = static_cast<LONG>(::GetLastError());
    OvRaise(E_FAIL, s_szSource, nLine,
            COvEvidence(L"Info Msg", L"Failed getting token") + COvEvidence(L"Win32 GetLastError", lError, true));
}

/// The token's TOKEN_USER.
COvHeapBlock ReadTokenUser(const COvHandle& token)
{
    DWORD dwSize = 0;
    if (!::GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &dwSize) &&
        ::GetLastError() != static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER))
        RaiseTokenFailure(__LINE__);
    COvHeapBlock user = OvHeapAlloc(dwSize, s_szSource, __LINE__);
    if (!::GetTokenInformation(token.Get(), TokenUser, user.get(), dwSize, &dwSize))
        RaiseTokenFailure(__LINE__);
    return user;
}

std::wstring HexText(const BYTE* pBytes, size_t nBytes)
{
    static const wchar_t s_digits[] = L"0123456789abcdef";
    std::wstring text;
    for (size_t i = 0; i < nBytes; ++i)
    {
        text += s_digits[pBytes[i] >> 4];
        text += s_digits[pBytes[i] & 0xF];
    }
    return text;
}

/// All six bytes in hexadecimal where the number needs more than 32 bits, otherwise the number in decimal.
std::wstring AuthorityText(const SID_IDENTIFIER_AUTHORITY& authority)
{
    const BYTE* const p = authority.Value;
    if (p[0] != 0 || p[1] != 0)
        return HexText(p, sizeof(authority.Value));
    const uint32_t nLow = (static_cast<uint32_t>(p[2]) << 24) | (static_cast<uint32_t>(p[3]) << 16) |
                          (static_cast<uint32_t>(p[4]) << 8) | p[5];
    return std::to_wstring(nLow);
}

} // namespace

COvProcessInfo::COvProcessInfo(const std::wstring& wzPath, DWORD dwProcessId) : m_dwProcessId(dwProcessId)
{
    OV_SCOPE(L"COvProcessInfo::COvProcessInfo");
    COvFile::GetFileNameParts(wzPath, &m_wzFolder, nullptr, nullptr, &m_wzName);
}

COvHandle COvProcessInfo::GetTokenFromPID(DWORD dwProcessId)
{
    OV_SCOPE(L"COvProcessInfo::GetTokenFromPID");
    constexpr BOOL bInheritable = TRUE;
    const COvHandle process(::OpenProcess(PROCESS_ALL_ACCESS, bInheritable, dwProcessId));
    HANDLE hToken = nullptr;
    if (process.Get() == nullptr || !::OpenProcessToken(process.Get(), TOKEN_ALL_ACCESS, &hToken))
        return COvHandle();
    return COvHandle(hToken);
}

std::wstring COvProcessInfo::GetTextualSID(bool bDefault) const
{
    OV_SCOPE(L"COvProcessInfo::GetTextualSID");
    const std::wstring wzDefault = bDefault ? L".DEFAULT" : L"";
    if (COVOsVersion::GetCurrent().IsPlatform9xBased())
        return wzDefault;
    const COvHandle token = GetTokenFromPID(m_dwProcessId);
    if (token.Get() == nullptr)
        return wzDefault;
    const COvHeapBlock user = ReadTokenUser(token);
    const std::wstring wzSid = GetTextual(static_cast<const TOKEN_USER*>(user.get())->User.Sid);
    return wzSid.empty() ? wzDefault : wzSid;
}

std::wstring COvProcessInfo::GetTextual(PSID pSid)
{
    OV_SCOPE(L"COvProcessInfo::GetTextual");
    if (!::IsValidSid(pSid))
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Info Msg", L"Sid invalid"));
    std::wstring text = L"S-1-" + AuthorityText(*::GetSidIdentifierAuthority(pSid));
    const DWORD nSubAuthorities = *::GetSidSubAuthorityCount(pSid);
    for (DWORD i = 0; i < nSubAuthorities; ++i)
        text += L"-" + std::to_wstring(*::GetSidSubAuthority(pSid, i));
    return text;
}
