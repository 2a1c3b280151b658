#include "ovCore/OvEvidence.h"

#include "OvComPtr.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvException.h"

#include "AnsweringObject.h"
#include "ComApartment.h"
#include "FailingNew.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

const GUID s_guid = { 0x6F1D2C84, 0x3B57, 0x4E0A, { 0x9C, 0x41, 0x7A, 0x5E, 0x0D, 0x93, 0xB2, 0xF6 } };
const wchar_t s_szPair[] = L"a\xD83D\xDE00z";
const wchar_t* const s_szNull = nullptr;
const char* const s_szNarrowNull = nullptr;

template <class Value>
constexpr bool IsValue = std::is_constructible_v<COvEvidence, const wchar_t*, Value>;

static_assert(IsValue<int> && IsValue<long> && IsValue<unsigned long> && IsValue<long long> && IsValue<USHORT>);
static_assert(IsValue<wchar_t*> && IsValue<char*> && IsValue<bool>);
static_assert(!IsValue<void*> && !IsValue<const int*> && !IsValue<IUnknown*> && !IsValue<void (*)()>,
              "an address must not turn into a truth value");

} // namespace

TEST(OvEvidence, EachKindOfValueIsWrittenItsOwnWay)
{
    const COvEvidence empty;
    const COvEvidence a(L"a", 1);
    const COvEvidence b(L"b", 2);
    wchar_t szWritable[] = L"w";
    using E = COvEvidence;
    const std::wstring strBegin = L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd";
    const std::wstring strEnd = L"\r **END Exception Collection** }";
    const E values = E(s_szPair, s_szPair) + E(nullptr, s_szNull) + E(L"n", szWritable) + E(L"n", "caf\xE9 \x80") +
                     E(L"n", s_szNarrowNull) + E(L"n", std::wstring(L"w")) + E(L"n", COvBstr(L"b")) +
                     E(L"n", COvBstr()) + E(L"n", true) + E(L"n", false) + E(L"n", s_guid) + E(L"n", LONG{ INT_MIN }) +
                     E(L"n", DWORD{ 0xFFFFFFFFu }) + E(L"n", int64_t{ INT64_MIN }) + E(L"n", USHORT{ 0xFFFF }) +
                     E(L"no pointer", 0) + E(L"n", E_FAIL, false) + E(L"no message", 0x2000ABCD, true);
    EXPECT_STREQ(L"a\xD83D\xDE00z: a\xD83D\xDE00z <null>: <null> n: w n: caf\x00E9 \x20AC n: <null> n: w n: b n: "
                 L"<null> n: <true> n: <false> n: {6F1D2C84-3B57-4E0A-9C41-7A5E0D93B2F6} n: -2147483648 n: 4294967295 "
                 L"n: -9223372036854775808 n: 65535 no pointer: 0 n: -2147467259 no message: 0x2000abcd",
                 values.ToString(L" "));
    const std::pair<E, std::wstring> rows[] = {
        { E(L"n", COvStdException("caf\xE9\nx")), L"n: \r{\rCode: STL EXCEPTION\rDescription:\rcaf\x00E9\nx\r}" },
        { E(L"n", COvStdException(nullptr)), L"n: \r{\rCode: STL EXCEPTION\r}" },
        { E(L"ignored", COvException(0x2000ABCD, L"..\\ovCore\\OvThread", 93, a + b)),
          strBegin + L"\rEvidence:\ra: 1\rb: 2\rSource: OvThread(93)" + strEnd },
        { E(nullptr, COvException(0x2000ABCD, nullptr, 0, empty)), strBegin + L"\rEvidence:\r\rSource: (0)" + strEnd },
        { empty + empty, L"" },
        { a + empty, L"a: 1" },
        { empty + a, L"\ra: 1" },
        { a + b + a, L"a: 1\rb: 2\ra: 1" }
    };
    for (const auto& [evidence, strText] : rows)
        EXPECT_EQ(strText, evidence.ToString(nullptr));
    const std::wstring strDenied = E(L"hr", 5, true).ToString(nullptr);
    EXPECT_TRUE(strDenied == L"hr: 0x5 Access is denied." || strDenied == L"hr: 0x5 Access denied."); // as Wine says
}

TEST(OvEvidence, IsRenderedAndCopiedAsStored)
{
    COvEvidence evidence = COvEvidence(L"a", L"1\n") + COvEvidence(L"b", s_szPair);
    EXPECT_STREQ(L"a: 1\n\r\nb: a\xD83D\xDE00z", evidence.ToString(L"\r\n"));
    const COvEvidence copy(evidence);
    evidence += evidence;
    EXPECT_STREQ(L"a: 1\n\rb: a\xD83D\xDE00z", copy.ToString(nullptr));
    EXPECT_STREQ(L"a: 1\n+b: a\xD83D\xDE00z+a: 1\n+b: a\xD83D\xDE00z", evidence.ToString(L"+"));
}

TEST(OvException, KeepsTheFilesNameAndWritesSixTextsToTheDebugger)
{
    CDebuggerTexts captured;
    COvException e(E_FAIL, L"..\\ovCore\\OvThread", 97, COvEvidence(L"a", 1));
    e.AddInfo(L"..\\a\\f", 7, COvEvidence(L"b", L"caf\x00E9") + COvEvidence(L"c", 3));
    e.AddInfo(L"g", -1, COvEvidence());
    const COvException copy(e);
    copy.WriteDebug();
    const std::vector<std::wstring> expected = {
        L"\r\n++++ COvException::WriteDebug() ++++\r\n",
        L"OvThread(97): Error:-2147467259 -2147467259: TID:" + std::to_wstring(::GetCurrentThreadId()) + L" ",
        L"\r\n",
        L"\r\n",
        L"a: 1\r\nMore Info From f(7): b: caf\x00E9\r\nc: 3\r\nMore Info From g(-1): ",
        L"\r\n",
    };
    EXPECT_EQ(expected, captured.Take());
    EXPECT_STREQ(L"a/b", COvException(E_FAIL, L"a/b", 1, COvEvidence()).GetFile());
}

TEST(OvException, IsRaisedAndTakesInfoWithoutMemoryToo)
{
    const COvEvidence source(L"name", std::wstring(100, L'x'));
    COvEvidence target(L"kept", 1);
    unsigned nFallbacks = 0;
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const CFailingNew failing(nFail);
        if (nFail == 1)
            target = source;
        try
        {
            OvRaise(0x2000ABCD, L"ovCore\\ASourceWhoseNameIsLong", 7,
                    source + COvEvidence(L"hr", 5, true) + COvEvidence(L"n", COvStdException("what is not short")));
        }
        catch (COvException& e)
        {
            const bool bFallback = e.GetCode() == E_FAIL;
            EXPECT_EQ(bFallback ? 0 : 7, e.GetLine()) << "allocation " << nFail;
            EXPECT_STREQ(bFallback ? L"" : L"ASourceWhoseNameIsLong", e.GetFile()) << "allocation " << nFail;
            nFallbacks += bFallback && *e.GetEvidence(nullptr) == L'\0' ? 1 : 0;
            e.WriteDebug();
            e.AddInfo(L"c:\\AFileNameThatIsTooLongToBeHeldInside", 3, source);
        }
        bReached = failing.Reached();
    }
    EXPECT_EQ(1u, nFallbacks); // the file's name
    EXPECT_STREQ(L"kept: 1", target.ToString(nullptr));
}

TEST(OvErrorInfo, SaysWhatTheObjectLeftBehindOrWhyThereIsNothing)
{
    const CComApartment apartment;
    const std::tuple<bool, HRESULT, const wchar_t*, const wchar_t*> rows[] = {
        { false, S_OK, L"unread", L"This object does not implement the ISupportError interface." },
        { true, S_FALSE, L"unread", L"This interface does not implement the IErrorInfo interface." },
        { true, S_OK, nullptr, L"The IErrorInfo interface returned the message 'error information is unavailable'." },
        { true, S_OK, s_szPair, s_szPair },
    };
    for (const auto& [bSupports, hrSupports, szDescription, szText] : rows)
    {
        CAnsweringObject object(bSupports, s_guid, hrSupports);
        COvComPtr<ICreateErrorInfo> create;
        COvComPtr<IErrorInfo> info;
        if (szDescription != nullptr && SUCCEEDED(::CreateErrorInfo(create.Receive())))
        {
            create->SetDescription(COvBstr(szDescription).Get());
            create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(info.Receive()));
        }
        ::SetErrorInfo(0, info.Get());
        EXPECT_EQ(L"n: " + std::wstring(szText), COvEvidence(L"n", &object, s_guid).ToString(nullptr));
        EXPECT_EQ(0u, object.References()) << testing::PrintToString(szText);
    }
    EXPECT_EQ(std::get<3>(rows[0]), OvGetErrorInfoText(nullptr, s_guid));
    ::SetErrorInfo(0, nullptr);
}
