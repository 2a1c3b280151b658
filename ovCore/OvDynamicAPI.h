// The process's table of kernel functions that may be missing.
#pragma once

#include "OvPlatform.h"

#include <memory>
#include <mutex>

class CApi_Kernel32;

/// Holds the process's one table of kernel functions. Any thread.
class COvDynamicAPI
{
public:
    /// The process's one holder, made at first use and kept until the library unloads.
    static COvDynamicAPI& Get();

    COvDynamicAPI(const COvDynamicAPI&) = delete;
    COvDynamicAPI& operator=(const COvDynamicAPI&) = delete;

    /// Makes the table unless it exists. Raises COvException E_FAIL when the kernel's library can't be loaded; the next
    /// call tries again.
    void InitKernel32();

    /// Asks whether a process runs as a 32-bit one on a 64-bit system.
    /// @param pbWow64  receives the answer; unchanged where the question is not answered.
    /// @return true when it was NOT answered: at once where the processor is not a 64-bit one.
    /// Raises as InitKernel32, and where the kernel does not know the question.
    bool IsWow64Process(HANDLE hProcess, BOOL* pbWow64);

    /// The answer for this process; false where there is none.
    bool IsCurrentProcessWow64();

private:
    COvDynamicAPI();
    ~COvDynamicAPI();

    std::mutex m_lock; // guards the making of the table
    std::unique_ptr<CApi_Kernel32> m_pKernel32;
};
