#include "PatchAdapter/GuardBoundary.h"

#include "PatchAdapter/AdapterEvidence.h"

void TraceCurrentException(CPatchTrace& trace, const wchar_t* szSource, LONG nLine, const wchar_t* szFunction) noexcept
{
    try
    {
        throw;
    }
    catch (const COvException& e)
    {
        trace.Exception(e);
    }
    catch (const std::exception& e)
    {
        trace.Exception(COvException(E_FAIL, szSource, nLine,
                                     COvEvidence(L"Exception Info", e) +
                                         InfoMsg(L"A runtime exception was encountered") + FunctionName(szFunction)));
    }
    catch (...)
    {
        trace.Exception(COvException(E_FAIL, szSource, nLine,
                                     InfoMsg(L"An unknown exception was encountered") + FunctionName(szFunction)));
    }
}
