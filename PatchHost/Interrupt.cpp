#include "Interrupt.h"

#include <csignal>

namespace
{

volatile std::sig_atomic_t s_bInterrupted = 0;

extern "C" void Note(int nSignal)
{
    s_bInterrupted = 1;
    std::signal(nSignal, SIG_DFL);
}

} // namespace

void NoteInterrupts()
{
    std::signal(SIGINT, &Note);
}

bool IsInterrupted()
{
    return s_bInterrupted != 0;
}
