#include "Api_Kernel32.h"

#include "ovCore/OvDynamicLib.h"
#include "ovCore/OvStackTrace.h"

namespace
{

constexpr wchar_t s_szSource[] = L"ovCore\\Api_Kernel32";

} // namespace

CApi_Kernel32::CApi_Kernel32()
    : m_pLibrary(std::make_unique<COvDynamicLib>(L"kernel32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32))
{
}

CApi_Kernel32::~CApi_Kernel32() = default;

BOOL CApi_Kernel32::IsWow64Process(HANDLE hProcess, BOOL* pbWow64) const
{
    OV_SCOPE(L"CApi_Kernel32::IsWow64Process");
    return m_pLibrary->GetProc<BOOL WINAPI(HANDLE, BOOL*)>(L"IsWow64Process", true)(hProcess, pbWow64);
}
