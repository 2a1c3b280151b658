// The commands, a source file each. Each returns its exit code, and throws CCommandError, CLibraryError or another
// std::exception when it cannot do its work.
#pragma once

#include "PatchHost/Options.h"

int InfoCommand(const COptions& options);
int ValidateCommand(const COptions& options);
int TranslateCommand(const COptions& options);
int ApplyCommand(const COptions& options);
int StatusCommand(const COptions& options);
int WatchCommand(const COptions& options);
int StateCommand(const COptions& options);
int RecordCommand(const COptions& options);
int ReplayCommand(const COptions& options);
int CheckCommand(const COptions& options);

/// The main job from end to end, against a simulated service.
int RunCommand(const COptions& options);
