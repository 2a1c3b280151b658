// What the tests of kernel objects share.
#pragma once

#include "OvPlatform.h"

#include <memory>
#include <type_traits>

struct CCloseHandle
{
    void operator()(HANDLE h) const noexcept { ::CloseHandle(h); }
};
using CTestHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CCloseHandle>;

inline CTestHandle MakeEvent(bool bManual, bool bSignalled, const wchar_t* szName = nullptr)
{
    return CTestHandle(::CreateEventW(nullptr, bManual, bSignalled, szName));
}

/// A last error that no call leaves behind.
constexpr DWORD UntouchedError = 0xABCD;

/// What the call leaves as the last error.
template <class Call>
DWORD LastErrorAfter(Call&& call)
{
    ::SetLastError(UntouchedError);
    call();
    return ::GetLastError();
}
