// Ctrl-C: while an adapter is at work the first one asks the command to end and the second one ends the program; while
// none is, the first one ends it.
#pragma once

#include "PatchHost/Options.h"

/// From now on Ctrl-C, and a request to terminate, end the program with the exit code of an interruption.
void NoteInterrupts();

/// While one lives, what it would lose must be put away first: an interrupt is noted and the command ends by itself.
class CInterruptHold
{
public:
    CInterruptHold();
    ~CInterruptHold();

    CInterruptHold(const CInterruptHold&) = delete;
    CInterruptHold& operator=(const CInterruptHold&) = delete;
};

bool IsInterrupted();

/// The exit code of a command that may have been interrupted.
inline int UnlessInterrupted(int nResult)
{
    return IsInterrupted() ? ExitInterrupted : nResult;
}
