// One adapter from its making to its destruction.
#pragma once

#include "PatchAdapterApi.h"
#include "PatchHost/AdapterLibrary.h"

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
