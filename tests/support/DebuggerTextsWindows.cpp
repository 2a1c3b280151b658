#include "DebuggerTexts.h"

#include "OvPlatform.h"

#include <mutex>
#include <utility>

// A text for the debugger travels as an exception that a process without one may handle itself.

namespace
{

constexpr DWORD s_dwWideText = 0x4001000A; // parameters: units with the NUL, the text, and the same in narrow form

std::mutex s_mutex;
std::vector<std::wstring> s_texts; // guarded by s_mutex
void* s_pHandler = nullptr;

LONG CALLBACK Capture(EXCEPTION_POINTERS* pPointers)
{
    const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
    if (record.ExceptionCode != s_dwWideText || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    const std::lock_guard<std::mutex> guard(s_mutex);
    s_texts.emplace_back(reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]));
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
