// The translator, called by hand.
#include "ovCore/OvSehExceptionHandler.h"

#include "Raised.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <cwchar>

namespace
{

std::wstring Code(DWORD dwCode)
{
    return ErrorItem(L"SEH Exception", static_cast<LONG>(dwCode));
}

/// A description as the reports carry it: it was once broken into lines of 39 characters, two breaks at most.
std::wstring Broken(std::wstring strSentence)
{
    for (const size_t nAt : { 78, 39 })
        if (strSentence.size() > nAt)
            strSentence.insert(nAt, L"\r ");
    return strSentence;
}

/// The evidence of a translation, as stored and without the stack dump.
std::wstring Translated(EXCEPTION_RECORD* pRecord)
{
    EXCEPTION_POINTERS pointers = { pRecord, nullptr };
    try
    {
        SEHtoExceptionTranslation(7, &pointers);
    }
    catch (const COvException& e)
    {
        EXPECT_EQ(0xC000B02Fu, static_cast<DWORD>(e.GetCode()));
        EXPECT_STREQ(L"OvSehExceptionHandler", e.GetFile());
        const std::wstring strEvidence = e.GetEvidence(nullptr);
        const std::wstring strDump = L"\rStack Dump: \r";
        EXPECT_EQ(strEvidence.size(), strEvidence.rfind(strDump) + strDump.size());
        return strEvidence.substr(0, strEvidence.rfind(strDump));
    }
}

std::wstring TranslatedCode(DWORD dwCode)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = dwCode;
    return Translated(&record);
}

const std::wstring s_strItem = L"SEH Information: ";

} // namespace

TEST(OvSehExceptionHandler, ExplainsEachFault)
{
    const std::pair<DWORD, std::wstring> rows[] = {
        // how each begins; one is longer than two lines
        { 0xC0000005, L"The thread tried to read from or" },
        { 0xC000008C, L"The thread tried to access an array" },
        { 0x80000003, L"A breakpoint was encountered." },
        { 0x80000002, L"The thread tried to read or write" },
        { 0xC000008D, L"One of the operands in a" },
        { 0xC000008E, L"The thread tried to divide a" },
        { 0xC000008F, L"The result of a floating-point" },
        { 0xC0000090, L"This exception represents any" },
        { 0xC0000091, L"The exponent of a floating-point" },
        { 0xC0000092, L"The stack overflowed or underflowed" },
        { 0xC0000093, L"The exponent of a floating-point" },
        { 0xC000001D, L"The thread tried to execute an invalid instruction." },
        { 0xC0000006, L"The thread tried to access a page that was not present, and the system was unable to load the "
                      L"page. For example, this exception might occur if a network connection is lost while running a "
                      L"program over the network." },
        { 0xC0000094, L"The thread tried to divide an" },
        { 0xC0000095, L"The result of an integer operation" },
        { 0xC0000026, L"An exception handler returned an" },
        { 0xC0000025, L"The thread tried to continue" },
        { 0xC0000096, L"The thread tried to execute an" },
        { 0x80000004, L"A trace trap or other" },
        { 0xC00000FD, L"The thread used up its stack." },
    };
    for (const auto& [dwCode, sentence] : rows)
    {
        const std::wstring expected = s_strItem + Code(dwCode) + L"\r " + Broken(sentence);
        EXPECT_EQ(expected, TranslatedCode(dwCode).substr(0, expected.size()));
    }
}

TEST(OvSehExceptionHandler, WalksNestedRecords)
{
    EXCEPTION_RECORD records[3] = {};
    records[0].ExceptionCode = 0xC0000025;
    records[0].ExceptionRecord = &records[1];
    records[1].ExceptionCode = 0xE0001234; // not in the table
    records[1].ExceptionRecord = &records[2];
    records[2].ExceptionCode = 0xC00000FD;
    const std::wstring strFirst = TranslatedCode(0xC0000025).substr(s_strItem.size());
    const std::wstring strLast = TranslatedCode(0xC00000FD).substr(s_strItem.size());
    EXPECT_EQ(s_strItem + strFirst + Code(0xE0001234) + L"\r " + strLast, Translated(records));
}

TEST(OvSehExceptionHandler, TellsTheDebuggerFirstAndTheBareCodeWithoutRecords)
{
    CDebuggerTexts texts;
    EXPECT_EQ(L"0xc000b02f OvSehExceptionHandler | (unsigned long)uSEH: 3221225477",
              Raised([] { SEHtoExceptionTranslation(0xC0000005, nullptr); }));
    const std::wstring strLine = L"SEH Exception trapped! TID:" + std::to_wstring(::GetCurrentThreadId()) + L"\r\n";
    EXPECT_EQ(std::vector<std::wstring>({ strLine }), texts.Take());
}
