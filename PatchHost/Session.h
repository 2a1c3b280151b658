// An adapter at work, with all that it meets: a service, a place for the revision, a log.
#pragma once

#include "PatchAdapterApi.h"
#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/Apartment.h"
#include "PatchHost/Options.h"
#include "PatchHost/PatchService.h"
#include "PatchHost/State.h"
#include "PatchHost/TimeLimit.h"
#include "PatchHost/TraceSink.h"

#include <optional>
#include <string>
#include <vector>

/// Holds a factory and its adapter; stops the adapter when destroyed, unless Stop() was called before.
class CAdapterSession
{
public:
    /// @param sink  must outlive the session; may be null.
    /// The calling thread must have entered a COM apartment.
    /// @throw std::runtime_error when the factory makes no adapter; the reason is in the log.
    CAdapterSession(const CAdapterLibrary& library, ILogSink* sink);
    ~CAdapterSession();

    CAdapterSession(const CAdapterSession&) = delete;
    CAdapterSession& operator=(const CAdapterSession&) = delete;

    IAdapter* operator->() const { return m_pAdapter; }
    IAdapter& operator*() const { return *m_pAdapter; }

    /// Destroys the adapter; takes up to about ten seconds.
    void Stop();

private:
    IAdapterFactory* m_pFactory;
    IAdapter* m_pAdapter;
};

class CSession
{
public:
    /// Puts the service in place, loads the library and makes the adapter.
    /// @param kind  the service that the adapter meets. @param state  where it stores the revision.
    CSession(const COptions& options, ServiceKind kind, StateKind state);

    /// With the service and the place for the revision that the options ask for.
    explicit CSession(const COptions& options);

    /// Stops the adapter, which takes up to ten seconds, after saying so on standard error.
    ~CSession();

    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;

    /// Calls an operation of the adapter, within the time limit. @param name  the operation's.
    template <class Operation>
    void Call(const std::string& name, Operation&& operation)
    {
        const CTimeLimit limit(m_nTimeoutMs, name);
        operation(*m_adapter);
    }

    // Operations of the adapter that several commands call, each within the time limit.

    void Register(IStateObserver& observer);
    void Deregister(IStateObserver& observer);

    /// Hands a document in. @return what the library logged meanwhile on the calling thread.
    std::vector<CTraceLine> SetConfiguration(const std::string& document);

    /// The status document in the ANSI code page; nothing when none comes.
    std::optional<std::string> GetStatus();

    CTraceSink& GetSink() { return m_sink; }
    CPatchService& GetService() { return m_service; }
    const CAdapterLibrary& GetLibrary() const { return m_library; }

private:
    const unsigned m_nTimeoutMs;
    const CComApartment m_apartment;
    const CStatePlace m_state;
    CPatchService m_service;
    CTraceSink m_sink;
    const CAdapterLibrary m_library;
    CAdapterSession m_adapter;
};

/// Where the revision is stored with a service: in the machine's own registry only with its own service.
StateKind StateFor(ServiceKind kind);

/// The text of the script that the options name; empty for none. @throw CCommandError (usage) when it holds nothing or
/// cannot be read.
std::string ReadScript(const COptions& options);
