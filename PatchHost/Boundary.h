// The calls across the library's boundary, one by one, with all that happens meanwhile, as JSON.
#pragma once

#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/Callbacks.h"
#include "PatchHost/Options.h"
#include "PatchHost/Output.h"
#include "PatchHost/TraceSink.h"

#include <functional>
#include <mutex>
#include <string>

/// Makes calls by their names, and hands over an event for each thing that crosses the boundary:
///   {"thread": "host", "call": NAME, "argument": TEXT}        a call begins
///   {"thread": "host", "return": NAME, "value": VALUE}         and ends
///   {"thread": "host" or "monitor", "trace": KIND, "text": TEXT}
///   {"thread": "host" or "monitor", "notified": 1, "status": TEXT}   an observer is called, so a receiver
/// The calling thread is "host"; it must be in the multithreaded apartment.
class CBoundary final : private IStateObserver, private IStatusReceiver, private IConfigurationReceiver
{
public:
    using Listener = std::function<void(const CJson&)>;

    CBoundary(const COptions& options, Listener listener);
    ~CBoundary();

    CBoundary(const CBoundary&) = delete;
    CBoundary& operator=(const CBoundary&) = delete;

    /// Makes a call. @param argument  UTF-8, for the calls that take a text.
    /// @throw CCommandError (failed) for a call that is not known, or not possible at this point.
    void Call(const std::string& name, const std::string& argument);

    /// Waits until the monitor has told of the service for the first time. That it does so is an event, too.
    void AwaitMonitor();

private:
    CJson Make(const std::string& name, const std::string& argument);
    CJson MakeOnAdapter(const std::string& name, const std::string& argument);
    void Tell(CJson event);
    void Record(const CJson& event);

    void OnStateChange(int32_t value, const char* status) override;
    void OnStatus(const char* status) override;
    void OnConfiguration(const char* configuration) override;

    const DWORD m_dwHostThread;
    const unsigned m_nTimeoutMs;
    std::mutex m_mutex; // guards m_listener's calls
    const Listener m_listener;
    CTraceSink m_sink;
    const CAdapterLibrary m_library;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};
