// The status document taken apart.
#pragma once

#include "PatchHost/Output.h"

#include <string>

/// What a status document says.
struct CStatus
{
    std::string result; ///< "Same" or "NoRef"
    std::string revision;
    std::string policyType;
    std::string timestamp;
    std::string softwareVersion;
    bool bServiceRunning = false;
    bool bAssessmentEnabled = false;
    std::string installed; ///< of the update agent: "true", "false"; empty where the document says nothing
    std::string compatible;
    std::string currentVersion;
    std::string requiredVersion;
};

/// @param status  as the library hands it over. The thread must be in a COM apartment.
/// @throw std::runtime_error when it does not parse.
CStatus ParseStatus(const std::string& status);

/// Whether the policy is in force, and why, in words.
std::string Verdict(const CStatus& status);

CJson StatusJson(const CStatus& status);
