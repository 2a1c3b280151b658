#include "ovCore/OvEvidence.h"

#include "ovCore/OvComPtr.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvException.h"

#include "AnsweringObject.h"
#include "ComApartment.h"
#include "FailingNew.h"

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

/// An exception that has nothing to tell.
struct CMuteException : COvException
{
    using COvException::COvException;
    const wchar_t* GetEvidence(const wchar_t*) const override { return nullptr; }
    const wchar_t* GetFile() const override { return nullptr; }
};

const wchar_t s_szBegin[] = L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd";
const wchar_t s_szEnd[] = L"\r **END Exception Collection** }";

} // namespace

TEST(OvEvidence, EachKindOfValueIsWrittenItsOwnWay)
{
    const COvEvidence empty;
    const COvEvidence a(L"a", 1);
    const COvEvidence b(L"b", 2);
    wchar_t szWritable[] = L"w";
    const std::pair<COvEvidence, std::wstring> rows[] = {
        { empty, L"" },
        { COvEvidence(s_szPair, s_szPair), L"a\xD83D\xDE00z: a\xD83D\xDE00z" },
        { COvEvidence(nullptr, s_szNull), L"<null>: <null>" },
        { COvEvidence(L"n", szWritable), L"n: w" },
        { COvEvidence(L"n", "caf\xE9 \x80"), L"n: caf\x00E9 \x20AC" },
        { COvEvidence(L"n", s_szNarrowNull), L"n: <null>" },
        { COvEvidence(L"n", COvBstr(s_szPair)), L"n: a\xD83D\xDE00z" },
        { COvEvidence(L"n", COvBstr()), L"n: <null>" },
        { COvEvidence(L"n", true), L"n: <true>" },
        { COvEvidence(L"n", false), L"n: <false>" },
        { COvEvidence(L"n", s_guid), L"n: {6F1D2C84-3B57-4E0A-9C41-7A5E0D93B2F6}" },
        { COvEvidence(L"n", LONG{ INT_MIN }), L"n: -2147483648" },
        { COvEvidence(L"n", DWORD{ 0xFFFFFFFFu }), L"n: 4294967295" },
        { COvEvidence(L"n", int64_t{ INT64_MIN }), L"n: -9223372036854775808" },
        { COvEvidence(L"n", 0), L"n: 0" }, // no null pointer
        { COvEvidence(L"n", USHORT{ 0xFFFF }), L"n: 65535" },
        { COvEvidence(L"n", E_FAIL, false), L"n: -2147467259" },
        { COvEvidence(L"n", 0x2000ABCD, true), L"n: 0x2000abcd" }, // no message
        { COvEvidence(L"n", L"\ra\r\rb\r"), L"n: \ra\r\rb\r" },
        { COvEvidence(L"n", COvStdException("caf\xE9\nx")),
          L"n: \r{\rCode: STL EXCEPTION\rDescription:\rcaf\x00E9\nx\r}" },
        { COvEvidence(L"n", COvStdException(nullptr)), L"n: \r{\rCode: STL EXCEPTION\r}" },
        { COvEvidence(L"ignored", COvException(0x2000ABCD, L"..\\ovCore\\OvThread", 93, a + b)),
          s_szBegin + std::wstring(L"\rEvidence:\ra: 1\rb: 2\rSource: OvThread(93)") + s_szEnd },
        { COvEvidence(nullptr, COvException(0x2000ABCD, nullptr, 0, empty)),
          s_szBegin + std::wstring(L"\rEvidence:\r\rSource: (0)") + s_szEnd },
        { COvEvidence(L"n", CMuteException(0x2000ABCD, L"f", 1, a)), std::wstring(s_szBegin) + s_szEnd },
        { empty + empty, L"" },
        { a + empty, L"a: 1" },
        { empty + a, L"\ra: 1" },
        { a + b + a, L"a: 1\rb: 2\ra: 1" },
    };
    for (const auto& [evidence, strText] : rows)
        EXPECT_EQ(strText, evidence.ToString(nullptr));
    const std::wstring strDenied = COvEvidence(L"hr", 5, true).ToString(nullptr);
    EXPECT_TRUE(strDenied == L"hr: 0x5 Access is denied." ||
                strDenied == L"hr: 0x5 Access denied."); // the second is Wine's
}

TEST(OvEvidence, IsRenderedWithoutChangingAndCopiedAsStored)
{
    COvEvidence evidence = COvEvidence(L"a", L"1\n") + COvEvidence(L"b", s_szPair);
    EXPECT_STREQ(L"a: 1\n b: a\xD83D\xDE00z", evidence.ToString(L" "));
    EXPECT_STREQ(L"a: 1\n\r\nb: a\xD83D\xDE00z", evidence.ToString(L"\r\n"));
    EXPECT_STREQ(L"a: 1\nb: a\xD83D\xDE00z", evidence.ToString(L""));
    const COvEvidence copy(evidence);
    evidence += evidence;
    EXPECT_STREQ(L"a: 1\n\rb: a\xD83D\xDE00z", copy.ToString(nullptr));
    EXPECT_STREQ(L"a: 1\n+b: a\xD83D\xDE00z+a: 1\n+b: a\xD83D\xDE00z", evidence.ToString(L"+"));
}

TEST(OvEvidence, WithoutMemoryAnAssignmentKeepsItsTargetAndARaiseThrows)
{
    const COvEvidence source(L"name", std::wstring(100, L'x'));
    COvEvidence target(L"kept", 1);
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const CFailingNew failing(nFail);
        if (nFail == 1)
            target = source;
        try
        {
            OvRaise(0x2000ABCD, L"ovCore\\ASourceWhoseNameIsLong", 7,
                    source + COvEvidence(L"narrow", "a narrow text that is not short at all") +
                        COvEvidence(L"hr", 5, true) + COvEvidence(L"guid", s_guid) +
                        COvEvidence(L"Exception Info", COvStdException("what")));
        }
        catch (const COvException& e)
        {
            const bool bStored = e.GetCode() == 0x2000ABCD && e.GetLine() == 7;
            const bool bFallback = e.GetCode() == E_FAIL && e.GetLine() == 0 && e.GetFile()[0] == L'\0';
            EXPECT_TRUE(bStored || bFallback) << "allocation " << nFail;
        }
        bReached = failing.Reached();
    }
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
