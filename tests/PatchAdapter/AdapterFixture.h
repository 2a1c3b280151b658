// An adapter with everything around it: an apartment, an empty registry, a simulated service, a recording log.
#pragma once

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "PatchAdapter/PatchAdapter.h"
#include "Recording.h"
#include "RevisionRecord.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <memory>

/// The adapter's pauses are a thousand times shorter; its version is that of the test program.
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

    CComApartment m_apartment;
    CScratchRegistry m_registry;
    CFastPauses m_pauses;
    CAgentSimulator m_agent;
    CRecordingSink m_sink;

private:
    struct CDelete
    {
        void operator()(IAdapter* pAdapter) const { DeleteThroughSlot(pAdapter); }
    };
    std::unique_ptr<IAdapter, CDelete> m_pAdapter;
};

/// A whole policy document around the children of its configuration.
std::string PolicyConfiguring(const std::string& configuration);

/// The transcript of one build of a status document.
std::string StatusBuildLines();

/// An exception line of the adapter, masked.
std::string ErrorLine(const std::string& file, const std::string& evidence);
