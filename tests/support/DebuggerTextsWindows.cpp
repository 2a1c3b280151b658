#include "DebuggerTexts.h"

#include "OvPlatform.h"

#include <mutex>
#include <utility>

// A text for the debugger travels as an exception that a process without one may handle itself. The narrow form follows
// where the wide one is not known or not handled. Parameters: bytes with the NUL, the text.

namespace
{

std::mutex s_mutex;
std::vector<std::wstring> s_texts; // guarded by s_mutex
void* s_pHandler = nullptr;

LONG CALLBACK Capture(EXCEPTION_POINTERS* pPointers)
{
    const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
    if (record.ExceptionCode != 0x40010006) // DBG_PRINTEXCEPTION_C
        return EXCEPTION_CONTINUE_SEARCH;
    const int nBytes = static_cast<int>(record.ExceptionInformation[0]);
    std::wstring text(static_cast<size_t>(nBytes), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, reinterpret_cast<const char*>(record.ExceptionInformation[1]), nBytes, text.data(),
                          nBytes);
    const std::lock_guard<std::mutex> guard(s_mutex);
    s_texts.push_back(text.c_str());
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
