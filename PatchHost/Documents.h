// Documents as they come from files.
#pragma once

#include "PatchHost/Options.h"

#include <string>

/// A file's bytes. @param file  UTF-8; "-" is standard input. @param nLimit  the most bytes that it may hold.
/// @param failed  the code of the CCommandError that is thrown when it cannot be read or holds more.
std::string ReadFile(const std::string& file, size_t nLimit, ExitCode failed);

/// A policy document's bytes, with a note when it holds a NUL. @throw CCommandError (failed) as ReadFile does.
std::string ReadDocument(const std::string& file);
