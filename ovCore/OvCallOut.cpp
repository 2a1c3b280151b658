#include "ovCore/OvCallOut.h"

// One compiler builds both sides here: an exception passes on its own.
void OvCallGuarded(void (*pfnCall)(void*), void* pContext)
{
    pfnCall(pContext);
}
