// The life of a thread's message queue.
#pragma once

#include "Platform/Types.h"

namespace OvPlatform
{

/// The thread ends; its queue, if it had one, goes with the messages in it.
void CloseMessageQueue(DWORD nThreadId);

} // namespace OvPlatform
