#include "Platform/Events.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/Waitable.h"

#include <map>
#include <string>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap EventAccess = { READ_CONTROL | 1, READ_CONTROL | EVENT_MODIFY_STATE, READ_CONTROL | SYNCHRONIZE,
                                     EVENT_ALL_ACCESS };
constexpr wchar_t LocalPrefix[] = L"Local\\";
constexpr wchar_t GlobalPrefix[] = L"Global\\";

class CEvent;

/// The named events that have an open handle; guarded by the kernel lock, never destroyed.
std::map<std::wstring, CEvent*>& NamedEvents()
{
    static auto& s_events = *new std::map<std::wstring, CEvent*>;
    return s_events;
}

class CEvent final : public CWaitable
{
public:
    CEvent(bool bManualReset, bool bSignalled, const std::wstring& name)
        : CWaitable(EventAccess), m_bManualReset(bManualReset), m_bSignalled(bSignalled), m_name(name)
    {
    }

    bool IsSignalled() const override { return m_bSignalled; }
    void OnWaited() override { m_bSignalled = m_bManualReset; }

    void Set()
    {
        m_bSignalled = true;
        WakeWaiters();
    }
    void Reset() { m_bSignalled = false; }

private:
    void OnLastHandleClosed() override
    {
        if (!m_name.empty())
            NamedEvents().erase(m_name);
    }

    const bool m_bManualReset;
    bool m_bSignalled;         // guarded by the kernel lock
    const std::wstring m_name; // empty: none
};

bool HasPrefix(const std::wstring& name, const wchar_t* szPrefix)
{
    return name.rfind(szPrefix, 0) == 0;
}

/// The name without its name space's prefix where that is the local one. False for a name that cannot be.
bool ToTableName(LPCWSTR szName, std::wstring& name)
{
    name = szName ? szName : L"";
    if (HasPrefix(name, LocalPrefix))
        name.erase(0, std::size(LocalPrefix) - 1);
    const size_t nPrefix = HasPrefix(name, GlobalPrefix) ? std::size(GlobalPrefix) - 1 : 0;
    return name.find(L'\\', nPrefix) == std::wstring::npos;
}

CEvent* FindNamed(const std::wstring& name)
{
    const auto found = NamedEvents().find(name);
    return found == NamedEvents().end() ? nullptr : found->second;
}

HANDLE CreateOrOpen(bool bManualReset, bool bSignalled, const std::wstring& name)
{
    const std::lock_guard<std::mutex> lock(KernelLock());
    if (CEvent* pExisting = FindNamed(name))
    {
        const HANDLE hExisting = OpenHandleLocked(pExisting->shared_from_this(), EVENT_ALL_ACCESS);
        return Fail(ERROR_ALREADY_EXISTS, hExisting);
    }
    const auto pEvent = std::make_shared<CEvent>(bManualReset, bSignalled, name);
    std::map<std::wstring, CEvent*> entry; // made before the handle, so that nothing can fail behind it
    if (!name.empty())
        entry.emplace(name, pEvent.get());
    const HANDLE hEvent = OpenHandleLocked(pEvent, EVENT_ALL_ACCESS);
    NamedEvents().merge(entry);
    return Fail(ERROR_SUCCESS, hEvent);
}

/// Does something to the event behind a handle, with the kernel lock held.
template <class Action>
BOOL ChangeEvent(HANDLE hEvent, Action&& action)
{
    const auto pEvent = FindObject<CEvent>(hEvent, EVENT_MODIFY_STATE);
    if (!pEvent)
        return FALSE;
    const std::lock_guard<std::mutex> lock(KernelLock());
    action(*pEvent);
    return TRUE;
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES pAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR szName)
{
    if (pAttributes && pAttributes->lpSecurityDescriptor)
        return Fail<HANDLE>(ERROR_NOT_SUPPORTED, nullptr);
    return OrNoMemory<HANDLE>(nullptr, [&] {
        std::wstring name;
        return ToTableName(szName, name) ? CreateOrOpen(bManualReset != FALSE, bInitialState != FALSE, name)
                                         : Fail<HANDLE>(ERROR_PATH_NOT_FOUND, nullptr);
    });
}

HANDLE OpenEventW(DWORD dwAccess, BOOL, LPCWSTR szName)
{
    if (!szName)
        return Fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
    return OrNoMemory<HANDLE>(nullptr, [&] {
        std::wstring name;
        if (!ToTableName(szName, name))
            return Fail<HANDLE>(ERROR_PATH_NOT_FOUND, nullptr);
        const std::lock_guard<std::mutex> lock(KernelLock());
        CEvent* pEvent = FindNamed(name);
        return pEvent ? OpenHandleLocked(pEvent->shared_from_this(), dwAccess)
                      : Fail<HANDLE>(ERROR_FILE_NOT_FOUND, nullptr);
    });
}

BOOL SetEvent(HANDLE hEvent)
{
    return ChangeEvent(hEvent, [](CEvent& event) { event.Set(); });
}

BOOL ResetEvent(HANDLE hEvent)
{
    return ChangeEvent(hEvent, [](CEvent& event) { event.Reset(); });
}
