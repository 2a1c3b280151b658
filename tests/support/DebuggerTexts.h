// What the process sends to the debugger output stream.
#pragma once

#include <string>
#include <vector>

/// Captures, while it lives, every text that any thread sends. One at a time.
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
