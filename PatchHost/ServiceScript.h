// What the simulated service does, as a script in JSON says it.
#pragma once

#include "AgentSimulator/AgentSimulator.h"

#include <map>
#include <string>
#include <vector>

/// A thing that the service does at a time.
struct CServiceStep
{
    enum class Action
    {
        Start, ///< the class is there and the event is signalled
        Stop,  ///< the event goes, the class answers that the service cannot be started
        Hang,  ///< the event is there, but not signalled
        Set    ///< values change
    };

    unsigned nAtMs = 0; ///< since the adapter was made
    Action action = Action::Start;
    std::map<LONG, CAgentValue> values;
};

struct CServiceScript
{
    CServiceStep::Action initially = CServiceStep::Action::Start;
    std::map<LONG, CAgentValue> values;
    std::vector<CAgentFault> faults;
    std::vector<CServiceStep> steps; ///< in the order of their times
};

/// @param text  JSON in UTF-8; empty stands for a service that runs, with the values of a healthy agent.
/// @throw CCommandError (usage) with a sentence that names what is wrong.
CServiceScript ParseServiceScript(const std::string& text);

/// What the script can say, for the command line's help.
extern const char* const g_szServiceScriptHelp;
