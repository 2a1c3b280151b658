// The command `run`: the main job from end to end, against a simulated service.
#pragma once

#include "TraceSink.h"

#include <string>

struct CRunOptions
{
    std::string library; ///< the adapter library; a bare name is looked for beside the program
    std::string policy;  ///< the policy document's file, "-" for standard input
};

/// Applies the policy and shows what the service received, the recorded revision, the status document and the
/// notifications while the service goes away and comes back. Takes up to 30 seconds: the adapter looks for the service
/// every ten seconds.
/// @throw std::exception when a step did not happen.
void RunMainJob(const CRunOptions& options, CTraceSink& sink);
