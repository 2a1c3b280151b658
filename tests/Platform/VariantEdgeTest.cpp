// Conversions at the edges where the re-implementation of Windows that the shared tests also run on goes its own way:
// it reports an overflow for the largest double, takes several signs in an exponent, fails on an exponent of more than
// 31 bits and cuts a 64-bit number for a 16-bit type.
#include "OvPlatform.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <limits>
#include <random>
#include <string>
#include <tuple>

namespace
{

HRESULT ChangeText(const std::wstring& text, VARTYPE vt, VARIANT& result)
{
    const _variant_t source(text.c_str());
    VariantInit(&result);
    return VariantChangeType(&result, &source, 0, vt);
}

} // namespace

TEST(VariantEdges, FollowTheDocumentedRules)
{
    const std::wstring zeros(200000, L'0');
    const std::tuple<std::wstring, HRESULT, double> rows[] = {
        { L"1.7976931348623157e308", S_OK, DBL_MAX },
        { L"1.7976931348623159e308", DISP_E_OVERFLOW, 0 },
        { L"5e-324", S_OK, std::numeric_limits<double>::denorm_min() },
        { L"1e2147483648", DISP_E_OVERFLOW, 0 },
        { L"1e99999999999999999999", DISP_E_OVERFLOW, 0 },
        { L"1e-99999999999999999999", S_OK, 0 },
        { L"0e99999999999999999999", S_OK, 0 },
        { L"1e++3", DISP_E_TYPEMISMATCH, 0 },
        { L"&H10000000000000000", DISP_E_OVERFLOW, 0 },
        { L"1" + zeros + L"e-200000", S_OK, 1 },
        { L"0." + zeros + L"1e200001", S_OK, 1 },
        { L"1" + zeros, DISP_E_OVERFLOW, 0 },
    };
    for (const auto& [text, hr, fValue] : rows)
    {
        VARIANT result;
        EXPECT_EQ(hr, ChangeText(text, VT_R8, result)) << testing::PrintToString(text.substr(0, 40));
        EXPECT_EQ(fValue, hr == S_OK ? result.dblVal : 0) << testing::PrintToString(text.substr(0, 40));
    }
    VARIANT large = {};
    large.vt = VT_I8;
    large.llVal = 3000000000;
    EXPECT_EQ(DISP_E_OVERFLOW, VariantChangeType(&large, &large, 0, VT_UI2));
}

TEST(VariantEdges, AnIntegerIsReadInEveryForm)
{
    const unsigned nSeed = std::random_device()();
    std::mt19937_64 random(nSeed);
    for (int i = 0; i < 2000; ++i)
    {
        const auto n = static_cast<LONGLONG>(random() >> random() % 64 >> 1);
        const std::wstring digits = std::to_wstring(n);
        const size_t nCut = random() % digits.size();
        const std::wstring head = digits.substr(0, nCut);
        const std::wstring tail = digits.substr(nCut);
        const std::tuple<std::wstring, bool> forms[] = {
            { L" $ 0" + head + L"," + tail + L" ", false },
            { L"(" + digits + L".4999999)", true },
            { L"0" + head + L"." + tail + L"e" + std::to_wstring(tail.size()) + L"-", true },
            { L"-" + digits + L"000000e-6", true },
        };
        for (const auto& [text, bNegative] : forms)
        {
            VARIANT result;
            ASSERT_EQ(S_OK, ChangeText(text, VT_I8, result)) << testing::PrintToString(text) << nSeed;
            ASSERT_EQ(bNegative ? -n : n, result.llVal) << testing::PrintToString(text) << nSeed;
        }
    }
}
