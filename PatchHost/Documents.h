// Documents as they come from files.
#pragma once

#include "PatchHost/Options.h"

#include <string>

/// A file's bytes. @param file  UTF-8; "-" is standard input. @param unreadable  the code of the CCommandError that is
/// thrown when it cannot be read.
std::string ReadDocument(const std::string& file, ExitCode unreadable = ExitFailed);
