// The revision that the adapter has recorded, as any other program of the machine would read it.
#pragma once

#include <optional>
#include <string>

/// The recorded policy revision in UTF-8; nothing when none was recorded.
/// @throw CCommandError (failed) when that cannot be read.
std::optional<std::string> ReadPolicyRevision();

/// The same for where a failure may not be thrown: empty when none was recorded, else the revision or why it cannot be
/// read.
std::string PolicyRevisionText();

/// Records a revision in the place of the adapter's. @throw CCommandError (failed) when it cannot be written.
void WritePolicyRevision(const std::string& revision);
