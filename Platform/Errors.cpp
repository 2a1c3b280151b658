#include "Platform/Errors.h"

namespace
{

thread_local DWORD t_dwLastError = 0;

} // namespace

DWORD GetLastError()
{
    return t_dwLastError;
}

void SetLastError(DWORD dwCode)
{
    t_dwLastError = dwCode;
}
