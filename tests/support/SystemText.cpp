#include "SystemText.h"

#include <cstdio>

std::string ErrorCodeText(LONG lCode)
{
    wchar_t szMessage[1024] = {};
    DWORD dwLength = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      static_cast<DWORD>(lCode), 0x400, szMessage, 1024, nullptr);
    while (dwLength > 0 && (szMessage[dwLength - 1] == L'\r' || szMessage[dwLength - 1] == L'\n'))
        --dwLength;
    char szCode[16] = {};
    std::snprintf(szCode, sizeof szCode, "0x%x", static_cast<unsigned>(lCode));
    std::string text = szCode;
    if (dwLength > 0)
        text += " " + std::string(szMessage, szMessage + dwLength); // the messages in question are ASCII
    return text;
}
