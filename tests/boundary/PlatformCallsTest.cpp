// What the library asks of the platform, call by call: a pause of another length, a right too many, a lock that is not
// held, an apartment that is not entered would be a fault that no document shows. Every value stands here literally.
#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "LoadedLibrary.h"
#include "Operations.h"
#include "Recording.h"
#include "ReplacedCalls.h"
#include "RevisionRecord.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <map>

namespace
{

const char s_szPolicy[] = "<?xml version='1.0'?><policy type='patch'><Comp RevID='rev-2' policyType='1'/>"
                          "<configuration/></policy>";

/// The calls of the host's thread and of the monitor's, each in its order. The monitor stays in each of its pauses
/// until it is let go on, and after the stop event has been set.
class CCalls
{
public:
    void Note(const std::string& line)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_lines[IsHost() ? 0 : 1] += line + "\n";
    }

    void Pause()
    {
        if (IsHost())
            return;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_bPaused = true;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return !m_bPaused || m_bStopping; });
    }

    void LetGo()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bStopping = true;
        m_changed.notify_all();
    }

    /// What the monitor does from the pause it is in up to the next one.
    std::string UpToThePause()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return m_bPaused; })) << m_lines[1];
        return std::exchange(m_lines[1], {});
    }

    std::string GoOn()
    {
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_bPaused = false;
            m_changed.notify_all();
        }
        return UpToThePause();
    }

    std::string OfHost(const std::function<void()>& work)
    {
        Take(0);
        work();
        return Take(0);
    }

    std::string Take(unsigned nThread)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return std::exchange(m_lines[nThread], {});
    }

    template <class T>
    T Named(T pWhat, const char* szName)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_names[pWhat] = szName;
        return pWhat;
    }

    std::string NameOf(const void* pWhat)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto found = m_names.find(pWhat);
        return found == m_names.end() ? "" : found->second;
    }

    bool IsHost() const { return ::GetCurrentThreadId() == m_dwHost; }

private:
    const DWORD m_dwHost = ::GetCurrentThreadId();
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    std::string m_lines[2];
    std::map<const void*, std::string> m_names; // of handles and locks
    bool m_bPaused = false;
    bool m_bStopping = false;
};

class PlatformCalls : public testing::Test
{
protected:
    PlatformCalls();
    ~PlatformCalls() override { m_agent.Stop(); }

    void Initialise() { m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, nullptr, nullptr); }
    void Uninitialise() { m_pFactory->Uninitialise(m_pAdapter); }

    const CComApartment m_apartment;
    const CScratchRegistry m_registry;
    CAgentSimulator m_agent;
    const CLoadedLibrary m_library;
    CCalls m_calls;
    CListener m_host{ [this] { m_calls.Note("the host is told"); } };
    IAdapterFactory* const m_pFactory = m_library.MakeFactory();
    IAdapter* m_pAdapter = nullptr;
    size_t m_nLocks = 0; // that have a name

private:
    std::string Shown(LPCWSTR szText)
    {
        return szText == nullptr ? "0" : std::string(szText, szText + ::wcslen(szText));
    }
    std::string Shown(HANDLE h) { return h == nullptr ? "0" : m_calls.NameOf(h).empty() ? "#" : m_calls.NameOf(h); }
    std::string Shown(const HANDLE* p) { return Shown(p[0]) + "," + Shown(p[1]); } // where two are waited for
    std::string Shown(HKEY h) { return h == HKEY_LOCAL_MACHINE ? "HKLM" : h == HKEY_CURRENT_USER ? "HKCU" : "#"; }
    std::string Shown(REFGUID guid)
    {
        wchar_t szGuid[39] = {};
        ::StringFromGUID2(guid, szGuid, 39);
        return Shown(LPCWSTR{ szGuid });
    }
    template <class T>
    std::string Shown(T* p)
    {
        return p == nullptr ? "0" : "#";
    }
    template <class T>
    std::enable_if_t<std::is_integral_v<T>, std::string> Shown(T value)
    {
        return std::to_string(value);
    }

    template <class... Arguments>
    void Note(const char* szCall, const Arguments&... arguments)
    {
        m_calls.Note((std::string(szCall) + ... + (" " + Shown(arguments))));
    }

    std::shared_ptr<void> m_pLocks;
    CReplacedCalls m_replaced{ m_library.GetModule() };
};

// Our keys are asked for in the 64-bit view, which is the one that a 64-bit program has anyway.
REGSAM OwnView(LPCWSTR szKey)
{
    return sizeof(void*) == 8 && ::wcsstr(szKey, L"Trevok") != nullptr ? KEY_WOW64_64KEY : 0;
}

// A call that is noted and then made.
#define OV_NOTED(function)                                                                                             \
    m_replaced.Replace(&::function, [this](auto... arguments) {                                                        \
        Note(#function, arguments...);                                                                                 \
        return ::function(arguments...);                                                                               \
    })

PlatformCalls::PlatformCalls()
{
    OV_NOTED(CoCreateGuid);
    OV_NOTED(CoCreateInstance);
    OV_NOTED(CoInitializeEx);
    OV_NOTED(CoUninitialize);
    OV_NOTED(LoadLibraryExW);
    OV_NOTED(MsgWaitForMultipleObjects);
    OV_NOTED(RegSetValueExW);
    OV_NOTED(WaitForMultipleObjects);
    OV_NOTED(WaitForSingleObject);
    m_replaced.Replace(&::RegCreateKeyExW,
                       [this](HKEY hKey, LPCWSTR szKey, DWORD dwZero, LPWSTR szClass, DWORD dwOptions,
                              REGSAM samDesired, LPSECURITY_ATTRIBUTES p, PHKEY phKey, LPDWORD pdw) {
                           Note("RegCreateKeyExW", hKey, szKey, dwOptions, samDesired | OwnView(szKey), p);
                           return ::RegCreateKeyExW(hKey, szKey, dwZero, szClass, dwOptions, samDesired, p, phKey, pdw);
                       });
    m_replaced.Replace(&::RegOpenKeyExW,
                       [this](HKEY hKey, LPCWSTR szKey, DWORD dwOptions, REGSAM samDesired, PHKEY phKey) {
                           Note("RegOpenKeyExW", hKey, szKey, samDesired | OwnView(szKey));
                           return ::RegOpenKeyExW(hKey, szKey, dwOptions, samDesired, phKey);
                       });
    m_replaced.Replace(&::Sleep, [this](DWORD dwMs) {
        Note("Sleep", dwMs);
        if (dwMs != 0)
            m_calls.Pause();
    });
    m_replaced.Replace(&::CreateEventW, [this](LPSECURITY_ATTRIBUTES p, BOOL bManual, BOOL bSet, LPCWSTR szName) {
        Note("CreateEventW", p, bManual, bSet, szName);
        return m_calls.Named(::CreateEventW(p, bManual, bSet, szName), "stop");
    });
    m_replaced.Replace(&::OpenEventW, [this](DWORD dwAccess, BOOL bInherit, LPCWSTR szName) {
        Note("OpenEventW", dwAccess, bInherit, szName);
        return m_calls.Named(::OpenEventW(dwAccess, bInherit, szName), "service");
    });
    m_replaced.Replace(&::CloseHandle, [this](HANDLE h) {
        if (m_calls.NameOf(h) != "") // another thread may get the number anew as soon as it is closed
            Note("CloseHandle", h);
        m_calls.Named(h, "");
        return ::CloseHandle(h);
    });
    m_replaced.Replace(&::SetEvent, [this](HANDLE h) {
        Note("SetEvent", h);
        const BOOL bDone = ::SetEvent(h);
        m_calls.LetGo();
        return bDone;
    });
    m_pLocks = WatchLocks(m_library.GetModule(), [this](const void* p, bool bEnters) {
        static const char* const s_names[] = { "observers", "status" }; // in the order in which the test meets them
        if (m_calls.IsHost() && m_pAdapter != nullptr && m_nLocks < std::size(s_names) && m_calls.NameOf(p) == "")
            m_calls.Named(p, s_names[m_nLocks++]);
        if (m_calls.NameOf(p) != "")
            m_calls.Note((bEnters ? "lock " : "unlock ") + m_calls.NameOf(p));
    });
    for (const AgentCall call : { AgentCall::SetState, AgentCall::GetState })
    {
        CAgentFault noted{ call, S_OK };
        noted.action = [this, call] { m_calls.Note(call == AgentCall::SetState ? "SetState" : "GetState"); };
        m_agent.AddFault(noted);
    }
}

// Pieces of what is expected.
#define OPEN_SERVICE "OpenEventW 1179648 0 Global\\_HDQ_EVENT_03_\n"
#define PROBE_FOUND OPEN_SERVICE "WaitForSingleObject service 0\nCloseHandle service\n"
#define CONNECT                                                                                                        \
    "CoCreateInstance {6F1D2C84-3B57-4E0A-9C41-7A5E0D93B2F6} 0 23 {00000000-0000-0000-C000-000000000046} #\n"
#define STATUS_FOUND                                                                                                   \
    "lock status\n" PROBE_FOUND CONNECT "GetState\nGetState\nGetState\nGetState\nGetState\nGetState\nunlock status\n"
#define STATUS_NONE "lock status\n" OPEN_SERVICE "Sleep 0\nWaitForSingleObject 0 0\nunlock status\n"
#define TELL "lock observers\nthe host is told\nunlock observers\n"
#define LOAD_DOM                                                                                                       \
    "CoCreateInstance {88D96A05-F192-11D4-A65F-0040963251E5} 0 1 {00000000-0000-0000-C000-000000000046} #\n"
#define READ_COMP "lock status\nunlock status\n"
#define REVISION_KEY "HKLM SOFTWARE\\Trevok\\Trevok Patch Agent "
#define MONITOR_LOOKS "WaitForSingleObject stop 0\n" OPEN_SERVICE

} // namespace

TEST_F(PlatformCalls, AreTheseAndNoOthers)
{
    EXPECT_EQ("CreateEventW 0 1 0 0\n"
              "LoadLibraryExW NTDLL.DLL 0 2048\nLoadLibraryExW kernel32.dll 0 2048\n"
              "RegOpenKeyExW HKLM SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion 131097\n"
              "RegOpenKeyExW HKLM SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion 131097\n"
              "RegOpenKeyExW HKLM System\\CurrentControlSet\\Control\\Terminal Server 131097\n"
              "RegOpenKeyExW HKLM System\\WPA\\MediaCenter 131097\n"
              "RegOpenKeyExW HKLM System\\WPA\\TabletPC 131097\n"
              "LoadLibraryExW kernel32.dll 0 2048\n"
              "RegCreateKeyExW " REVISION_KEY "0 983359 0\nRegOpenKeyExW " REVISION_KEY "131353\n",
              m_calls.OfHost([&] { Initialise(); }));
    EXPECT_EQ("CoInitializeEx 0 0\n" MONITOR_LOOKS "Sleep 10000\n", m_calls.UpToThePause());
    EXPECT_EQ("lock observers\nunlock observers\n",
              m_calls.OfHost([&] { m_pAdapter->DeRegisterStateObserver(nullptr); }));
    EXPECT_EQ("lock status\n" OPEN_SERVICE "Sleep 0\nWaitForSingleObject 0 0\n"
              "LoadLibraryExW version.dll 0 2048\nunlock status\nthe host is told\n", // for the version, which is kept
              m_calls.OfHost([&] { m_pAdapter->GetStatus(&m_host); }));
    EXPECT_EQ(LOAD_DOM READ_COMP "CoCreateGuid #\n" OPEN_SERVICE "Sleep 0\nWaitForSingleObject 0 0\n",
              m_calls.OfHost([&] { m_pAdapter->SetConfiguration(s_szPolicy); }));
    EXPECT_EQ("the host is told\n", m_calls.OfHost([&] {
        m_pAdapter->GetConfiguration(&m_host);
        m_pAdapter->GetStatus(nullptr);
        CallUnimplemented(*m_pAdapter, nullptr);
    }));

    ASSERT_TRUE(m_agent.Start());
    EXPECT_EQ("lock observers\n" STATUS_FOUND "the host is told\nunlock observers\n",
              m_calls.OfHost([&] { m_pAdapter->RegisterStateObserver(&m_host); }));
    for (unsigned nTransitions = 0; nTransitions < 25; ++nTransitions)
    {
        m_agent.Start();
        ASSERT_EQ(MONITOR_LOOKS
                  "WaitForMultipleObjects 2 stop,service 0 0\nCloseHandle service\n" STATUS_FOUND TELL MONITOR_LOOKS
                  "Sleep 10000\n",
                  m_calls.GoOn());
        ASSERT_EQ("CloseHandle service\n" MONITOR_LOOKS "Sleep 10000\n", m_calls.GoOn());
        m_agent.Stop();
        ASSERT_EQ("CloseHandle service\n" MONITOR_LOOKS "Sleep 0\n" STATUS_NONE TELL MONITOR_LOOKS "Sleep 10000\n",
                  m_calls.GoOn());
    }

    ASSERT_TRUE(m_agent.Start());
    EXPECT_EQ(LOAD_DOM READ_COMP "CoCreateGuid #\n" PROBE_FOUND CONNECT "SetState\nRegCreateKeyExW " REVISION_KEY
                                 "0 983359 0\nRegSetValueExW # PolicyRevId 0 1 # 12\n" STATUS_FOUND TELL,
              m_calls.OfHost([&] { m_pAdapter->SetConfiguration(s_szPolicy); }));
    EXPECT_EQ(LOAD_DOM, m_calls.OfHost([&] { m_pAdapter->SetConfiguration("<?xml version='1.0'?><a/>"); }));
    EXPECT_EQ("lock observers\nunlock observers\n",
              m_calls.OfHost([&] { m_pAdapter->DeRegisterStateObserver(&m_host); }));
    EXPECT_EQ("SetEvent stop\nWaitForSingleObject # 4294967295\nCloseHandle stop\n",
              m_calls.OfHost([&] { Uninitialise(); }));
    EXPECT_EQ("WaitForSingleObject stop 0\nCoUninitialize\n", m_calls.Take(1));
    DeleteAdapterFactory(m_pFactory);
}
