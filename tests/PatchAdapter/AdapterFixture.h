// An adapter with everything around it: an apartment, an empty registry, a simulated service, a recording log.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "PatchAdapter/PatchAdapter.h"
#include "RecordingCallbacks.h"
#include "RecordingSink.h"
#include "RevisionRecord.h"
#include "ScaledTime.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

#include <memory>

/// The adapter is made by Start, so that a test can prepare what it finds. Its pauses are a thousand times shorter; its
/// version is that of the test program. The transcripts are those of the test's own thread: the monitor writes beside.
class CAdapterTest : public testing::Test
{
protected:
    CAdapterTest();
    ~CAdapterTest() override;

    void StartAdapter();

    /// Starts the service and then the adapter, and lets the monitor see that the service is there, so that no
    /// notification of it comes in between later on.
    void StartWithService();

    void StopAdapter() { m_pAdapter.reset(); }

    IAdapter& Adapter() { return *m_pAdapter; }

    /// Hands a document in. @return the transcript, masked.
    std::string Configure(const std::string& document);

    /// The status document that GetStatus hands out, masked; "<none>" when it hands out none.
    std::string Status();

    CComApartment m_apartment;
    CScratchRegistry m_registry;
    CScaledTime m_time{ 1000 };
    CAgentSimulator m_agent;
    CRecordingSink m_sink;

private:
    struct CDelete
    {
        void operator()(IAdapter* pAdapter) const { DeleteThroughSlot(pAdapter); }
    };
    std::unique_ptr<IAdapter, CDelete> m_pAdapter;
};

/// A whole policy document around the children of its main node, or around the children of its configuration.
std::string PolicyWith(const std::string& children, const std::string& mainNode = "policy type=\"patch\"");
std::string PolicyConfiguring(const std::string& configuration, const std::string& revision = "rev-1");

/// The transcript of one build of a status document.
std::string StatusBuildLines();

/// An exception line of the adapter, masked.
std::string ErrorLine(const std::string& file, const std::string& evidence);

/// The program's own version, which stands for the library's.
extern const char VERSION_TEXT[];
