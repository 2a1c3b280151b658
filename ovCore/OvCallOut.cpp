#include "ovCore/OvCallOut.h"

// One compiler builds both sides here: an exception passes on its own, and every destructor on its way runs.

void OvRunOut(const COvCall& call)
{
    call();
}

void OvRunIn(const COvCall& call)
{
    call();
}

void OvRunThrough(const COvCall& call, const COvCall&)
{
    call();
}
