#include "PatchHost/Interrupt.h"

#include <csignal>
#include <cstdlib>

namespace
{

volatile std::sig_atomic_t s_bInterrupted = 0;
volatile std::sig_atomic_t s_bHeld = 0;

extern "C" void Note(int nSignal)
{
    if (s_bHeld == 0)
        std::_Exit(ExitInterrupted);
    s_bInterrupted = 1;
    std::signal(nSignal, SIG_DFL);
}

} // namespace

void NoteInterrupts()
{
    std::signal(SIGINT, &Note);
    std::signal(SIGTERM, &Note);
}

CInterruptHold::CInterruptHold()
{
    s_bHeld = 1;
}

CInterruptHold::~CInterruptHold()
{
    s_bHeld = 0;
}

bool IsInterrupted()
{
    return s_bInterrupted != 0;
}
