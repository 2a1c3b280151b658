// What the core's foundation does when the platform's calls fail: the calls are replaced at link time.
#include "ovCore/OvBstr.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvEvent.h"
#include "ovCore/OvException.h"
#include "ovCore/OvStringUtil.h"

#include "AnsweringObject.h"
#include "Raised.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>
#include <vector>

namespace
{

using CAnswer = std::pair<int, DWORD>; // a call's result and the last error that it leaves

std::vector<CAnswer> s_answers; // of the next conversions, in order
std::vector<int> s_sizes;       // the room that each conversion was given
bool s_bStringsFail = false;    // no memory for a BSTR
unsigned s_nAttempts = 0;       // to open an event
unsigned s_nFound = 0;          // the attempt that finds it; 0: none
std::vector<DWORD> s_pauses;    // between them
COvEvent* s_pReached = nullptr; // set by the body of a thread; null: no thread can be made

int Answer(int nSize)
{
    s_sizes.push_back(nSize);
    const auto [nResult, dwError] = s_answers.at(s_sizes.size() - 1);
    ::SetLastError(dwError);
    return nResult;
}

/// The length of the converted text, or the exception's.
std::string Outcome(const std::vector<CAnswer>& answers, const std::function<size_t()>& convert)
try
{
    s_answers = answers;
    s_sizes.clear();
    return std::to_string(convert());
}
catch (const COvStdException& e)
{
    return e.what();
}

} // namespace

extern "C"
{
    int __wrap_WideCharToMultiByte(UINT, DWORD, LPCWSTR, int, LPSTR, int nSize, LPCSTR, LPBOOL)
    {
        return Answer(nSize);
    }
    int __wrap_MultiByteToWideChar(UINT, DWORD, LPCSTR, int, LPWSTR, int nSize)
    {
        return Answer(nSize);
    }
    int __wrap_StringFromGUID2(REFGUID, LPWSTR, int)
    {
        return 0;
    }
    DWORD __wrap_FormatMessageW(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, va_list*)
    {
        return 0;
    }

    HRESULT __wrap_GetErrorInfo(ULONG, IErrorInfo**)
    {
        return E_UNEXPECTED;
    }

    HANDLE __wrap_OpenEventW(DWORD dwAccess, BOOL bInherit, LPCWSTR szName)
    {
        EXPECT_TRUE(dwAccess == 0x120000 && bInherit == TRUE && szName == std::wstring(L"name"));
        return ++s_nAttempts == s_nFound ? ::CreateEventW(nullptr, TRUE, TRUE, nullptr) : nullptr;
    }

    void __wrap_Sleep(DWORD dwMilliseconds)
    {
        s_pauses.push_back(dwMilliseconds);
        EXPECT_EQ(s_nAttempts, s_pauses.size());
    }

    uintptr_t __real__beginthreadex(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*);
    uintptr_t __wrap__beginthreadex(void* p, unsigned n, unsigned(__stdcall* pfn)(void*), void* pArg, unsigned nFlags,
                                    unsigned* pnId)
    {
        const uintptr_t nThread = s_pReached != nullptr ? __real__beginthreadex(p, n, pfn, pArg, nFlags, pnId) : 0;
        EXPECT_FALSE(s_pReached != nullptr && s_pReached->Lock(50)); // the body waits for what this returns
        return nThread;
    }

    BSTR __real_SysAllocStringLen(const OLECHAR*, UINT);
    BSTR __wrap_SysAllocStringLen(const OLECHAR* szText, UINT nLength)
    {
        return s_bStringsFail ? nullptr : __real_SysAllocStringLen(szText, nLength);
    }
}

TEST(PlatformFailure, AConversionGrowsItsBufferAndNamesWhatFailed)
{
    constexpr DWORD dwTooSmall = ERROR_INSUFFICIENT_BUFFER;
    const auto narrow = [] { return COvStringUtil::WideToNarrow(L"text").length(); };
    const auto widen = [] { return COvStringUtil::NarrowToWide("text").length(); };
    const std::tuple<std::function<size_t()>, std::vector<CAnswer>, std::string> rows[] = {
        { narrow, { { -1, 0 } }, "iBufferSize < 0" },
        { narrow, { { 0, 87 } }, "WideCharToMultiByte" },
        { narrow, { { 4, 0 }, { 0, 87 } }, "0" },
        { narrow, { { 4, 0 }, { -1, 0 } }, "iActualBufferSize < 0" },
        { widen, { { 0, 87 } }, "MultiByteToWideChar" },
        { widen, { { 4, 0 }, { 0, 87 } }, "iBufferSize <= 0" },
        { widen, { { 4, 0 }, { 3, 0 } }, "4" }, // the whole buffer, whatever the second answer
        { narrow, { { 1, 0 }, { 0, dwTooSmall }, { 0, dwTooSmall }, { 7, 0 } }, "7" },
    };
    for (const auto& [convert, answers, strOutcome] : rows)
        EXPECT_EQ(strOutcome, Outcome(answers, convert));
    EXPECT_EQ(std::vector<int>({ 0, 1, 4, 10 }), s_sizes); // of the last
}

TEST(PlatformFailure, EvidenceIsBuiltAllTheSame)
{
    s_answers = { { 0, 87 } };
    s_sizes.clear();
    EXPECT_STREQ(L"Function: ", COvEvidence(L"Function", "narrow").ToString(nullptr));
    EXPECT_STREQ(L"guid: <undetermined>", COvEvidence(L"guid", GUID()).ToString(nullptr));
    EXPECT_STREQ(L"hr: 0x80004005", COvEvidence(L"hr", E_FAIL, true).ToString(nullptr));
    CAnsweringObject object(true, GUID(), S_OK);
    EXPECT_EQ(L"A fatal error occurred while trying to retrieve IErrorInfo.", OvGetErrorInfoText(&object, GUID()));
    EXPECT_EQ(0u, object.References());
}

TEST(PlatformFailure, AStringWithoutMemoryRaisesTheComErrorAndKeepsItsTarget)
{
    COvBstr target(L"target");
    const COvBstr source(target);
    s_bStringsFail = true;
    EXPECT_THROW(target = source, _com_error);
    s_bStringsFail = false;
    EXPECT_STREQ(L"target", target.Get());
    target = COvBstr(L"new");
    EXPECT_STREQ(L"new", target.Get());
}

TEST(PlatformFailure, AnEventIsAskedForAgainUntilTheTimeIsOver)
{
    using Pauses = std::vector<DWORD>;
    const std::tuple<DWORD, DWORD, unsigned, Pauses> rows[] = {
        { 10000, 10000, 0, { 10000 } },
        { 0, 500, 0, { 0 } },
        { 25000, 10000, 0, { 10000, 10000, 10000 } },
        { 25000, 10000, 1, {} },
        { 25000, 10000, 3, { 10000, 10000 } },
        { 5000, 10000, 0, { 5000 } },
        { 5000, 0, 0, { 0, 0 } },
        { 0, 0, 0, { 0 } },
    };
    for (const auto& [dwTotalMs, dwIntervalMs, nFound, pauses] : rows)
    {
        s_nAttempts = 0;
        s_nFound = nFound;
        s_pauses.clear();
        const std::unique_ptr<COvEvent> pEvent(
            COvEvent::OpenWithWait(L"name", dwTotalMs, dwIntervalMs, 0x120000, true));
        EXPECT_EQ(nFound != 0, pEvent->Exists() && pEvent->Lock(0));
        EXPECT_EQ(pauses, s_pauses) << dwTotalMs << " " << dwIntervalMs;
        EXPECT_EQ(pauses.size() + (nFound != 0 ? 1 : 0), s_nAttempts);
    }
}

TEST(PlatformFailure, AThreadThatCannotBeMadeCountsAsStartedUntilItIsCleanedUp)
{
    CTestWorker worker([](CTestWorker&) { return s_pReached != nullptr && s_pReached->SetEvent() ? 1u : 0u; }, L"name");
    EXPECT_EQ(L"0x80004005 OvThread | Method: _beginthreadex | Info Msg: Failed to create a worker thread | "
              L"pThdCls->m_szDesc: name",
              Raised([&] { worker.Start(true); }));
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_EQ(nullptr, worker.GetThreadHandle().Get()); // of the thread that never was
    EXPECT_EQ(L"0x80004005 OvThread | Info Msg: This instance is already running | m_szDesc: name",
              Raised([&] { worker.Start(true); }));
    worker.CleanUp();
    worker.Start(false);
    EXPECT_EQ("before work after ", worker.m_strCalls);
    EXPECT_FALSE(worker.IsRunning());
    COvEvent reached(false, true, nullptr, nullptr);
    s_pReached = &reached;
    worker.Start(true);
    worker.Stop(true, false);
    EXPECT_TRUE(reached.Lock(0));
}
