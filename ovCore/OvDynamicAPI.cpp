#include "OvDynamicAPI.h"

#include "Api_Kernel32.h"
#include "OVOsVersion.h"
#include "OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvDynamicAPI";

} // namespace

COvDynamicAPI::COvDynamicAPI() = default;
COvDynamicAPI::~COvDynamicAPI() = default;

COvDynamicAPI& COvDynamicAPI::Get()
{
    COvStackTraceScope scope(L"COvDynamicAPI::Get", s_szSource, __LINE__, COvStackTrace::Get());
    static COvDynamicAPI s_api;
    return s_api;
}

void COvDynamicAPI::InitKernel32()
{
    COvStackTraceScope scope(L"COvDynamicAPI::InitKernel32", s_szSource, __LINE__, COvStackTrace::Get());
    const std::lock_guard<std::mutex> lock(m_lock);
    if (m_pKernel32 == nullptr)
        m_pKernel32 = std::make_unique<CApi_Kernel32>();
}

bool COvDynamicAPI::IsWow64Process(HANDLE hProcess, BOOL* pbWow64)
{
    COvStackTraceScope scope(L"COvDynamicAPI::IsWow64Process", s_szSource, __LINE__, COvStackTrace::Get());
    if (!COVOsVersion::GetCurrent().IsPlatform64())
        return true;
    InitKernel32();
    return !m_pKernel32->IsWow64Process(hProcess, pbWow64);
}

bool COvDynamicAPI::IsCurrentProcessWow64()
{
    COvStackTraceScope scope(L"COvDynamicAPI::IsCurrentProcessWow64", s_szSource, __LINE__, COvStackTrace::Get());
    BOOL bWow64 = FALSE;
    return !IsWow64Process(::GetCurrentProcess(), &bWow64) && bWow64;
}
