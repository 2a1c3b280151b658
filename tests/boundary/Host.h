// A host with the library loaded, a simulated service to talk to and a registry of its own.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "LoadedLibrary.h"
#include "RecordingCallbacks.h"
#include "RecordingSink.h"
#include "RevisionRecord.h"
#include "ScratchRegistry.h"
#include "SystemText.h"

#include <gtest/gtest.h>

#include <string>

/// Everything up to an adapter; the service is not started and no revision is recorded.
class CHost : public testing::Test
{
protected:
    /// Makes the adapter. @return whether there is one.
    bool Start()
    {
        m_pFactory = m_library.MakeFactory();
        m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
        return m_pAdapter != nullptr;
    }

    void Stop()
    {
        if (m_pFactory == nullptr)
            return;
        m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(m_pFactory);
        m_pFactory = nullptr;
        m_pAdapter = nullptr;
    }

    void TearDown() override
    {
        Stop();
        EXPECT_EQ(0u, m_agent.GetLiveObjects());
        ::SetErrorInfo(0, nullptr); // what a failing call has left on this thread
    }

    /// This thread's lines, masked, while the policy is handed in.
    std::string Configure(const std::string& policy)
    {
        return m_sink.TranscriptOf([&] { m_pAdapter->SetConfiguration(policy.c_str()); });
    }

    /// The current status document, masked.
    std::string Status();

    CComApartment m_apartment;
    CScratchRegistry m_registry;
    CAgentSimulator m_agent;
    CRecordingSink m_sink;
    CLoadedLibrary m_library;
    CFastPauses m_pauses{ m_library };
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};

/// Throws as a host's own code would: with an exception of the platform's own compiler.
[[noreturn]] void ThrowAsHost();

// Lines of a transcript.

std::string Entering(const std::string& function);
std::string Exiting(const std::string& function);
std::string Info(const std::string& message);
std::string Warning(const std::string& message);

/// An exception of the adapter itself.
std::string Error(const std::string& source, const std::string& evidence);

/// The lines that building one status document writes while the service does not run.
std::string StatusLines();

/// A whole status document, masked.
struct CExpectedStatus
{
    std::string policyType = "20";
    std::string res = "NoRef";
    std::string revision; ///< as written in the document; empty: no attribute
    std::string serviceRunning = "false";
    std::string assessmentEnabled = "false";
    std::string wua = R"(installed="true" compatible="true" currentVersion="0.0.0.0" requiredVersion="0.0.0.0")";

    std::string Text() const;
};
