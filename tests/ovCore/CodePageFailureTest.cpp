// What the conversions do when the platform's calls fail: the calls are replaced at link time.
#include "ovCore/OvException.h"
#include "ovCore/OvStringUtil.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <vector>

namespace
{

struct CAnswer
{
    int nResult;
    LONG lError;
};

std::vector<CAnswer> s_answers; // of the next calls, in order
std::vector<int> s_sizes;       // the room that each call was given

int Answer(int nSize)
{
    s_sizes.push_back(nSize);
    const CAnswer answer = s_answers.at(s_sizes.size() - 1);
    ::SetLastError(static_cast<DWORD>(answer.lError));
    return answer.nResult;
}

constexpr LONG s_lTooSmall = ERROR_INSUFFICIENT_BUFFER;

template <class Convert>
std::string Outcome(const std::vector<CAnswer>& answers, Convert convert)
{
    s_answers = answers;
    s_sizes.clear();
    try
    {
        return std::to_string(convert().length());
    }
    catch (const COvStdException& e)
    {
        return e.what();
    }
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
}

TEST(CodePageFailure, NarrowingGrowsItsBufferAndNamesWhatFailed)
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

TEST(CodePageFailure, WideningNamesWhatFailed)
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

TEST(CodePageFailure, EvidenceIsBuiltAllTheSame)
{
    s_answers = { { 0, 87 } };
    s_sizes.clear();
    EXPECT_STREQ(L"Function: ", COvEvidence(L"Function", "narrow").ToString(nullptr));
}
