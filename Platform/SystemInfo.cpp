#include "Platform/SystemInfo.h"

#include "Platform/Control.h"
#include "Platform/Kernel/KernelObject.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Process/SystemCalls.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <mutex>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

struct CCurrentRecord
{
    std::mutex lock;
    CSystemRecord record; // guarded by lock
};

CCurrentRecord& Current()
{
    static CCurrentRecord& s_current = *new CCurrentRecord;
    return s_current;
}

/// Answers from the record, which cannot change meanwhile.
template <class Answer>
auto FromRecord(Answer&& answer)
{
    const std::lock_guard<std::mutex> lock(Current().lock);
    return answer(static_cast<const CSystemRecord&>(Current().record));
}

void CopyServicePack(const std::wstring& servicePack, WCHAR (&szTarget)[128])
{
    const size_t nLength = std::min<size_t>(servicePack.size(), std::size(szTarget) - 1);
    std::fill(std::begin(szTarget), std::end(szTarget), L'\0');
    std::copy_n(servicePack.data(), nLength, szTarget);
}

/// The part of the extended structure that the plain one lacks.
void FillExtended(const CSystemRecord& record, OSVERSIONINFOEXW& info)
{
    info.wServicePackMajor = record.nServicePackMajor;
    info.wServicePackMinor = record.nServicePackMinor;
    info.wSuiteMask = record.nSuiteMask;
    info.wProductType = record.nProductType;
    info.wReserved = 0;
}

bool IsExtended(const OSVERSIONINFOW& info)
{
    return info.dwOSVersionInfoSize == sizeof(OSVERSIONINFOEXW);
}

void Fill(const CSystemRecord& record, OSVERSIONINFOW& info)
{
    info.dwPlatformId = record.nPlatformId;
    CopyServicePack(record.servicePack, info.szCSDVersion);
    if (IsExtended(info))
        FillExtended(record, reinterpret_cast<OSVERSIONINFOEXW&>(info));
}

void FillProcessor(WORD nProcessor, SYSTEM_INFO& info)
{
    info = {};
    info.wProcessorArchitecture = nProcessor;
    info.dwPageSize = static_cast<DWORD>(::sysconf(_SC_PAGESIZE));
    info.dwNumberOfProcessors = static_cast<DWORD>(::sysconf(_SC_NPROCESSORS_ONLN));
    info.dwAllocationGranularity = 0x10000;
}

} // namespace

void SetSystemRecord(const CSystemRecord& record)
{
    CSystemRecord copy = record;
    const std::lock_guard<std::mutex> lock(Current().lock);
    std::swap(Current().record, copy);
}

bool IsFunctionMissing(const char* szName)
{
    return FromRecord([&](const CSystemRecord& record) { return record.missingFunctions.count(szName) != 0; });
}

} // namespace OvPlatform

using namespace OvPlatform;

void GetSystemTime(SYSTEMTIME* pTime)
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t nSeconds = system_clock::to_time_t(now);
    const auto nMilliseconds = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm fields = {};
    ::gmtime_r(&nSeconds, &fields);
    *pTime = { static_cast<WORD>(fields.tm_year + 1900), static_cast<WORD>(fields.tm_mon + 1),
               static_cast<WORD>(fields.tm_wday),        static_cast<WORD>(fields.tm_mday),
               static_cast<WORD>(fields.tm_hour),        static_cast<WORD>(fields.tm_min),
               static_cast<WORD>(fields.tm_sec),         static_cast<WORD>(nMilliseconds) };
}

BOOL GetVersionExW(LPOSVERSIONINFOW pInfo)
{
    return FromRecord([&](const CSystemRecord& record) {
        if (!record.bHasVersionInfo)
            return Fail(ERROR_NOT_SUPPORTED, FALSE);
        const bool bPlain = pInfo->dwOSVersionInfoSize == sizeof(OSVERSIONINFOW);
        if (!bPlain && !(IsExtended(*pInfo) && record.bHasExtendedInfo))
            return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
        pInfo->dwMajorVersion = record.nReportedMajor;
        pInfo->dwMinorVersion = record.nReportedMinor;
        pInfo->dwBuildNumber = record.nReportedBuild;
        Fill(record, *pInfo);
        return TRUE;
    });
}

void GetSystemInfo(LPSYSTEM_INFO pInfo)
{
    FillProcessor(FromRecord([](const CSystemRecord& record) { return record.nProcessProcessor; }), *pInfo);
}

int GetSystemMetrics(int nIndex)
{
    return FromRecord([&](const CSystemRecord& record) -> int {
        switch (nIndex)
        {
        case SM_TABLETPC:
            return record.bTabletPc;
        case SM_MEDIACENTER:
            return record.bMediaCenter;
        case SM_STARTER:
            return record.bStarter;
        case SM_SERVERR2:
            return record.nServerR2;
        default:
            return 0;
        }
    });
}

void GetNativeSystemInfo(LPSYSTEM_INFO pInfo)
{
    FillProcessor(FromRecord([](const CSystemRecord& record) { return record.nNativeProcessor; }), *pInfo);
}

BOOL GetProductInfo(DWORD, DWORD, DWORD, DWORD, DWORD* pdwType)
{
    *pdwType = FromRecord([](const CSystemRecord& record) { return record.nProductInfo; });
    return TRUE;
}

BOOL IsWow64Process(HANDLE hProcess, BOOL* pbWow64)
{
    if (!FindEntry(hProcess).pObject)
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    *pbWow64 = FromRecord([](const CSystemRecord& record) { return record.bWow64; });
    return TRUE;
}

LONG RtlGetVersion(OSVERSIONINFOW* pInfo)
{
    FromRecord([&](const CSystemRecord& record) {
        pInfo->dwMajorVersion = record.nTrueMajor;
        pInfo->dwMinorVersion = record.nTrueMinor;
        pInfo->dwBuildNumber = record.nTrueBuild;
        Fill(record, *pInfo);
    });
    return 0;
}
