// What the tests ask of a platform that the product does not: a source for each target.
#pragma once

#include "OvPlatform.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Captures, while it lives, every text that any thread sends to the debugger. One at a time.
class CDebuggerTexts
{
public:
    CDebuggerTexts();
    ~CDebuggerTexts();
    CDebuggerTexts(const CDebuggerTexts&) = delete;
    CDebuggerTexts& operator=(const CDebuggerTexts&) = delete;

    /// The texts since the last call, oldest first.
    std::vector<std::wstring> Take();
};

/// Pauses that take a thousandth of their time: the adapter's ten seconds become ten milliseconds. For the pauses of
/// one module, by default those of the program's own code. To be made before the adapter whose pauses it shortens and
/// destroyed after it, while the module is still loaded. One at a time.
class CFastPauses
{
public:
    explicit CFastPauses(HMODULE hModule = ::GetModuleHandleW(nullptr));
    ~CFastPauses();
    CFastPauses(const CFastPauses&) = delete;
    CFastPauses& operator=(const CFastPauses&) = delete;

private:
    HMODULE m_hModule;
};

/// An empty registry in place of the machine's, while it lives. One at a time. (On Windows without the two views.)
class CScratchRegistry
{
public:
    CScratchRegistry();
    ~CScratchRegistry();
    CScratchRegistry(const CScratchRegistry&) = delete;
    CScratchRegistry& operator=(const CScratchRegistry&) = delete;
};

/// While the result lives, each entry of a loaded module into a lock and each exit is seen before it is made.
std::shared_ptr<void> WatchLocks(HMODULE hModule, std::function<void(const void* pLock, bool bEnters)> seen);

/// What is in use in this process, in words.
std::string CountResources();

constexpr size_t PAGE_BYTES = 4096;

/// Whole pages that may be written, with one after them that nobody may read. They stay until the process ends.
char* PagesBeforeAWall(size_t nPages);

/// The most memory that the process has held at once, in MB.
unsigned PeakMemoryMb();
