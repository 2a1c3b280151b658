#include "Platform/Debugger.h"

#include "Platform/Control.h"
#include "Platform/Threads.h"

#include <mutex>
#include <new>
#include <utility>

namespace OvPlatform
{

namespace
{

struct CCapture
{
    std::mutex lock;
    bool bOn = false;                 // guarded by lock
    std::vector<CDebuggerText> texts; // guarded by lock
};

/// Never destroyed: objects of libraries write to the debugger while the process ends.
CCapture& Capture()
{
    static CCapture& s_capture = *new CCapture;
    return s_capture;
}

} // namespace

void CaptureDebuggerTexts(bool bCapture)
{
    const std::lock_guard<std::mutex> lock(Capture().lock);
    Capture().bOn = bCapture;
    Capture().texts.clear();
}

std::vector<CDebuggerText> TakeDebuggerTexts()
{
    const std::lock_guard<std::mutex> lock(Capture().lock);
    return std::exchange(Capture().texts, {});
}

} // namespace OvPlatform

using namespace OvPlatform;

void OutputDebugStringW(LPCWSTR szText)
try
{
    const std::lock_guard<std::mutex> lock(Capture().lock);
    if (Capture().bOn)
        Capture().texts.push_back({ GetCurrentThreadId(), szText ? szText : L"" });
}
catch (const std::bad_alloc&)
{
    // a debugger that cannot keep up loses texts
}
