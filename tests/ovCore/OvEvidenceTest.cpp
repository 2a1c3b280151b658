#include "ovCore/OvEvidence.h"

#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvException.h"

#include "AnsweringObject.h"
#include "ComApartment.h"
#include "FailingNew.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>

namespace
{

std::wstring Stored(const COvEvidence& evidence)
{
    return evidence.ToString(nullptr);
}

/// An exception of another class, which may have nothing to tell.
class CBareException : public COvBaseException
{
public:
    CBareException(const wchar_t* szEvidence, const wchar_t* szFile) : m_szEvidence(szEvidence), m_szFile(szFile) {}
    HRESULT GetCode() const override { return 0x2000ABCD; }
    LONG GetLine() const override { return 12; }
    const wchar_t* GetEvidence(const wchar_t*) const override { return m_szEvidence; }
    const wchar_t* GetFile() const override { return m_szFile; }
    void AddInfo(const wchar_t*, LONG, const COvEvidence&) override {}
    void WriteDebug() const override {}

private:
    const wchar_t* m_szEvidence;
    const wchar_t* m_szFile;
};

const GUID s_guid = { 0x6F1D2C84, 0x3B57, 0x4E0A, { 0x9C, 0x41, 0x7A, 0x5E, 0x0D, 0x93, 0xB2, 0xF6 } };
const wchar_t s_szPair[] = L"a\xD83D\xDE00z";

template <class Value>
constexpr bool IsValue = std::is_constructible_v<COvEvidence, const wchar_t*, Value>;

static_assert(IsValue<int> && IsValue<long> && IsValue<unsigned long> && IsValue<long long> && IsValue<USHORT>);
static_assert(IsValue<wchar_t*> && IsValue<char*> && IsValue<bool>);
static_assert(!IsValue<void*> && !IsValue<const int*> && !IsValue<IUnknown*> && !IsValue<void (*)()>,
              "an address must not turn into a truth value");
static_assert(!IsValue<std::nullptr_t> && !IsValue<double>);

} // namespace

TEST(OvEvidence, EachKindOfValueIsWrittenItsOwnWay)
{
    const wchar_t* const szNull = nullptr;
    const char* const szNarrowNull = nullptr;
    wchar_t szWritable[] = L"w";
    char szNarrowWritable[] = "n";
    const struct
    {
        const wchar_t* szWhat;
        COvEvidence evidence;
        const wchar_t* szText;
    } rows[] = {
        { L"text", COvEvidence(L"n", L"text"), L"n: text" },
        { L"pair", COvEvidence(s_szPair, s_szPair), L"a\xD83D\xDE00z: a\xD83D\xDE00z" },
        { L"null text", COvEvidence(L"n", szNull), L"n: <null>" },
        { L"null name", COvEvidence(nullptr, szNull), L"<null>: <null>" },
        { L"empty name", COvEvidence(L"", L""), L": " },
        { L"writable", COvEvidence(L"n", szWritable), L"n: w" },
        { L"string", COvEvidence(L"n", std::wstring(s_szPair)), L"n: a\xD83D\xDE00z" },
        { L"narrow", COvEvidence(L"n", "caf\xE9 \x80"), L"n: caf\x00E9 \x20AC" },
        { L"narrow empty", COvEvidence(L"n", ""), L"n: " },
        { L"narrow writable", COvEvidence(L"n", szNarrowWritable), L"n: n" },
        { L"narrow null", COvEvidence(L"n", szNarrowNull), L"n: <null>" },
        { L"bstr", COvEvidence(L"n", COvBstr(s_szPair)), L"n: a\xD83D\xDE00z" },
        { L"null bstr", COvEvidence(L"n", COvBstr()), L"n: <null>" },
        { L"empty bstr", COvEvidence(L"n", COvBstr(L"")), L"n: " },
        { L"true", COvEvidence(L"n", true), L"n: <true>" },
        { L"false", COvEvidence(L"n", false), L"n: <false>" },
        { L"guid", COvEvidence(L"n", s_guid), L"n: {6F1D2C84-3B57-4E0A-9C41-7A5E0D93B2F6}" },
        { L"LONG", COvEvidence(L"n", LONG{ INT_MIN }), L"n: -2147483648" },
        { L"DWORD", COvEvidence(L"n", DWORD{ 0xFFFFFFFFu }), L"n: 4294967295" },
        { L"int64", COvEvidence(L"n", int64_t{ INT64_MIN }), L"n: -9223372036854775808" },
        { L"int", COvEvidence(L"n", -1), L"n: -1" },
        { L"unsigned", COvEvidence(L"n", 0xFFFFFFFFu), L"n: 4294967295" },
        { L"long long", COvEvidence(L"n", -1LL), L"n: -1" },
        { L"USHORT", COvEvidence(L"n", USHORT{ 0xFFFF }), L"n: 65535" },
        { L"BYTE", COvEvidence(L"n", BYTE{ 255 }), L"n: 255" },
        { L"code, plain", COvEvidence(L"n", E_FAIL, false), L"n: -2147467259" },
        { L"code, no message", COvEvidence(L"n", 0x2000ABCD, true), L"n: 0x2000abcd" },
        { L"marks", COvEvidence(L"n", L"\ra\r\rb\r"), L"n: \ra\r\rb\r" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szText, Stored(row.evidence)) << row.szWhat;
    EXPECT_EQ(L"", Stored(COvEvidence()));
}

TEST(OvEvidence, AnErrorCodeCarriesTheSystemsMessageWithoutItsLineEnd)
{
    const struct
    {
        LONG nCode;
        const wchar_t* szText;
        const wchar_t* szWine; // where Wine words it differently
    } rows[] = {
        { E_FAIL, L"hr: 0x80004005 Unspecified error", L"hr: 0x80004005 Call failed." },
        { E_OUTOFMEMORY, L"hr: 0x8007000e Not enough memory resources are available to complete this operation.",
          L"hr: 0x8007000e Out of memory." },
        { 5, L"hr: 0x5 Access is denied.", L"hr: 0x5 Access denied." },
        { 1, L"hr: 0x1 Incorrect function.", L"hr: 0x1 Invalid function." },
    };
    for (const auto& row : rows)
    {
        const std::wstring text = Stored(COvEvidence(L"hr", row.nCode, true));
        EXPECT_TRUE(text == row.szText || text == row.szWine) << row.nCode << " gives " << testing::PrintToString(text);
    }
}

TEST(OvEvidence, AStandardExceptionIsABlock)
{
    const COvEvidence with(L"Exception Info", std::runtime_error("caf\xE9\nx"));
    EXPECT_EQ(L"Exception Info: \r{\rCode: STL EXCEPTION\rDescription:\rcaf\x00E9\nx\r}", Stored(with));
    const COvEvidence silent(L"Exception Info", COvStdException(nullptr));
    EXPECT_EQ(L"Exception Info: \r{\rCode: STL EXCEPTION\r}", Stored(silent));
    const COvEvidence empty(L"Exception Info", COvStdException(""));
    EXPECT_EQ(L"Exception Info: \r{\rCode: STL EXCEPTION\rDescription:\r\r}", Stored(empty));
}

TEST(OvEvidence, AnExceptionIsABlockWithoutAName)
{
    const COvException e(0x2000ABCD, L"..\\ovCore\\OvThread", 93, COvEvidence(L"a", 1) + COvEvidence(L"b", 2));
    EXPECT_EQ(L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd\rEvidence:\ra: 1\rb: 2\rSource: OvThread(93)"
              L"\r **END Exception Collection** }",
              Stored(COvEvidence(L"ignored", e)));
    const COvException bare(0x2000ABCD, nullptr, 0, COvEvidence());
    EXPECT_EQ(L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd\rEvidence:\r\rSource: (0)"
              L"\r **END Exception Collection** }",
              Stored(COvEvidence(nullptr, bare)));
    EXPECT_EQ(L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd\rSource: f(12)\r **END Exception Collection** }",
              Stored(COvEvidence(L"x", CBareException(nullptr, L"f"))));
    EXPECT_EQ(L"\r{ *BEGIN Exception Collection* \rCode: 0x2000abcd\rEvidence:\re\r **END Exception Collection** }",
              Stored(COvEvidence(L"x", CBareException(L"e", nullptr))));
}

TEST(OvEvidence, CombinationPutsABreakMarkBeforeWhatIsNotEmpty)
{
    const COvEvidence empty;
    const COvEvidence a(L"a", L"1");
    const COvEvidence b(L"b", L"2");
    EXPECT_EQ(L"", Stored(empty + empty));
    EXPECT_EQ(L"a: 1", Stored(a + empty));
    EXPECT_EQ(L"\ra: 1", Stored(empty + a));
    EXPECT_EQ(L"a: 1\rb: 2\ra: 1", Stored(a + b + a));

    COvEvidence sum;
    sum += empty;
    EXPECT_EQ(L"", Stored(sum));
    sum += a;
    EXPECT_EQ(L"\ra: 1", Stored(sum));
    sum += b;
    sum += sum;
    EXPECT_EQ(L"\ra: 1\rb: 2\r\ra: 1\rb: 2", Stored(sum));
}

TEST(OvEvidence, RenderingReplacesTheBreakMarksAlone)
{
    const COvEvidence evidence = COvEvidence(L"a", L"1\n") + COvEvidence(L"b", s_szPair);
    EXPECT_STREQ(L"a: 1\n b: a\xD83D\xDE00z", evidence.ToString(L" "));
    EXPECT_STREQ(L"a: 1\n\r\nb: a\xD83D\xDE00z", evidence.ToString(L"\r\n"));
    EXPECT_STREQ(L"a: 1\nb: a\xD83D\xDE00z", evidence.ToString(L""));
    EXPECT_STREQ(L"a: 1\n\rb: a\xD83D\xDE00z", evidence.ToString(nullptr));
    EXPECT_STREQ(L"", COvEvidence().ToString(L" "));
}

TEST(OvEvidence, CopiesTakeTheStoredTextAlone)
{
    const COvEvidence source(L"name", L"a text that is too long to be held inside the string object\r");
    const wchar_t* const szRendered = source.ToString(L"+");
    COvEvidence copy(source);
    COvEvidence assigned(L"other", 1);
    assigned = copy;
    assigned = *&assigned;
    copy = COvEvidence();
    EXPECT_EQ(L"", Stored(copy));
    EXPECT_STREQ(L"name: a text that is too long to be held inside the string object+", szRendered);
    EXPECT_EQ(L"name: a text that is too long to be held inside the string object\r", Stored(assigned));
}

TEST(OvEvidence, WithoutMemoryAnAssignmentKeepsItsTarget)
{
    const COvEvidence source(L"name", std::wstring(100, L'x'));
    COvEvidence target(L"kept", 1);
    const CFailingNew failing(1);
    target = source;
    EXPECT_TRUE(failing.Reached());
    EXPECT_EQ(L"kept: 1", Stored(target));
}

TEST(OvEvidence, WithoutMemoryARaiseStillThrowsItsException)
{
    const std::wstring text(100, L'x');
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const CFailingNew failing(nFail);
        try
        {
            OvRaise(0x2000ABCD, L"ovCore\\ASourceWhoseNameIsLong", 7,
                    COvEvidence(L"Msg", text) + COvEvidence(L"narrow", "a narrow text that is not short at all") +
                        COvEvidence(L"hr", 5, true) + COvEvidence(L"guid", s_guid) +
                        COvEvidence(L"Exception Info", COvStdException("what")));
        }
        catch (const COvException& e)
        {
            const bool bStored = e.GetCode() == 0x2000ABCD && e.GetLine() == 7;
            const bool bFallback = e.GetCode() == E_FAIL && e.GetLine() == 0 && e.GetFile()[0] == L'\0';
            EXPECT_TRUE(bStored || bFallback) << "allocation " << nFail;
        }
        catch (...)
        {
            ADD_FAILURE() << "allocation " << nFail;
        }
        bReached = failing.Reached();
    }
}

namespace
{

/// Error information that cannot describe itself.
class CMuteErrorInfo final : public IErrorInfo
{
public:
    virtual ~CMuteErrorInfo() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** pp) override
    {
        const bool bKnown = riid == IID_IErrorInfo || riid == IID_IUnknown;
        *pp = bKnown ? this : nullptr;
        return bKnown ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }
    HRESULT STDMETHODCALLTYPE GetGUID(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD*) override { return E_NOTIMPL; }

    ULONG References() const { return m_nReferences; }

private:
    ULONG m_nReferences = 0;
};

void LeaveDescription(const wchar_t* szDescription)
{
    COvBstr description(szDescription);
    ICreateErrorInfo* pCreate = nullptr;
    ASSERT_EQ(S_OK, ::CreateErrorInfo(&pCreate));
    EXPECT_EQ(S_OK, pCreate->SetDescription(description.Get()));
    IErrorInfo* pInfo = nullptr;
    EXPECT_EQ(S_OK, pCreate->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&pInfo)));
    EXPECT_EQ(S_OK, ::SetErrorInfo(0, pInfo));
    pInfo->Release();
    pCreate->Release();
}

} // namespace

TEST(OvErrorInfo, SaysWhatTheObjectLeftBehindOrWhyThereIsNothing)
{
    const CComApartment apartment;
    const struct
    {
        bool bSupports;
        HRESULT hrSupports;
        const wchar_t* szDescription;
        const wchar_t* szText;
    } rows[] = {
        { false, S_OK, L"unread", L"This object does not implement the ISupportError interface." },
        { true, S_FALSE, L"unread", L"This interface does not implement the IErrorInfo interface." },
        { true, E_FAIL, L"unread", L"This interface does not implement the IErrorInfo interface." },
        { true, S_OK, nullptr, L"The IErrorInfo interface returned the message 'error information is unavailable'." },
        { true, S_OK, s_szPair, s_szPair },
        { true, S_OK, L"", L"" },
    };
    for (const auto& row : rows)
    {
        CAnsweringObject object(row.bSupports, s_guid, row.hrSupports);
        ::SetErrorInfo(0, nullptr);
        if (row.szDescription != nullptr)
            LeaveDescription(row.szDescription);
        EXPECT_EQ(L"IErrorInfo: " + std::wstring(row.szText), Stored(COvEvidence(L"IErrorInfo", &object, s_guid)));
        EXPECT_EQ(0u, object.References()) << testing::PrintToString(row.szText);
    }
    EXPECT_EQ(rows[0].szText, OvGetErrorInfoText(nullptr, s_guid));
    ::SetErrorInfo(0, nullptr);
}

TEST(OvErrorInfo, ADescriptionThatFailsIsReleasedToo)
{
    const CComApartment apartment;
    CAnsweringObject object(true, s_guid, S_OK);
    CMuteErrorInfo info;
    EXPECT_EQ(S_OK, ::SetErrorInfo(0, &info));
    EXPECT_EQ(L"Call to IErrorInfo::GetDescription failed with hr [-2147467263].", OvGetErrorInfoText(&object, s_guid));
    EXPECT_EQ(0u, object.References());
    EXPECT_EQ(0u, info.References());
}
