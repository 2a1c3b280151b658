// The COM objects of the simulated service. Internal to the simulator.
#pragma once

#include "AgentSimulator/AgentState.h"

/// The service's class object, with one reference for the caller. It keeps the state alive.
IUnknown* MakeClassObject(const std::shared_ptr<CAgentState>& pState);

/// Makes an error object the calling thread's.
void LeaveErrorObject(CAgentState& state, const CAgentErrorObject& content);
