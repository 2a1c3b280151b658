// The whole main job, driven through the built library as a host does.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "FailingCalls.h"
#include "FastPauses.h"
#include "HostRecord.h"
#include "LoadedLibrary.h"
#include "RevisionRecord.h"

#include <utility>

inline constexpr wchar_t OLD_REVISION[] = L"rev-1";
inline constexpr wchar_t NEW_REVISION[] = L"rev-2"; ///< of the sample policy

/// A good policy document, in the code page 1252.
const char* SamplePolicy();

/// A host with the library loaded and the service running.
class CMainJob
{
public:
    CMainJob()
    {
        WatchCalls(m_library.GetModule());
        m_agent.Start();
    }

    bool Start()
    {
        m_pFactory = m_library.MakeFactory();
        if (m_pFactory != nullptr)
            m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_callbacks, nullptr);
        return m_pAdapter != nullptr;
    }

    void Stop()
    {
        if (m_pFactory != nullptr)
            m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(std::exchange(m_pFactory, nullptr));
    }

    void Observe() { m_pAdapter->RegisterStateObserver(&m_callbacks); }
    void AskForStatus() { m_pAdapter->GetStatus(&m_callbacks); }
    void Apply();

    /// Each change is seen when the monitor has told it, or has ended after a failure.
    void LetServiceGoAndCome()
    {
        m_callbacks.WaitFor("serviceRunning=\"true\"");
        m_agent.Stop();
        m_callbacks.WaitFor("serviceRunning=\"false\"");
        m_agent.Start();
        m_callbacks.WaitFor("serviceRunning=\"true\"");
    }

    /// The different status documents and settings documents, masked.
    std::set<std::string> Documents() const;

    /// Every trace line, of all threads.
    std::string Trace() const { return m_callbacks.Trace(); }

    IAdapter& Adapter() { return *m_pAdapter; }
    HMODULE GetModule() const { return m_library.GetModule(); }

    void ForgetTrace() { m_callbacks.Clear(); }

    void Forget()
    {
        m_callbacks.Clear();
        m_agent.ClearRecords();
    }

private:
    CComApartment m_apartment;
    CLoadedLibrary m_library;
    CFastPauses m_pauses{ m_library.GetModule() };
    CAgentSimulator m_agent;
    CHostCallbacks m_callbacks;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};
