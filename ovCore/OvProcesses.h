// The running processes.
#pragma once

#include "ovCore/OVProcessInfo.h"

#include <map>
#include <memory>
#include <string>

/// Processes by id and by name, as they were when they were listed. A plain value: one thread at a time.
class COvProcessCollection
{
public:
    /// The number of processes. Raises COvException E_FAIL when the indexes have come apart.
    size_t GetCount() const;

    /// @param found  receives whether there is a process of that id.
    /// @return the process, or the entry that stands for none; it lives as long as this collection is not changed.
    const COvProcessInfo& GetByPID(DWORD dwProcessId, bool& found) const;

    /// Adds a process. An id that is there already stays as it was.
    /// @param path  the executable's path, or its name alone.
    /// Lets std::bad_alloc out; nothing has changed then.
    void AddProcess(const std::wstring& path, DWORD dwProcessId);

protected:
    using CEntry = std::shared_ptr<const COvProcessInfo>;

    std::map<DWORD, CEntry> m_processPIDIndex; // the two always hold the same entries
    std::multimap<std::wstring, CEntry> m_processNameIndex;
    COvProcessInfo m_empty; // what a look-up in vain returns
};

/// Lists processes, and keeps the last list. Belongs to one thread at a time. Failures are raised as COvException.
class COvProcesses
{
public:
    /// Lists the processes that run now. @return the list, which is kept until the next call.
    const COvProcessCollection& GetRunning();

    /// Looks an id up in the list that is kept; lists first when that one is empty.
    /// @param found  receives whether there is a process of that id.
    /// @return the process, or an entry that stands for none; it lives until the next call of GetRunning.
    const COvProcessInfo& GetProcess(DWORD processId, bool& found);

private:
    COvProcessCollection m_cache;
};
