#include "HostThrow.h"

void ThrowAsHost()
{
    throw 5;
}
