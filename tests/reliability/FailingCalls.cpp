#include "FailingCalls.h"

#include "ImportTable.h"

#include <cstring>
#include <iterator>
#include <mutex>

// The calls that can fail, with what they return then; GetLastError tells "access denied". Not among them is what a
// stop rests on, the signal of the adapter's own event and the endless wait for its thread: neither fails for a handle
// that the caller owns, and a stop without them has nothing to go on. Nor DuplicateHandle: the job makes no such call,
// but the compiler's run-time on Windows does, once a thread, and ends the process when it is refused.
#define OV_FAILING_CALLS(X)                                                                                            \
    X(CoCreateGuid, E_ACCESSDENIED)                                                                                    \
    X(CoCreateInstance, E_ACCESSDENIED)                                                                                \
    X(CoInitializeEx, E_ACCESSDENIED)                                                                                  \
    X(CreateEventW, 0)                                                                                                 \
    X(FormatMessageW, 0)                                                                                               \
    X(GetErrorInfo, E_ACCESSDENIED)                                                                                    \
    X(GetModuleFileNameW, 0)                                                                                           \
    X(GetModuleHandleW, 0)                                                                                             \
    X(HeapAlloc, 0)                                                                                                    \
    X(InitializeCriticalSectionAndSpinCount, FALSE)                                                                    \
    X(LoadLibraryExW, 0)                                                                                               \
    X(MultiByteToWideChar, 0)                                                                                          \
    X(OpenEventW, 0)                                                                                                   \
    X(RegCreateKeyExW, ERROR_ACCESS_DENIED)                                                                            \
    X(RegOpenKeyExW, ERROR_ACCESS_DENIED)                                                                              \
    X(RegQueryValueExW, ERROR_ACCESS_DENIED)                                                                           \
    X(RegSetValueExW, ERROR_ACCESS_DENIED)                                                                             \
    X(SysAllocStringLen, 0)                                                                                            \
    X(VariantChangeType, E_ACCESSDENIED)                                                                               \
    X(WaitForMultipleObjects, WAIT_FAILED)                                                                             \
    X(WideCharToMultiByte, 0)

// Those that the library looks up by their names.
#define OV_FAILING_FUNCTIONS(X)                                                                                        \
    X(GetFileVersionInfoSizeW, 0)                                                                                      \
    X(GetFileVersionInfoW, FALSE)                                                                                      \
    X(VerQueryValueW, FALSE)

namespace
{

#define OV_INDEX(function, failure) Call_##function,
enum Call : unsigned
{
    OV_FAILING_CALLS(OV_INDEX) Call_CloseHandle,
    Call_RegCloseKey,
    Call_WaitForSingleObject,
    Call__beginthreadex,
    Call_GetProcAddress, // the last of the imports
    OV_FAILING_FUNCTIONS(OV_INDEX)
};
#undef OV_INDEX

struct CWatchedCall
{
    const char* szFunction;
    const void* pReal;
    const void* pWrapper;
    intptr_t nFailure;
};

extern const CWatchedCall s_calls[];

std::mutex s_mutex; // guards what follows
CCallFailure s_failure;
DWORD s_dwThreadId = 0;
unsigned s_nCalls = 0;
std::string s_failed;

bool Fails(unsigned nIndex)
{
    const std::lock_guard<std::mutex> guard(s_mutex);
    if (s_dwThreadId == 0 || (::GetCurrentThreadId() == s_dwThreadId) == s_failure.bOtherThreads ||
        (!s_failure.function.empty() && s_failure.function != s_calls[nIndex].szFunction))
        return false;
    ++s_nCalls;
    const bool bInRow =
        s_failure.nFirst != 0 && s_nCalls >= s_failure.nFirst && s_nCalls - s_failure.nFirst < s_failure.nCount;
    const bool bInTurn = s_failure.nEvery != 0 && s_nCalls % s_failure.nEvery == 0;
    if (!bInRow && !bInTurn && s_nCalls != s_failure.nSecond)
        return false;
    if (s_failure.pfnInstead != nullptr)
        s_failure.pfnInstead();
    if (s_failed.size() > 1000)
        return true;
    s_failed += (s_failed.empty() ? "" : " ") + std::string(s_calls[nIndex].szFunction);
    return true;
}

template <class R>
R Failure(unsigned nIndex)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    if constexpr (std::is_pointer_v<R>)
        return reinterpret_cast<R>(s_calls[nIndex].nFailure);
    else
        return static_cast<R>(s_calls[nIndex].nFailure);
}

template <unsigned I, class Function>
class CWrapper;

template <unsigned I, class R, class... Arguments>
class CWrapper<I, R(WINAPI*)(Arguments...)>
{
public:
    static R WINAPI Call(Arguments... arguments)
    {
        if (Fails(I))
            return Failure<R>(I);
        return reinterpret_cast<R(WINAPI*)(Arguments...)>(const_cast<void*>(s_calls[I].pReal))(arguments...);
    }
};

// A close that fails has closed all the same: what it left open would be this test's leak.

BOOL WINAPI Close(HANDLE hObject)
{
    const BOOL bDone = ::CloseHandle(hObject);
    return Fails(Call_CloseHandle) ? Failure<BOOL>(Call_CloseHandle) : bDone;
}

LSTATUS WINAPI CloseKey(HKEY hKey)
{
    const LSTATUS lResult = ::RegCloseKey(hKey);
    return Fails(Call_RegCloseKey) ? Failure<LSTATUS>(Call_RegCloseKey) : lResult;
}

DWORD WINAPI Wait(HANDLE hObject, DWORD dwMilliseconds)
{
    if (dwMilliseconds != INFINITE && Fails(Call_WaitForSingleObject))
        return Failure<DWORD>(Call_WaitForSingleObject);
    return ::WaitForSingleObject(hObject, dwMilliseconds);
}

uintptr_t __cdecl BeginThread(void* pSecurity, unsigned nStack, unsigned(WINAPI* pStart)(void*), void* pArgument,
                              unsigned nFlags, unsigned* pId)
{
    return Fails(Call__beginthreadex) ? Failure<uintptr_t>(Call__beginthreadex)
                                      : ::_beginthreadex(pSecurity, nStack, pStart, pArgument, nFlags, pId);
}

FARPROC WINAPI Find(HMODULE hModule, LPCSTR szName)
{
    if (Fails(Call_GetProcAddress))
        return Failure<FARPROC>(Call_GetProcAddress);
    const void* pWrapper = nullptr;
#define OV_IS_NAMED(function, failure)                                                                                 \
    if (std::strcmp(szName, #function) == 0)                                                                           \
        pWrapper = s_calls[Call_##function].pWrapper;
    OV_FAILING_FUNCTIONS(OV_IS_NAMED)
#undef OV_IS_NAMED
    return pWrapper != nullptr ? reinterpret_cast<FARPROC>(const_cast<void*>(pWrapper))
                               : ::GetProcAddress(hModule, szName);
}

template <class Function>
const void* Address(Function* pFunction)
{
    return reinterpret_cast<const void*>(pFunction);
}

#define OV_ROW(function, failure)                                                                                      \
    { #function, Address(&::function), Address(&CWrapper<Call_##function, decltype(&::function)>::Call),               \
      static_cast<intptr_t>(failure) },
const CWatchedCall s_calls[] = {
    OV_FAILING_CALLS(OV_ROW){ "CloseHandle", Address(&::CloseHandle), Address(&Close), FALSE },
    { "RegCloseKey", Address(&::RegCloseKey), Address(&CloseKey), ERROR_ACCESS_DENIED },
    { "WaitForSingleObject", Address(&::WaitForSingleObject), Address(&Wait), static_cast<intptr_t>(WAIT_FAILED) },
    { "_beginthreadex", Address(&::_beginthreadex), Address(&BeginThread), 0 },
    { "GetProcAddress", Address(&::GetProcAddress), Address(&Find), 0 },
    OV_FAILING_FUNCTIONS(OV_ROW)
};
#undef OV_ROW

} // namespace

void WatchCalls(HMODULE hLibrary)
{
    for (unsigned n = 0; n <= Call_GetProcAddress; ++n)
        ReplaceImport(hLibrary, s_calls[n].pReal, s_calls[n].pWrapper);
}

void ArmFailure(const CCallFailure& failure)
{
    const std::lock_guard<std::mutex> guard(s_mutex);
    s_failure = failure;
    s_dwThreadId = ::GetCurrentThreadId();
    s_nCalls = 0;
    s_failed.clear();
}

std::string DisarmFailure()
{
    const std::lock_guard<std::mutex> guard(s_mutex);
    s_dwThreadId = 0;
    return s_failed;
}

std::vector<std::string> WatchedFunctions()
{
    std::vector<std::string> functions;
    for (const CWatchedCall& call : s_calls)
        functions.push_back(call.szFunction);
    return functions;
}

unsigned CountedCalls()
{
    const std::lock_guard<std::mutex> guard(s_mutex);
    return s_nCalls;
}
