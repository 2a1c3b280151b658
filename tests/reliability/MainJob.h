// The whole main job, driven through the built library as a host does.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "FailingCalls.h"
#include "LoadedLibrary.h"
#include "Recording.h"
#include "RevisionRecord.h"
#include "TestPlatform.h"

#include <set>
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
            m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
        return m_pAdapter != nullptr;
    }

    void Stop()
    {
        if (m_pFactory != nullptr)
            m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(std::exchange(m_pFactory, nullptr));
    }

    void Observe() { m_pAdapter->RegisterStateObserver(&m_host); }
    void AskForStatus() { m_pAdapter->GetStatus(&m_host); }
    void Apply();

    /// @param nMs  how long each change is waited for. @return whether the monitor told each.
    bool LetServiceGoAndCome(unsigned nMs)
    {
        const bool bThere = m_host.WaitForLast("serviceRunning=\"true\"", nMs);
        m_agent.Stop();
        const bool bGone = m_host.WaitForLast("serviceRunning=\"false\"", nMs);
        m_agent.Start();
        return m_host.WaitForLast("serviceRunning=\"true\"", nMs) && bThere && bGone;
    }

    bool WaitForMonitor() const { return m_sink.WaitForText("Exiting Function: CMonitorThread::NotifyObservers"); }

    /// The different status documents and settings documents, masked.
    std::set<std::string> Documents() const;

    /// Every trace line, of all threads.
    std::string Trace() const { return m_sink.OfAllThreads(); }

    IAdapter& Adapter() { return *m_pAdapter; }
    HMODULE GetModule() const { return m_library.GetModule(); }

    void ForgetTrace()
    {
        m_sink.Clear();
        m_host.Clear();
    }
    size_t CountOfDocuments() const { return m_host.Count(); }

    void Forget()
    {
        ForgetTrace();
        m_agent.ClearRecords();
    }

private:
    CComApartment m_apartment;
    CLoadedLibrary m_library;
    CFastPauses m_pauses{ m_library.GetModule() };
    CAgentSimulator m_agent;
    CRecordingSink m_sink;
    CListener m_host;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};
