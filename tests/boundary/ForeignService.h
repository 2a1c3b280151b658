// A service of another maker that lives in the client's process and breaks every rule. In a module of its own, which
// shares no unwinder with the client.
#pragma once

#include "TrevokPatchApi.h"

/// The calls into it, by what they are made on: the class, the object, its error object.
enum class ForeignCall
{
    None,
    Create,
    Query,
    FirstRelease, ///< of the interface that came from the creation
    LastRelease,
    SetState,
    GetState,
    GetDescription, ///< of the error object, which a failed GetState leaves
    ReleaseError
};

enum class Misdeed
{
    Throw,     ///< as ThrowAsHost
    Fault,     ///< reads an address that nobody may read
    AnswerNull ///< Create and Query succeed without an object
};

/// Its class object; nothing of it is counted or freed.
IUnknown* ForeignClass();

/// From now on this one call misbehaves. For those of the error object GetState fails.
void SetMisdeed(ForeignCall call, Misdeed misdeed);
