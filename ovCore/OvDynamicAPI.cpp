#include "ovCore/OvDynamicAPI.h"

#include "Api_Kernel32.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvDynamicAPI";

} // namespace

COvDynamicAPI::COvDynamicAPI() = default;
COvDynamicAPI::~COvDynamicAPI() = default;

COvDynamicAPI& COvDynamicAPI::Get()
{
    OV_SCOPE(L"COvDynamicAPI::Get");
    static COvDynamicAPI s_api;
    return s_api;
}

void COvDynamicAPI::InitKernel32()
{
    OV_SCOPE(L"COvDynamicAPI::InitKernel32");
    const std::lock_guard<std::mutex> lock(m_lock);
    if (m_pKernel32 == nullptr)
        m_pKernel32 = std::make_unique<CApi_Kernel32>();
}

bool COvDynamicAPI::IsWow64Process(HANDLE hProcess, BOOL* pbWow64)
{
    OV_SCOPE(L"COvDynamicAPI::IsWow64Process");
    if (!COVOsVersion::GetCurrent().IsPlatform64())
        return true;
    InitKernel32();
    return !m_pKernel32->IsWow64Process(hProcess, pbWow64);
}

bool COvDynamicAPI::IsCurrentProcessWow64()
{
    OV_SCOPE(L"COvDynamicAPI::IsCurrentProcessWow64");
    BOOL bWow64 = FALSE;
    return !IsWow64Process(::GetCurrentProcess(), &bWow64) && bWow64;
}
