#include "SystemText.h"

#include <cstdio>

namespace
{

// The messages in question are ASCII.
std::string SystemMessage(LONG lCode)
{
    wchar_t* szMessage = nullptr;
    DWORD dwLength =
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
                         nullptr, static_cast<DWORD>(lCode), 0x400, reinterpret_cast<LPWSTR>(&szMessage), 0, nullptr);
    while (dwLength > 0 && (szMessage[dwLength - 1] == L'\r' || szMessage[dwLength - 1] == L'\n'))
        --dwLength;
    const std::string message(szMessage, szMessage + dwLength);
    ::LocalFree(szMessage);
    return message;
}

} // namespace

bool IsWine()
{
    const HMODULE hModule = ::GetModuleHandleW(L"ntdll.dll");
    return hModule != nullptr && ::GetProcAddress(hModule, "wine_get_version") != nullptr;
}

std::string ErrorCodeText(LONG lCode)
{
    char szCode[16] = {};
    std::snprintf(szCode, sizeof szCode, "0x%x", static_cast<unsigned>(lCode));
    const std::string message = SystemMessage(lCode);
    return message.empty() ? szCode : szCode + (" " + message);
}
