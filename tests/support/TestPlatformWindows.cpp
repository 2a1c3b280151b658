#include "TestPlatform.h"

#include "ReplacedCalls.h"

#include <gtest/gtest.h>
#include <mutex>
#include <psapi.h>

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

namespace
{

void WINAPI FastSleep(DWORD dwMilliseconds)
{
    ::SleepEx(dwMilliseconds / 1000, FALSE);
}

const void* const s_pFastSleep = reinterpret_cast<const void*>(&FastSleep);

} // namespace

CFastPauses::CFastPauses(HMODULE hModule) : m_hModule(hModule)
{
    ReplaceImport(m_hModule, SystemFunction("kernel32", "Sleep"), s_pFastSleep);
}

CFastPauses::~CFastPauses()
{
    ReplaceImport(m_hModule, s_pFastSleep, SystemFunction("kernel32", "Sleep"));
}

namespace
{

std::wstring ScratchPath()
{
    return L"Software\\OvScratch" + std::to_wstring(::GetCurrentProcessId());
}

void Redirect(HKEY hRoot, const wchar_t* szName)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, (ScratchPath() + L"\\" + szName).c_str(), 0, nullptr,
                                               REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &hKey, nullptr));
    EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(hRoot, hKey));
    ::RegCloseKey(hKey);
}

} // namespace

CScratchRegistry::CScratchRegistry()
{
    Redirect(HKEY_LOCAL_MACHINE, L"Machine");
    Redirect(HKEY_CURRENT_USER, L"User"); // last, as the scratch keys lie below the real one
}

CScratchRegistry::~CScratchRegistry()
{
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, ScratchPath().c_str()));
}

std::shared_ptr<void> WatchLocks(HMODULE hModule, std::function<void(const void* pLock, bool bEnters)> seen)
{
    auto pReplaced = std::make_shared<CReplacedCalls>(hModule);
    pReplaced->Replace(&::EnterCriticalSection, [=](CRITICAL_SECTION* p) { seen(p, true), ::EnterCriticalSection(p); });
    pReplaced->Replace(&::LeaveCriticalSection,
                       [=](CRITICAL_SECTION* p) { seen(p, false), ::LeaveCriticalSection(p); });
    return pReplaced;
}

// Windows counts a process's handles, but the runtime that the tests run under answers 0, and it counts neither COM
// objects nor BSTRs: leaks are found on the native target, where the same sources run.
std::string CountResources()
{
    return "not counted";
}

char* PagesBeforeAWall(size_t nPages)
{
    void* const p = ::VirtualAlloc(nullptr, (nPages + 1) * PAGE_BYTES, MEM_RESERVE, PAGE_NOACCESS);
    return static_cast<char*>(::VirtualAlloc(p, nPages * PAGE_BYTES, MEM_COMMIT, PAGE_READWRITE));
}

unsigned PeakMemoryMb()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<unsigned>(counters.PeakWorkingSetSize >> 20);
}
