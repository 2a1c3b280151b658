#include "ovCore/OvCallOut.h"

#include "ovCore/Windows/SeTranslator.h"
#include "OvPlatform.h"

#include <exception>

namespace
{

/// One call under a structured handler, and what it threw.
struct CGuardedCall
{
    const COvCall& call;
    const COvCall* pPassed = nullptr; // set: exceptions pass, and this is called when one does
    bool bOwnCode = false;
    const void* pOuterLimit = nullptr; // of our own code, while this call has its own
    std::exception_ptr pThrown = nullptr;
};

/// The handler's record in the list of the thread's structured handlers, as OvRunGuarded lays it out.
struct CHandlerRecord
{
    const void* pNext;
    const void* pfnHandler;
    CGuardedCall* pCall;
};

/// What a structured exception is to our side: null when it is not for us.
std::exception_ptr Translate(EXCEPTION_RECORD* pException, CONTEXT* pContext) noexcept
{
    if (pException->ExceptionCode == OvMsCppException)
        return std::make_exception_ptr(COvForeignException());
    const _se_translator_function pfnTranslator = OvTranslatorFor(pException->ExceptionCode);
    if (pfnTranslator == nullptr)
        return nullptr;
    try
    {
        EXCEPTION_POINTERS pointers = { pException, pContext };
        pfnTranslator(pException->ExceptionCode, &pointers);
    }
    catch (...)
    {
        return std::current_exception();
    }
    return nullptr;
}

} // namespace

extern "C"
{
    void OvRunGuarded(CGuardedCall* pCall);
    [[noreturn]] void OvEndGuarded(CHandlerRecord* pRecord, EXCEPTION_RECORD* pException);

    /// What OvRunGuarded calls. A C++ exception of our own compiler ends here, since it would leave the handler's
    /// record in the list.
    void OvMakeGuardedCall(CGuardedCall* pCall) noexcept
    {
        if (pCall->bOwnCode)
            pCall->pOuterLimit = OvLimitOwnCode();
        try
        {
            pCall->call();
        }
        catch (...)
        {
            pCall->pThrown = std::current_exception();
        }
    }

    /// The structured handler of a guarded call. Called again while frames are unwound.
    EXCEPTION_DISPOSITION __cdecl OvOnException(EXCEPTION_RECORD* pException, CHandlerRecord* pRecord,
                                                CONTEXT* pContext, void*)
    {
        const DWORD dwUnwinding = 0x2 | 0x4; // going out, or for good
        const bool bUnwinding = (pException->ExceptionFlags & dwUnwinding) != 0;
        CGuardedCall& call = *pRecord->pCall;
        if (call.pPassed != nullptr)
        {
            if (bUnwinding)
                (*call.pPassed)();
        }
        else if (!bUnwinding)
        {
            call.pThrown = Translate(pException, pContext);
            if (call.pThrown)
                OvEndGuarded(pRecord, pException);
        }
        return ExceptionContinueSearch;
    }
}

namespace
{

void Run(CGuardedCall call)
{
    OvRunGuarded(&call);
    if (call.pOuterLimit != nullptr)
        OvRestoreOwnCode(call.pOuterLimit);
    if (call.pThrown)
        std::rethrow_exception(call.pThrown);
}

} // namespace

void OvRunOut(const COvCall& call)
{
    Run({ call });
}

void OvRunIn(const COvCall& call)
{
    Run({ call, nullptr, true });
}

void OvRunThrough(const COvCall& call, const COvCall& passed)
{
    Run({ call, &passed });
}
