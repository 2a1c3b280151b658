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

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Holds a factory and its adapter; stops the adapter when destroyed.
class CAdapterSession
{
public:
    /// @param sink  must outlive the session.
    /// The calling thread must have entered a COM apartment.
    /// @throw std::runtime_error when the factory makes no adapter, with what the library logged as errors.
    CAdapterSession(const CAdapterLibrary& library, CTraceSink& sink);
    ~CAdapterSession();

    CAdapterSession(const CAdapterSession&) = delete;
    CAdapterSession& operator=(const CAdapterSession&) = delete;

    IAdapter& operator*() const { return *m_pAdapter; }

private:
    IAdapterFactory* m_pFactory;
    IAdapter* m_pAdapter = nullptr;
};

class CSession
{
public:
    /// Puts the service in place, loads the library and makes the adapter.
    /// @param kind  the service that the adapter meets. @param state  where it stores the revision.
    CSession(const COptions& options, ServiceKind kind, StateKind state);

    /// With the service and the place for the revision that the options ask for.
    explicit CSession(const COptions& options);

    /// Deregisters the observers. The adapter is left to the end of the process, unless the options ask for an orderly
    /// stop, which takes up to ten seconds and is announced on standard error.
    ~CSession();

    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;

    // Operations of the adapter, each within the time limit.

    /// @param observer  must outlive the session.
    void Register(IStateObserver& observer);

    /// Hands a document in. @return what the library logged meanwhile on the calling thread.
    std::vector<CTraceLine> SetConfiguration(const std::string& document);

    /// The status document in the ANSI code page; nothing when none comes.
    std::optional<std::string> GetStatus();

    /// Waits for the monitor's first look at a service that runs: it notifies the observers of it, at once in the
    /// adapter's life but at no fixed moment.
    void AwaitFirstLook();

    CTraceSink& GetSink() { return m_parts->sink; }
    CPatchService& GetService() { return m_parts->service; }
    const CAdapterLibrary& GetLibrary() const { return m_parts->library; }

    /// Whether an adapter was left to the end of the process, which then must end without destroying anything more.
    static bool IsAdapterLeft();

private:
    /// What the adapter uses while it lives.
    struct CParts
    {
        CParts(const COptions& options, ServiceKind kind);

        const CComApartment apartment;
        CPatchService service;
        CTraceSink sink;
        const CAdapterLibrary library;
        const CAdapterSession adapter;
    };

    /// Calls an operation of the adapter, within the time limit. @param name  the operation's.
    template <class Operation>
    void Call(const std::string& name, Operation&& operation)
    {
        const CTimeLimit limit(m_nTimeoutMs, name);
        operation(*m_parts->adapter);
    }

    const unsigned m_nTimeoutMs;
    const bool m_bOrderlyStop;
    const CStatePlace m_state; // first, for it outlives the library
    std::unique_ptr<CParts> m_parts;
    std::vector<IStateObserver*> m_observers; // weak: those that are registered
};

/// Where the revision is stored with a service: in the machine's own registry only with its own service.
StateKind StateFor(ServiceKind kind);

/// The text of the script that the options name; empty for none. @throw CCommandError (usage) when it holds nothing or
/// cannot be read.
std::string ReadScript(const COptions& options);
