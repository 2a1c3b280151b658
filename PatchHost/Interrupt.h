// Ctrl-C: the first one asks the command to end, the second one ends the program at once.
#pragma once

#include "Options.h"

/// From now on the first Ctrl-C is noted.
void NoteInterrupts();

bool IsInterrupted();

/// The exit code of a command that may have been interrupted.
inline int DoneUnlessInterrupted()
{
    return IsInterrupted() ? ExitInterrupted : ExitDone;
}
