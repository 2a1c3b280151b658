// The command line: what can be asked for, and what was.
#pragma once

#include "PatchHost/Options.h"

#include <optional>
#include <string>
#include <vector>

using CommandFunction = int (*)(const COptions&);

struct CRequest
{
    CommandFunction command;
    COptions options;
};

/// @param arguments  in UTF-8, without the program's name.
/// @return nothing when the help or the version was asked for, and written.
/// @throw CCommandError (usage).
std::optional<CRequest> ParseCommandLine(const std::vector<std::string>& arguments);
