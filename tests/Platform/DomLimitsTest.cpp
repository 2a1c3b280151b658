// Texts that are made to cost time or memory are loaded or refused, in time that goes with their size.
#include "ComApartment.h"
#include "DomTesting.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <tuple>

namespace
{

/// Distinct, and short.
std::wstring Name(size_t nIndex)
{
    std::wstring wzName;
    do
        wzName += static_cast<wchar_t>(L'a' + nIndex % 26);
    while ((nIndex /= 26) != 0);
    return wzName;
}

std::wstring Repeated(const std::wstring& wzPart, size_t nCount)
{
    std::wstring wzResult;
    wzResult.reserve(wzPart.size() * nCount);
    for (size_t i = 0; i < nCount; ++i)
        wzResult += wzPart;
    return wzResult;
}

std::wstring Numbered(size_t nCount, const std::function<std::wstring(size_t)>& part)
{
    std::wstring wzResult;
    for (size_t i = 0; i < nCount; ++i)
        wzResult += part(i);
    return wzResult;
}

std::wstring In(const wchar_t* szElement, const std::wstring& wzContent)
{
    return L"<" + std::wstring(szElement) + L">" + wzContent + L"</" + szElement + L">";
}

std::wstring Attributes(size_t nCount)
{
    return Numbered(nCount, [](size_t i) { return L" " + Name(i) + L"=''"; });
}

std::wstring Namespaces(size_t nCount)
{
    return Numbered(nCount, [](size_t i) { return L" xmlns:" + Name(i) + L"='u'"; });
}

std::wstring Nested(size_t nLevels, const std::wstring& wzInnermost = L"")
{
    return Repeated(L"<a>", nLevels) + wzInnermost + Repeated(L"</a>", nLevels);
}

} // namespace

class DomLimits : public testing::Test
{
    CComApartment m_apartment;
};

TEST_F(DomLimits, EveryTextIsAnsweredInTimeThatGoesWithItsSize)
{
    constexpr size_t nMillion = 1000 * 1000;
    const std::wstring wzEquals = Repeated(L" x=\"=\"", 2000); // looks like attributes, where none are
    const std::wstring wzLong = L"<a>" + std::wstring(8 * nMillion, L'x');
    const std::tuple<const char*, bool, std::wstring> rows[] = {
        { "as many attributes as are allowed", true, L"<a" + Attributes(1000) + L"/>" },
        { "one more", false, L"<a" + Attributes(1001) + L"/>" },
        { "100,000 attributes", false, L"<a" + Attributes(100000) + L"/>" },
        { "100,000 attributes behind a fault that would hide them", false,
          L"<a b='1'c='><d" + Attributes(100000) + L"/>" },
        { "many tags full of attributes", true, In(L"a", Repeated(L"<b" + Attributes(1000) + L"/>", 120)) },
        { "1,001 equals signs in one value", true, L"<a b='" + std::wstring(1001, L'=') + L"'/>" },
        { "what looks like attributes in a text", true, In(L"a", wzEquals) },
        { "in a comment", true, In(L"a", L"<!--<b" + wzEquals + L"-->") },
        { "in a comment that begins like an end", true, In(L"a", L"<!--><b" + wzEquals + L"-->") },
        { "in a CDATA section", true, In(L"a", L"<![CDATA[<b" + wzEquals + L"]]]>") },
        { "in a processing instruction", true, In(L"a", L"<?p <b" + wzEquals + L"?\?>") },
        { "attributes behind all of these", false,
          In(L"a", L"<!--'--->--><![CDATA[\"]]>'\"<?p '?><b" + Attributes(1001) + L"/>") },
        { "as many namespaces as are allowed", true, L"<a" + Namespaces(500) + L"/>" },
        { "one more", false, L"<a" + Namespaces(501) + L"/>" },
        { "one more, in an inner element", false,
          In(L"a", L"<b" + Namespaces(400) + L"><c" + Namespaces(101) + L"/></b>") },
        { "the same one after the other", true, In(L"a", Repeated(L"<b" + Namespaces(400) + L"/>", 20)) },
        { "each prefix looked up behind 499 others", true,
          L"<a" + Namespaces(500) + L">" + Repeated(L"<" + Name(499) + L":b/>", 100000) + L"</a>" },
        { "257 levels", true, Nested(257) },
        { "258 levels", false, Nested(258) },
        { "10,000 levels", false, Nested(10000) },
        { "100,000 children deep down", true, Nested(250, Repeated(L"<b/>", 100000)) },
        { "100,000 children", true, In(L"a", Repeated(L"<b c='d'/>\n", 100000)) },
        { "as many white spaces", true, In(L"a", Repeated(L" <b/>", 100000)) },
        { "as many comments", true, In(L"a", Repeated(L"<!---->", 100000)) },
        { "as many names", true, In(L"a", Numbered(100000, [](size_t i) { return L"<" + Name(i) + L"/>"; })) },
        { "references in a text", true, In(L"a", Repeated(L"&lt;&#10;", nMillion / 10)) },
        { "references in a value", true, L"<a b='" + Repeated(L"&amp;&#10;", nMillion / 10) + L"'/>" },
        { "brackets", true, In(L"a", Repeated(L"]] ", nMillion / 3)) },
        { "a document of 10 MB", true, In(L"a", Repeated(L"<b>some text in here</b>", 10 * nMillion / 24)) },
        { "a text of 9 MB", true, In(L"a", std::wstring(9 * nMillion, L'x')) },
        { "a text of 11 MB", false, In(L"a", std::wstring(11 * nMillion, L'x')) },
        { "a value of 11 MB", false, L"<a b='" + std::wstring(11 * nMillion, L'x') + L"'/>" },
        { "a comment of 11 MB", false, In(L"a", L"<!--" + std::wstring(11 * nMillion, L'x') + L"-->") },
        { "a CDATA section of 11 MB", false, In(L"a", L"<![CDATA[" + std::wstring(11 * nMillion, L'x') + L"]]>") },
        { "a name of 11 MB", false, L"<" + std::wstring(11 * nMillion, L'x') + L"/>" },
        { "8 MB before thousands of forbidden characters", false, wzLong + Repeated(L"\x01", 20000) },
        { "before stray ampersands", false, wzLong + Repeated(L"& ", 20000) },
        { "before undefined entities", false, wzLong + Repeated(L"&x;", 20000) },
        { "before double hyphens in a comment", false, wzLong + L"<!--" + Repeated(L"--x", 20000) + L"-->" },
        { "before one attribute again and again", false, wzLong + L"<b" + Repeated(L" c=''", 900) + L"/>" },
        { "nested entities", false,
          L"<!DOCTYPE a [<!ENTITY b 'xxxxxxxxxx'><!ENTITY c '&b;&b;&b;&b;&b;&b;'>]>" +
              In(L"a", Repeated(L"&c;", 100000)) },
    };
    constexpr double nMostSeconds = 5; // of this thread's; an unbounded check of attributes takes 13 and more
    for (const auto& [szWhat, bLoads, wzText] : rows)
    {
        const CDocumentPtr spDocument = NewDocument();
        const std::clock_t nBegin = std::clock();
        EXPECT_EQ(bLoads ? S_OK : S_FALSE, LoadText(spDocument, wzText)) << szWhat;
        EXPECT_GT(nMostSeconds, static_cast<double>(std::clock() - nBegin) / CLOCKS_PER_SEC) << szWhat;
    }
}

TEST_F(DomLimits, NothingIsSaidOnStandardError)
{
    testing::internal::CaptureStderr();
    for (const wchar_t* const szText :
         { L"<a>&x;", L"<a xmlns='relative'/>", L"<a xmlns='\\'/>", L"<!DOCTYPE a>", L"" })
    {
        const CDocumentPtr spDocument = NewDocument();
        LoadText(spDocument, szText);
        Selected(spDocument.Get(), L"a[unknown()]");
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ::SetErrorInfo(0, nullptr);
}
