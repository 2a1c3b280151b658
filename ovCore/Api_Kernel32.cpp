#include "Api_Kernel32.h"

#include "OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\Api_Kernel32";

} // namespace

CApi_Kernel32::CApi_Kernel32() : COvDynamicLib(L"kernel32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32) {}

BOOL CApi_Kernel32::IsWow64Process(HANDLE hProcess, BOOL* pbWow64) const
{
    OV_SCOPE(L"CApi_Kernel32::IsWow64Process");
    return GetProc<BOOL WINAPI(HANDLE, BOOL*)>(L"IsWow64Process", true)(hProcess, pbWow64);
}
