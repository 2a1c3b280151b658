#include "DebuggerTexts.h"

#include "OvPlatform.h"

#include <mutex>
#include <utility>

// A text for the debugger travels as an exception that a process without one may handle itself.

namespace
{

// Parameters: units with the NUL, the text. Not every system has the wide form.
constexpr DWORD s_dwWideText = 0x4001000A;
constexpr DWORD s_dwNarrowText = 0x40010006;

std::mutex s_mutex;
std::vector<std::wstring> s_texts; // guarded by s_mutex
void* s_pHandler = nullptr;

std::wstring Widened(const char* szText)
{
    std::wstring wide(static_cast<size_t>(::MultiByteToWideChar(CP_ACP, 0, szText, -1, nullptr, 0)), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, szText, -1, wide.data(), static_cast<int>(wide.length()));
    return wide.c_str();
}

LONG CALLBACK Capture(EXCEPTION_POINTERS* pPointers)
{
    const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
    if (record.ExceptionCode != s_dwWideText && record.ExceptionCode != s_dwNarrowText)
        return EXCEPTION_CONTINUE_SEARCH;
    const ULONG_PTR pText = record.ExceptionInformation[1];
    const bool bWide = record.ExceptionCode == s_dwWideText;
    const std::lock_guard<std::mutex> guard(s_mutex);
    s_texts.push_back(bWide ? reinterpret_cast<const wchar_t*>(pText) : Widened(reinterpret_cast<const char*>(pText)));
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

CDebuggerTexts::CDebuggerTexts()
{
    s_pHandler = ::AddVectoredExceptionHandler(1, Capture);
}

CDebuggerTexts::~CDebuggerTexts()
{
    ::RemoveVectoredExceptionHandler(s_pHandler);
    Take();
}

std::vector<std::wstring> CDebuggerTexts::Take()
{
    const std::lock_guard<std::mutex> guard(s_mutex);
    return std::exchange(s_texts, {});
}
