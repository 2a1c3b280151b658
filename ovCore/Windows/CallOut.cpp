#include "ovCore/OvCallOut.h"

#include "OvPlatform.h"
#include "SeTranslator.h"

#include <exception>

namespace
{

/// One call into the host, and what it threw.
struct CGuardedCall
{
    void (*pfnCall)(void*);
    void* pContext;
    std::exception_ptr pThrown;
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
        try
        {
            pCall->pfnCall(pCall->pContext);
        }
        catch (...)
        {
            pCall->pThrown = std::current_exception();
        }
    }

    /// The structured handler of a guarded call. Called again while frames are unwound, when there is nothing to do.
    EXCEPTION_DISPOSITION __cdecl OvOnException(EXCEPTION_RECORD* pException, CHandlerRecord* pRecord,
                                                    CONTEXT* pContext, void*)
    {
        const DWORD dwUnwinding = 0x2 | 0x4; // going out, or for good
        if ((pException->ExceptionFlags & dwUnwinding) == 0)
        {
            pRecord->pCall->pThrown = Translate(pException, pContext);
            if (pRecord->pCall->pThrown)
                OvEndGuarded(pRecord, pException);
        }
        return ExceptionContinueSearch;
    }
}

void OvCallGuarded(void (*pfnCall)(void*), void* pContext)
{
    CGuardedCall call = { pfnCall, pContext, nullptr };
    OvRunGuarded(&call);
    if (call.pThrown)
        std::rethrow_exception(call.pThrown);
}
