// The ways out of this library into code that is not ours: the host's, and that of the service's objects.
#pragma once

#include <memory>
#include <type_traits>

/// Stands for an exception of another compiler, which this library cannot take as what it is.
struct COvForeignException
{
};

/// A function object by reference.
struct COvCall
{
    void (*pfnCall)(void*);
    void* pContext;

    void operator()() const { pfnCall(pContext); }
};

template <class Call>
COvCall OvReferTo(Call& call) noexcept
{
    return { [](void* pCall) { (*static_cast<Call*>(pCall))(); },
             const_cast<std::remove_const_t<Call>*>(std::addressof(call)) };
}

// What the templates below do.
void OvRunOut(const COvCall& call);
void OvRunIn(const COvCall& call);
void OvRunThrough(const COvCall& call, const COvCall& passed);

/// Makes a call into foreign code: a callback, the log sink, an object of the service.
/// @param call  a function object without arguments. It makes that one call and holds nothing to clean up: a foreign
///              exception skips what lies between the call and here.
/// What the call throws goes on to the caller. The C++ exceptions of another compiler arrive as COvForeignException,
/// the foreign frames unwound by their own rules. A machine fault is translated on a thread with a translator, and left
/// to the host's handlers on every other thread.
template <class Call>
void OvCallOut(Call&& call)
{
    OvRunOut(OvReferTo(call));
}

/// Runs a body of ours: a worker's, or an operation that the host has called. A machine fault in this library's code is
/// translated where it comes, its clean-ups included, whoever stands between this body and the thread's translator.
/// What comes from code below it that cannot be unwound is treated as OvCallOut treats it; it skips the clean-ups up to
/// here, so no lock may be held there but by a call that goes through OvCallOut.
template <class Call>
void OvCallIn(Call&& call)
{
    OvRunIn(OvReferTo(call));
}

/// Makes a call into the host whose exceptions are the host's own: whatever it throws passes.
/// @param passed  called when an exception passes that runs no destructor of ours; must not throw.
template <class Call, class Passed>
void OvCallThrough(Call&& call, Passed&& passed)
{
    OvRunThrough(OvReferTo(call), OvReferTo(passed));
}

/// Releases a foreign object. What that throws is dropped.
struct COvReleaseForeign
{
    template <class T>
    void operator()(T* p) const noexcept
    {
        try
        {
            OvCallOut([p] { p->Release(); });
        }
        catch (...)
        {
            // the object is given up, whatever became of it
        }
    }
};

/// Owns one reference to a foreign object.
template <class T>
using COvForeignPtr = std::unique_ptr<T, COvReleaseForeign>;
