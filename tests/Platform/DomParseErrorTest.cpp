// What a parse error tells: code, sentence, place and source line. Wine's tells none of it.
#include "ComApartment.h"
#include "DomTesting.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <tuple>
#include <unistd.h>

namespace
{

struct CTold
{
    LONG m_nCode = 0;
    LONG m_nLine = 0;
    LONG m_nLinePos = 0;
    LONG m_nFilePos = 0;
    std::wstring m_wzReason;
    std::wstring m_wzSource;
    std::wstring m_wzUrl;
};

CTold ParseErrorOf(const CDocumentPtr& spDocument)
{
    COvComPtr<IXMLDOMParseError> spError;
    EXPECT_EQ(S_OK, spDocument->get_parseError(spError.Receive()));
    CTold told;
    COvBstr strReason;
    COvBstr strSource;
    COvBstr strUrl;
    EXPECT_EQ(S_OK, spError->get_errorCode(&told.m_nCode));
    EXPECT_EQ(S_OK, spError->get_line(&told.m_nLine));
    EXPECT_EQ(S_OK, spError->get_linepos(&told.m_nLinePos));
    EXPECT_EQ(S_OK, spError->get_filepos(&told.m_nFilePos));
    spError->get_reason(strReason.Receive());
    spError->get_srcText(strSource.Receive());
    spError->get_url(strUrl.Receive());
    told.m_wzReason = TextOf(strReason);
    told.m_wzSource = TextOf(strSource);
    told.m_wzUrl = TextOf(strUrl);
    return told;
}

/// A file with those bytes while a test runs.
class CBytesFile
{
public:
    explicit CBytesFile(const std::string& szBytes)
        : m_path(std::filesystem::temp_directory_path() / ("dom-" + std::to_string(::getpid()) + ".xml"))
    {
        std::ofstream(m_path, std::ios::binary) << szBytes;
    }
    ~CBytesFile() { std::filesystem::remove(m_path); }
    CBytesFile(const CBytesFile&) = delete;
    CBytesFile& operator=(const CBytesFile&) = delete;

    _variant_t Source() const { return _variant_t(m_path.wstring().c_str()); }

private:
    const std::filesystem::path m_path;
};

} // namespace

class DomParseError : public testing::Test
{
protected:
    void TearDown() override { ::SetErrorInfo(0, nullptr); }

private:
    CComApartment m_apartment;
};

TEST_F(DomParseError, TellsWhatWhereAndOnWhichLine)
{
    const std::tuple<std::wstring, uint32_t, const wchar_t*, LONG, LONG, LONG, const wchar_t*> rows[] = {
        { L"", 0xC00CE558, L"XML document must have a top level element.", 1, 1, 0, L"" },
        { L"\n \n", 0xC00CE558, L"XML document must have a top level element.", 3, 1, 3, L"" },
        { L"\nx<a/>", 0xC00CE556, L"Invalid at the top level of the document.", 2, 1, 1, L"x<a/>" },
        { L"<a/>\r\n<b/>", 0xC00CE555, L"Only one top level element is allowed in an XML document.", 2, 1, 6, L"<b/>" },
        { L"<a/>\n</b>", 0xC00CE556, L"Invalid at the top level of the document.", 2, 1, 5, L"</b>" },
        { std::wstring(L"<a/>\0", 5), 0xC00CE556, L"Invalid at the top level of the document.", 1, 5, 4, L"<a/>" },
        { L"<a>\n\n <b></a>\n", 0xC00CE56D, L"End tag 'a' does not match the start tag 'b'.", 3, 9, 13, L" <b></a>" },
        { L"<a>\n<b>", 0xC00CE553, L"The following tags were not closed: b.", 2, 4, 7, L"<b>" },
        { L"<a>\xD83D\xDE00\x20AC\xE9&x;</a>", 0x80004005, L"Reference to undefined entity 'x'.", 1, 11, 10,
          L"<a>\xD83D\xDE00\x20AC\xE9&x;</a>" },
        { L"<a>\r\r<b c=1/></a>", 0xC00CE502,
          L"A string literal was expected, but no opening quote character was found.", 3, 6, 10, L"<b c=1/></a>" },
        { L"<a b/>", 0xC00CE501, L"Missing equals sign between attribute and attribute value.", 1, 5, 4, L"<a b/>" },
        { L"<a b='1'c='2'/>", 0xC00CE509, L"Required white space was missing.", 1, 9, 8, L"<a b='1'c='2'/>" },
        { L"<a b='1' b='2'/>", 0xC00CE554, L"Duplicate attribute.", 1, 15, 14, L"<a b='1' b='2'/>" },
        { L"<a b='<'/>", 0xC00CE506, L"The character '<' cannot be used in an attribute value.", 1, 7, 6,
          L"<a b='<'/>" },
        { L"<a>x\x1y</a>", 0xC00CE508, L"An invalid character was found in text content.", 1, 5, 4, L"<a>x\x1y</a>" },
        { L"<a>\xD83D</a>", 0xC00CE508, L"An invalid character was found in text content.", 1, 4, 3, L"<a>\xD83D</a>" },
        { L"<a>\n<p:b/></a>", 0xC00CE01D, L"Reference to undeclared namespace prefix: 'p'.", 2, 5, 8, L"<p:b/></a>" },
        { L"<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", 0xC00CE584, L"DTD is prohibited.", 2, 13,
          34, L"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>" },
        { L"<a><?xml version='1.0'?></a>", 0x80004005, L"XML declaration allowed only at the start of the document", 1,
          9, 8, L"<a><?xml version='1.0'?></a>" },
    };
    for (const auto& [wzText, nCode, szReason, nLine, nLinePos, nFilePos, szSource] : rows)
    {
        const CDocumentPtr spDocument = NewDocument();
        EXPECT_EQ(S_FALSE, LoadText(spDocument, wzText)) << wzText;
        const CTold told = ParseErrorOf(spDocument);
        EXPECT_EQ(nCode, static_cast<uint32_t>(told.m_nCode)) << wzText;
        EXPECT_EQ(szReason + std::wstring(L"\r\n"), told.m_wzReason);
        EXPECT_EQ((std::vector<LONG>{ nLine, nLinePos, nFilePos }),
                  (std::vector<LONG>{ told.m_nLine, told.m_nLinePos, told.m_nFilePos }))
            << wzText;
        EXPECT_EQ(szSource, std::wstring(told.m_wzSource.c_str())) << wzText; // up to the NUL of one row
        EXPECT_EQ(L"", told.m_wzUrl);
    }
}

TEST_F(DomParseError, FilesAreReadInTheEncodingThatTheyDeclare)
{
    const std::string szUtf16("\xFF\xFE<\0a\0>\0\xE9\0=\xD8\0\xDE<\0/\0a\0>\0", 22);
    const std::tuple<std::string, const wchar_t*, uint32_t> rows[] = {
        { "<a>\xC3\xA9</a>", L"a('\xE9')", 0 },
        { "\xEF\xBB\xBF<a>\xF0\x9F\x98\x80</a>", L"a('\xD83D\xDE00')", 0 },
        { "<?xml version='1.0' encoding='windows-1252'?><a>\xE9\x80</a>",
          L"?xml version=\"1.0\" encoding=\"windows-1252\" a('\xE9\x20AC')", 0 },
        { szUtf16, L"a('\xE9\xD83D\xDE00')", 0 },
        { "<a>\xE9</a>", L"", 0xC00CE508 },
        { "<?xml version='1.0' encoding='nonsense'?><a/>", L"", 0xC00CE56E },
        { "", L"", 0xC00CE558 },
        { "<a>", L"", 0xC00CE553 },
    };
    for (const auto& [szBytes, szOutline, nCode] : rows)
    {
        const CBytesFile file(szBytes);
        const CDocumentPtr spDocument = Loaded(L"<before/>");
        VARIANT_BOOL bLoaded = VARIANT_FALSE;
        EXPECT_EQ(nCode == 0 ? S_OK : S_FALSE, spDocument->load(file.Source(), &bLoaded)) << szBytes;
        EXPECT_EQ(nCode == 0 ? VARIANT_TRUE : VARIANT_FALSE, bLoaded);
        EXPECT_EQ(szOutline, Outline(spDocument.Get()));
        EXPECT_EQ(nCode, static_cast<uint32_t>(ParseErrorOf(spDocument).m_nCode)) << szBytes;
    }
}

TEST_F(DomParseError, OnlyFilesAreLoaded)
{
    constexpr uint32_t nNotFound = 0x800C0006;
    for (const wchar_t* const szPath : { L"", L"Z:\\nowhere\\at.all", L"Z:\\tmp", L"Z:\\dev\\zero",
                                         L"\\\\server\\share\\a", L"http://www.example.com/a.xml" })
    {
        const CDocumentPtr spDocument = Loaded(L"<before/>");
        VARIANT_BOOL bLoaded = VARIANT_TRUE;
        EXPECT_EQ(S_FALSE, spDocument->load(_variant_t(szPath), &bLoaded)) << szPath;
        EXPECT_EQ(VARIANT_FALSE, bLoaded);
        const CTold told = ParseErrorOf(spDocument);
        EXPECT_EQ(nNotFound, static_cast<uint32_t>(told.m_nCode)) << szPath;
        EXPECT_EQ(szPath, told.m_wzUrl);
        EXPECT_EQ(L"", Outline(spDocument.Get()));
    }
    const CDocumentPtr spDocument = Loaded(L"<before/>");
    VARIANT_BOOL bLoaded = VARIANT_TRUE;
    EXPECT_EQ(E_INVALIDARG, spDocument->load(_variant_t(LONG(5)), &bLoaded));
    EXPECT_EQ(VARIANT_FALSE, bLoaded);
    EXPECT_EQ(L"before", Outline(spDocument.Get()));
}

TEST_F(DomParseError, ARefusedCallLeavesAnErrorObject)
{
    const CDocumentPtr spDocument = Loaded(L"<a/>");
    COvComPtr<IXMLDOMNodeList> spList;
    EXPECT_EQ(
        S_OK,
        As<ISupportErrorInfo>(spDocument.Get(), IID_ISupportErrorInfo)->InterfaceSupportsErrorInfo(IID_IXMLDOMNode));
    EXPECT_EQ(E_FAIL, spDocument->selectNodes(COvBstr(L"a[").Get(), spList.Receive()));
    COvComPtr<IErrorInfo> spError;
    ASSERT_EQ(S_OK, ::GetErrorInfo(0, spError.Receive()));
    COvBstr strDescription;
    EXPECT_EQ(S_OK, spError->GetDescription(strDescription.Receive()));
    EXPECT_EQ(L"The query is not valid: a[", TextOf(strDescription));
}

TEST_F(DomParseError, TheThirdGenerationStartsWithoutXPath)
{
    const CDocumentPtr spDocument = NewDocument(CLSID_DOMDocument30);
    ASSERT_EQ(S_OK, LoadText(spDocument, L"<a/>"));
    const CNodePtr spElement = ChildrenOf(spDocument.Get()).front();
    HRESULT hr = S_OK;
    EXPECT_TRUE(Selected(spElement.Get(), L"/a", &hr).empty());
    EXPECT_EQ(E_FAIL, hr);
    EXPECT_EQ(E_FAIL, spDocument->setProperty(COvBstr(L"NewParser").Get(), _variant_t(true)));
    EXPECT_EQ(S_OK, spDocument->setProperty(COvBstr(L"SelectionLanguage").Get(), _variant_t(L"XPath")));
    EXPECT_EQ(1u, Selected(spElement.Get(), L"/a", &hr).size());
}
