#include "PatchAdapter/PatchTrace.h"

#include "FailingNew.h"
#include "Recording.h"

#include <gtest/gtest.h>

#include <limits>

TEST(PatchTrace, EachKindOfLineReachesItsOperation)
{
    CRecordingSink sink;
    CPatchTrace trace;
    trace.SetSink(&sink);
    const COvEvidence items = COvEvidence(L"Info Msg", L"caf\x00E9\xD83D\xDE00") + COvEvidence(L"n", 5);
    for (const int nKind : { -1, 0, 1, 2, 3, 4, 5, std::numeric_limits<int>::max() }) // there are five kinds
        trace.Write(nKind, L"kind 100%s");
    trace.Exception(COvException(E_FAIL, L"PatchAdapter\\PatchAdapterFactory", 38, items));
    trace.Exception(COvException(5, nullptr, -1, COvEvidence()));
    trace.Warning(items);
    trace.Info(items);
    trace.Detail(items);
    trace.Enter(L"CPatchAdapter::GetStatus");
    trace.Leave(L"CPatchAdapter::GetStatus");
    trace.Info(COvEvidence());
    EXPECT_EQ("0 kind 100%s\n"
              "1 kind 100%s\n"
              "2 kind 100%s\n"
              "3 kind 100%s\n"
              "4 kind 100%s\n"
              "0 Error: 80004005 File: PatchAdapterFactory Line: 38 Evidence: Info Msg: caf\xE9?? n: 5\n"
              "0 Error: 5 File:  Line: -1 Evidence: \n"
              "1 Info Msg: caf\xE9?? n: 5\n"
              "2 Info Msg: caf\xE9?? n: 5\n"
              "3 Info Msg: caf\xE9?? n: 5\n"
              "4 Entering Function: CPatchAdapter::GetStatus\n"
              "4 Exiting Function: CPatchAdapter::GetStatus\n"
              "2 \n",
              sink.OfThread());
}

TEST(PatchTrace, UnboundItBuildsNothing)
{
    CRecordingSink sink;
    CPatchTrace trace;
    const COvEvidence evidence(L"a", std::wstring(100, L'x'));
    const COvException e(E_FAIL, L"f", 1, evidence);
    const std::wstring text(100, L'x');
    const auto writeAll = [&] {
        trace.Write(2, text);
        trace.Exception(e);
        trace.Info(evidence);
        const CPatchTraceScope scope(&trace, L"CPatchAdapter::ANameThatIsTooLongToBeHeldInside");
    };
    {
        const CFailingNew failing(1);
        writeAll();
        EXPECT_FALSE(failing.Reached()) << "something was allocated";
    }
    trace.SetSink(&sink);
    writeAll();
    trace.SetSink(nullptr);
    writeAll();
    EXPECT_EQ(5u, sink.Count());
}
