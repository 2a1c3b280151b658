#include "ovCore/OvStackTrace.h"

#include "ovCore/OvStringUtil.h"

namespace
{

constexpr DWORD s_nSpinCount = 4000;
constexpr DWORD s_nModeEvery = 1;   // records every thread
constexpr DWORD s_nModeStacked = 2; // records threads that have a stack

const wchar_t s_szKey[] = L"SOFTWARE\\Trevok\\Trevok Compliance Agent";

// Makes the instance while the library loads, before any thread can use it.
COvStackTrace* const s_pAtLoad = COvStackTrace::Get();

class CLock
{
public:
    explicit CLock(CRITICAL_SECTION& cs) noexcept : m_cs(cs) { ::EnterCriticalSection(&m_cs); }
    ~CLock() { ::LeaveCriticalSection(&m_cs); }
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

private:
    CRITICAL_SECTION& m_cs;
};

bool OpenSwitchKey(HKEY& hKey)
{
    return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, KEY_READ, &hKey) == ERROR_SUCCESS ||
           ::RegOpenKeyExW(HKEY_CURRENT_USER, s_szKey, 0, KEY_READ, &hKey) == ERROR_SUCCESS;
}

DWORD ReadMode()
{
    HKEY hKey = nullptr;
    if (!OpenSwitchKey(hKey))
        return 0;

    DWORD dwValue = 0;
    DWORD dwType = 0;
    DWORD dwSize = sizeof(dwValue);
    const LONG rc =
        ::RegQueryValueExW(hKey, L"StackTraceEnabled", nullptr, &dwType, reinterpret_cast<BYTE*>(&dwValue), &dwSize);
    ::RegCloseKey(hKey);
    const bool bUsable = rc == ERROR_SUCCESS && dwType == REG_DWORD && dwSize == sizeof(dwValue);
    return bUsable && (dwValue == s_nModeEvery || dwValue == s_nModeStacked) ? dwValue : 0;
}

} // namespace

COvStackTrace::COvStackTrace() noexcept
{
    ::InitializeCriticalSectionAndSpinCount(&m_cs, s_nSpinCount);
    m_nMode = ReadMode();
}

COvStackTrace::~COvStackTrace()
{
    ::DeleteCriticalSection(&m_cs);
}

std::atomic<COvStackTrace*> COvStackTrace::s_pTracer{ nullptr };

COvStackTrace* COvStackTrace::Make() noexcept
{
    static COvStackTrace tracer;
    s_pTracer.store(&tracer, std::memory_order_release);
    return &tracer;
}

bool COvStackTrace::Push(const wchar_t* szFunction, const wchar_t* szFile, LONG nLine, LONG* pDepth) noexcept
{
    if (!IsOn())
        return false;
    const CLock lock(m_cs);
    try
    {
        CFrameStack* const pStack = FindOrMakeStack();
        if (pStack == nullptr)
            return false;
        const LONG nDepth = static_cast<LONG>(pStack->size());
        pStack->push_back({ szFunction, szFile, nLine });
        *pDepth = nDepth;
        return true;
    }
    catch (...)
    {
        return false; // without memory the operation goes on, unrecorded
    }
}

/// The calling thread's stack; null when it has none and the mode makes none.
COvStackTrace::CFrameStack* COvStackTrace::FindOrMakeStack()
{
    const DWORD dwThreadId = ::GetCurrentThreadId();
    if (m_nMode == s_nModeEvery)
        return &m_mapStacks[dwThreadId];
    const auto it = m_mapStacks.find(dwThreadId);
    return it == m_mapStacks.end() ? nullptr : &it->second;
}

void COvStackTrace::Pop(LONG nDepth) noexcept
{
    const size_t nKeep = nDepth < 0 ? 0 : static_cast<size_t>(nDepth);
    const CLock lock(m_cs);
    const auto it = m_mapStacks.find(::GetCurrentThreadId());
    if (it == m_mapStacks.end())
        return;
    while (it->second.size() > nKeep)
        it->second.pop_back();
}

std::wstring COvStackTrace::Dump()
{
    const auto orUnknown = [](const wchar_t* szText) { return szText == nullptr ? L"unknown" : szText; };

    const CLock lock(m_cs);
    std::wstring text = L"\r";
    const auto it = m_mapStacks.find(::GetCurrentThreadId());
    if (it != m_mapStacks.end())
        for (const CFrame& frame : it->second)
            text.append(orUnknown(frame.m_szFunction))
                .append(L" [")
                .append(orUnknown(COvStringUtil::FileNameOf(frame.m_szFile)))
                .append(L":" + std::to_wstring(frame.m_nLine) + L"] ^\r");
    m_strLastDump = std::move(text);
    return m_strLastDump;
}
