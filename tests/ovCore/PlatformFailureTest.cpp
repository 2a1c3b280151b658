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

using CAnswer = std::pair<int, DWORD>; // a call's result and the last error that it leaves

std::vector<CAnswer> s_answers;     // of the next conversions, in order
std::vector<int> s_sizes;           // the room that each conversion was given
bool s_bStringsFail = false;        // no memory for a BSTR
IErrorInfo* s_pErrorInfo = nullptr; // what the thread has, if anything

int Answer(int nSize)
{
    s_sizes.push_back(nSize);
    const auto [nResult, dwError] = s_answers.at(s_sizes.size() - 1);
    ::SetLastError(dwError);
    return nResult;
}

/// The length of the converted text, or the exception's.
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

/// Error information that cannot describe itself.
class CMuteErrorInfo final : public IErrorInfo
{
public:
    virtual ~CMuteErrorInfo() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOTIMPL; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }
    HRESULT STDMETHODCALLTYPE GetGUID(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD*) override { return E_NOTIMPL; }

    ULONG m_nReferences = 1;
};

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
        *ppInfo = s_pErrorInfo;
        return s_pErrorInfo != nullptr ? S_OK : E_UNEXPECTED;
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
    const std::tuple<std::vector<CAnswer>, std::string, std::vector<int>> narrowing[] = {
        { { { -1, 0 } }, "iBufferSize < 0", { 0 } },
        { { { 0, 87 } }, "WideCharToMultiByte", { 0 } },
        { { { 4, 0 }, { 3, 0 } }, "3", { 0, 4 } },
        { { { 4, 0 }, { 0, 87 } }, "0", { 0, 4 } },
        { { { 4, 0 }, { -1, 0 } }, "iActualBufferSize < 0", { 0, 4 } },
        { { { 1, 0 }, { 0, dwTooSmall }, { 0, dwTooSmall }, { 7, 0 } }, "7", { 0, 1, 4, 10 } },
    };
    for (const auto& [answers, strOutcome, sizes] : narrowing)
    {
        EXPECT_EQ(strOutcome, Outcome(answers, [] { return COvStringUtil::WideToNarrow(L"text"); }));
        EXPECT_EQ(sizes, s_sizes) << strOutcome;
    }
    const std::pair<std::vector<CAnswer>, std::string> widening[] = {
        { { { -1, 0 } }, "iBufferSize < 0" },
        { { { 0, 87 } }, "MultiByteToWideChar" },
        { { { 4, 0 }, { 0, 87 } }, "iBufferSize <= 0" },
        { { { 4, 0 }, { 3, 0 } }, "4" }, // the whole buffer, whatever the second answer
    };
    for (const auto& [answers, strOutcome] : widening)
        EXPECT_EQ(strOutcome, Outcome(answers, [] { return COvStringUtil::NarrowToWide("text"); }));
}

TEST(PlatformFailure, EvidenceIsBuiltAllTheSame)
{
    s_answers = { { 0, 87 } };
    s_sizes.clear();
    EXPECT_STREQ(L"Function: ", COvEvidence(L"Function", "narrow").ToString(nullptr));
    EXPECT_STREQ(L"guid: <undetermined>", COvEvidence(L"guid", GUID()).ToString(nullptr));
    EXPECT_STREQ(L"hr: 0x80004005", COvEvidence(L"hr", E_FAIL, true).ToString(nullptr));
}

TEST(PlatformFailure, ErrorInformationThatCannotBeHadIsSaidSo)
{
    CAnsweringObject object(true, GUID(), S_OK);
    EXPECT_EQ(L"A fatal error occurred while trying to retrieve IErrorInfo.", OvGetErrorInfoText(&object, GUID()));
    CMuteErrorInfo info;
    s_pErrorInfo = &info;
    EXPECT_EQ(L"Call to IErrorInfo::GetDescription failed with hr [-2147467263].", OvGetErrorInfoText(&object, GUID()));
    EXPECT_EQ(0u, object.References() + info.m_nReferences);
}

TEST(PlatformFailure, AStringWithoutMemoryRaisesTheComErrorAndKeepsItsTarget)
{
    const COvBstr source(L"source");
    COvBstr target(L"target");
    s_bStringsFail = true;
    EXPECT_THROW(target = source, _com_error);
    EXPECT_THROW(COvBstr(L""), _com_error);
    s_bStringsFail = false;
    EXPECT_STREQ(L"target", target.Get());
}
