// The patch service that the adapter meets while this program drives it.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "PatchHost/Options.h"
#include "PatchHost/ServiceScript.h"

#include <functional>
#include <string>
#include <thread>

/// The service's event as this process sees it.
AgentEvent SeenEvent();

/// Puts the service in place when made and takes it away when destroyed. But for the installed one, nothing that the
/// adapter does reaches a service of the machine: the class is this process's own.
/// The thread must be in the multithreaded apartment, and stay there.
class CPatchService
{
public:
    /// @param script  in JSON; see ParseServiceScript.
    /// @throw CCommandError when the machine's own service runs and stands in the way.
    CPatchService(ServiceKind kind, const std::string& script);
    ~CPatchService();

    CPatchService(const CPatchService&) = delete;
    CPatchService& operator=(const CPatchService&) = delete;

    void Do(const CServiceStep& step);

    /// Begins with the script's steps, on a thread of its own.
    /// @param told  called there with a word for each step, after it was done.
    void BeginSteps(std::function<void(const std::string&)> told);
    bool HasSteps() const { return !m_script.steps.empty(); }

    /// What it received last; nothing is known of an installed one.
    std::optional<std::wstring> GetLastSettings() const;
    void ForgetSettings() { m_simulator.ClearRecords(); }

private:
    void CheckForeignEvent(ServiceKind kind);
    void RunSteps(const std::function<void(const std::string&)>& told);

    const CServiceScript m_script;
    CAgentSimulator m_simulator;
    bool m_bForeign = false; ///< the event is the machine's own service's
    const HANDLE m_hEnd;     ///< manual-reset: no more steps
    std::thread m_steps;
};
