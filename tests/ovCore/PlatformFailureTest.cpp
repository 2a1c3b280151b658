// What the core's foundation does when the platform's calls fail: the calls are replaced at link time.
#include "ovCore/OvBstr.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvException.h"
#include "ovCore/OvStringUtil.h"

#include "AnsweringObject.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

struct CAnswer
{
    int nResult;
    LONG lError;
};

std::vector<CAnswer> s_answers; // of the next conversions, in order
std::vector<int> s_sizes;       // the room that each conversion was given
bool s_bStringsFail = false;    // no memory for a BSTR

int Answer(int nSize)
{
    s_sizes.push_back(nSize);
    const CAnswer answer = s_answers.at(s_sizes.size() - 1);
    ::SetLastError(static_cast<DWORD>(answer.lError));
    return answer.nResult;
}

void Expect(const std::vector<CAnswer>& answers)
{
    s_answers = answers;
    s_sizes.clear();
}

constexpr LONG s_lTooSmall = ERROR_INSUFFICIENT_BUFFER;

template <class Convert>
std::string Outcome(const std::vector<CAnswer>& answers, Convert convert)
{
    Expect(answers);
    try
    {
        return std::to_string(convert().length());
    }
    catch (const COvStdException& e)
    {
        return e.what();
    }
}

const GUID s_guid = {};

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

    HRESULT __wrap_GetErrorInfo(ULONG, IErrorInfo** ppInfo)
    {
        *ppInfo = nullptr;
        return E_UNEXPECTED;
    }

    BSTR __real_SysAllocStringLen(const OLECHAR*, UINT);

    BSTR __wrap_SysAllocStringLen(const OLECHAR* szText, UINT nLength)
    {
        return s_bStringsFail ? nullptr : __real_SysAllocStringLen(szText, nLength);
    }
}

TEST(PlatformFailure, NarrowingGrowsItsBufferAndNamesWhatFailed)
{
    const struct
    {
        std::vector<CAnswer> answers;
        std::string outcome; // the length of the text, or the exception's
        std::vector<int> sizes;
    } rows[] = {
        { { { -1, 0 } }, "iBufferSize < 0", { 0 } },
        { { { 0, 87 } }, "WideCharToMultiByte", { 0 } },
        { { { 4, 0 }, { 3, 0 } }, "3", { 0, 4 } },
        { { { 4, 0 }, { 0, 87 } }, "0", { 0, 4 } },
        { { { 4, 0 }, { -1, 0 } }, "iActualBufferSize < 0", { 0, 4 } },
        { { { 4, 0 }, { 0, s_lTooSmall }, { 10, 0 } }, "10", { 0, 4, 10 } },
        { { { 1, 0 }, { 0, s_lTooSmall }, { 0, s_lTooSmall }, { 7, 0 } }, "7", { 0, 1, 4, 10 } },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.outcome, Outcome(row.answers, [] { return COvStringUtil::WideToNarrow(L"text"); }));
        EXPECT_EQ(row.sizes, s_sizes) << row.outcome;
    }
}

TEST(PlatformFailure, WideningNamesWhatFailed)
{
    const struct
    {
        std::vector<CAnswer> answers;
        std::string outcome;
    } rows[] = {
        { { { -1, 0 } }, "iBufferSize < 0" },
        { { { 0, 87 } }, "MultiByteToWideChar" },
        { { { 4, 0 }, { 0, 87 } }, "iBufferSize <= 0" },
        { { { 4, 0 }, { -1, 0 } }, "iBufferSize <= 0" },
        { { { 4, 0 }, { 3, 0 } }, "4" }, // the whole buffer, whatever the second answer
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.outcome, Outcome(row.answers, [] { return COvStringUtil::NarrowToWide("text"); }));
}

TEST(PlatformFailure, EvidenceIsBuiltAllTheSame)
{
    Expect({ { 0, 87 } });
    EXPECT_STREQ(L"Function: ", COvEvidence(L"Function", "narrow").ToString(nullptr));
    EXPECT_STREQ(L"guid: <undetermined>", COvEvidence(L"guid", s_guid).ToString(nullptr));
    EXPECT_STREQ(L"hr: 0x80004005", COvEvidence(L"hr", E_FAIL, true).ToString(nullptr));
}

TEST(PlatformFailure, ErrorInformationThatCannotBeHadIsSaidSo)
{
    CAnsweringObject object(true, s_guid, S_OK);
    EXPECT_EQ(L"A fatal error occurred while trying to retrieve IErrorInfo.", OvGetErrorInfoText(&object, s_guid));
    EXPECT_EQ(0u, object.References());
}

TEST(PlatformFailure, AStringWithoutMemoryRaisesTheComErrorAndKeepsItsTarget)
{
    const COvBstr source(L"source");
    COvBstr target(L"target");
    s_bStringsFail = true;
    for (const auto& copy :
         { +[](const COvBstr&from, COvBstr&to) { to = from; }, +[](const COvBstr&, COvBstr&) { COvBstr made(L""); },
           +[](const COvBstr&, COvBstr&) { COvBstr made{ std::wstring() }; } })
    {
        try
        {
            copy(source, target);
            ADD_FAILURE();
        }
        catch (const _com_error& e)
        {
            EXPECT_EQ(E_OUTOFMEMORY, e.Error());
        }
    }
    s_bStringsFail = false;
    EXPECT_STREQ(L"target", target.Get());
}
