#include "Host.h"

void ThrowAsHost()
{
    throw 5;
}
