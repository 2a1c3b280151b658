// The interfaces as a host of another compiler sees them: tables of functions, called by their place in the table.
#include "RawSlots.h"
#include "LoadedLibrary.h"
#include "Operations.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <utility>
#include <vector>

namespace
{

/// An object of the host, made by hand: its first word leads to a table of functions. It notes the calls of the
/// thread that made it; the monitor calls as well, at moments of its own.
struct CRawObject
{
    void* const* pTable;
    const DWORD nThreadId = ::GetCurrentThreadId();
    std::vector<std::string> calls{};

    static void Note(void* pThis, std::string call)
    {
        auto& object = *static_cast<CRawObject*>(pThis);
        if (object.nThreadId == ::GetCurrentThreadId())
            object.calls.push_back(std::move(call));
    }
};

template <int nKind>
void OV_CDECL Log(void* pThis, const char* szFormat, ...)
{
    va_list arguments;
    va_start(arguments, szFormat);
    CRawObject::Note(pThis, std::to_string(nKind) + szFormat + va_arg(arguments, const char*));
    va_end(arguments);
}

void OV_THISCALL OnStateChange(void* pThis, int32_t nValue, const char* szStatus)
{
    CRawObject::Note(pThis, std::to_string(nValue) + szStatus);
}

void OV_THISCALL OnText(void* pThis, const char* szText)
{
    CRawObject::Note(pThis, szText);
}

template <class Function>
void* Slot(Function* pFunction)
{
    return reinterpret_cast<void*>(pFunction);
}

void* const s_sinkTable[] = { Slot(&Log<0>), Slot(&Log<1>), Slot(&Log<2>), Slot(&Log<3>), Slot(&Log<4>) };
void* const s_observerTable[] = { Slot(&OnStateChange) };
void* const s_receiverTable[] = { Slot(&OnText) };

class RawSlots : public testing::Test
{
protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        m_pFactory = m_library.MakeFactory();
        void* const pNone = nullptr;
        m_pAdapter =
            CallSlot<void*, void*, void*, void*, void*>(m_pFactory, SlotInitialise, pNone, pNone, &m_sink, pNone);
        ASSERT_NE(nullptr, m_pAdapter);
        m_sink.calls.clear();
    }

    void TearDown() override
    {
        CallSlot<void, void*>(m_pFactory, SlotUninitialise, m_pAdapter);
        DeleteAdapterFactory(m_pFactory);
        ::CoUninitialize();
    }

    /// What reached the sink since the last time.
    std::vector<std::string> TakeLines() { return std::exchange(m_sink.calls, {}); }

    const CScratchRegistry m_registry; // the adapter makes its key
    CLoadedLibrary m_library;
    CFastPauses m_pauses{ m_library.GetModule() };
    CRawObject m_sink{ s_sinkTable };
    IAdapterFactory* m_pFactory = nullptr;
    void* m_pAdapter = nullptr;
};

TEST_F(RawSlots, EachSlotReachesItsOperation)
{
    for (unsigned n = FIRST_UNIMPLEMENTED; n < std::size(OPERATIONS); ++n)
    {
        if (n == SlotDoAction)
            CallSlot<void, void*, void*>(m_pAdapter, n, this, this);
        else
            CallSlot<void, void*>(m_pAdapter, n, this);
        const std::string name = std::string("CPatchAdapter::") + OPERATIONS[n].szName;
        EXPECT_EQ((std::vector<std::string>{
                      "4PatchAdapter: %sEntering Function: " + name,
                      "3PatchAdapter: %sFunction: " + name + " Info Msg: Not implemented for PatchAdapter",
                      "4PatchAdapter: %sExiting Function: " + name,
                  }),
                  TakeLines());
    }
}

TEST_F(RawSlots, DocumentsReachTheHostsOwnTables)
{
    CRawObject observer{ s_observerTable };
    CallSlot<void, void*>(m_pAdapter, SlotRegisterStateObserver, &observer);
    CallSlot<void, void*>(m_pAdapter, SlotDeRegisterStateObserver, &observer);
    ASSERT_EQ(1u, observer.calls.size());
    EXPECT_EQ(0u, observer.calls[0].rfind("1<?xml version=\"1.0\" encoding=\"utf-8\"?><status ", 0))
        << observer.calls[0];

    CRawObject status{ s_receiverTable };
    EXPECT_TRUE((CallSlot<bool, void*>(m_pAdapter, SlotGetStatus, &status)));
    ASSERT_EQ(1u, status.calls.size());
    EXPECT_EQ(0u, status.calls[0].rfind("<?xml version=\"1.0\" encoding=\"utf-8\"?><status ", 0)) << status.calls[0];

    CRawObject configuration{ s_receiverTable };
    EXPECT_TRUE((CallSlot<bool, void*>(m_pAdapter, SlotGetConfiguration, &configuration)));
    EXPECT_EQ(std::vector<std::string>{ "" }, configuration.calls);

    TakeLines();
    CallSlot<void, const char*>(m_pAdapter, SlotSetConfiguration, "100 %s %n");
    EXPECT_EQ("3PatchAdapter: %sConfiguration: 100 %s %n", TakeLines().at(2));
}

} // namespace
