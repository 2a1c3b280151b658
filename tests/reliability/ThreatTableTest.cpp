// Documents that are made to do harm, and what becomes of each with either parser. docs/security.md holds the same
// table. The long form (OV_LONG) has huge texts of 64 MB and meets those that keep Wine's parser busy for long.
#include "HostileHost.h"
#include "ovCore/OvXmlDocument.h"
#include "ovCore/OvXmlNodeList.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "TestData.h"
#include "TestFile.h"
#include "TestPlatform.h"
#include "tests/PatchAdapter/AdapterFixture.h"
#include "Wine.h"

#include <chrono>
#include <cstdlib>
#include <fstream>

namespace
{

const char s_sz100000Attributes[] = "100,000 attributes"; // which Wine takes 23 seconds for

enum Verdict
{
    Refused,
    Applied
};

struct CThreat
{
    std::string what;
    std::wstring text;
    Verdict libxml2;
    Verdict wine;
    const char* szReason = ""; ///< why the parsers differ
};

std::wstring Repeated(const std::wstring& wzPart, size_t nCount)
{
    std::wstring wzResult;
    for (size_t i = 0; i < nCount; ++i)
        wzResult += wzPart;
    return wzResult;
}

std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

/// The policy element around this.
std::wstring Element(const std::wstring& wzConfiguration)
{
    return L"<policy type='patch'><Comp RevID='%' policyType='20'/><groupRef name='%'/><configuration>" +
           wzConfiguration + L"</configuration></policy>";
}

std::wstring ElementWithKey(const std::wstring& wzKey)
{
    return Element(L"<serverKey>" + wzKey + L"</serverKey>");
}

std::wstring In(const std::wstring& wzConfiguration)
{
    return L"<?xml version='1.0'?>" + Element(wzConfiguration);
}

std::wstring InKey(const std::wstring& wzKey)
{
    return L"<?xml version='1.0'?>" + ElementWithKey(wzKey);
}

std::wstring Dtd(const std::wstring& wzSubset, const std::wstring& wzKey = L"&e;")
{
    return L"<!DOCTYPE policy " + wzSubset + L">" + ElementWithKey(wzKey);
}

std::wstring Declared(const wchar_t* szEncoding)
{
    return L"<?xml version='1.0' encoding='" + std::wstring(szEncoding) + L"'?>" + ElementWithKey(L"\xE9");
}

std::wstring Deep(size_t nLevels) // policy and configuration are two of them
{
    return In(Repeated(L"<a>", nLevels - 2) + Repeated(L"</a>", nLevels - 2));
}

std::wstring Attributes(size_t nCount)
{
    std::wstring wzResult;
    for (size_t i = 0; i < nCount; ++i)
        wzResult += L" a" + std::to_wstring(i) + L"=''";
    return In(L"<x" + wzResult + L"/>");
}

/// With directives in every value. (An attribute's text is taken as it is.)
std::wstring Directives()
{
    std::wstring wzText = In(L"<policyType name='%'/><assessment enabled='1' periodInHours='%'/>"
                             L"<serverKey x='%'>%</serverKey><?p %?><!--%-->");
    for (size_t n = 0; (n = wzText.find(L'%', n)) != std::wstring::npos; n += std::strlen(DIRECTIVES))
        wzText.replace(n, 1, Wide(DIRECTIVES));
    return wzText;
}

std::vector<CThreat> Threats(const std::wstring& wzFile)
{
    const bool bLong = std::getenv("OV_LONG") != nullptr;
    const std::wstring wzHuge(bLong ? 64u << 20 : 12u << 20, L'k');
    const std::wstring wzSchema = L" xmlns:s='http://www.w3.org/2001/XMLSchema-instance' s:noNamespaceSchemaLocation='";
    const std::wstring wzInclude = L"<i:include xmlns:i='http://www.w3.org/2001/XInclude' parse='text' href='";
    const wchar_t* const szNested = L"[<!ENTITY a 'xxxxxxxxxx'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
                                    L"<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'>"
                                    L"<!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;'>]";
    const std::wstring wzQuadratic = L"[<!ENTITY e '" + std::wstring(50000, L'x') + L"'>]";
    const char* const szDtd = "Wine takes a document type declaration, and counts it as a node";
    const char* const szBound = "the stand-in bounds the attributes";
    const char* const szEnd = "Wine does not read what is behind the root from there on";
    const char* const szLookedUp = "Wine looks up the encoding that it is told to ignore";
    return {
        { "document type", L"<?xml version='1.0'?>" + Dtd(L"", L""), Refused, Refused },
        { "document type, no XML declaration", Dtd(L"", L""), Refused, Applied, szDtd },
        { "external subset", Dtd(L"SYSTEM '" + wzFile + L"'", L""), Refused, Applied, szDtd },
        { "external entity", Dtd(L"[<!ENTITY e SYSTEM '" + wzFile + L"'>]"), Refused, Applied, szDtd },
        { "external parameter entity", Dtd(L"[<!ENTITY % e SYSTEM '" + wzFile + L"'> %e;]", L""), Refused, Applied,
          szDtd },
        { "nested entities", Dtd(szNested, Repeated(L"&e;", 1000)), Refused, Refused },
        { "quadratic entities", Dtd(wzQuadratic, Repeated(L"&e;", bLong ? 2000 : 150)), Refused, Applied, szDtd },
        { "XInclude", InKey(wzInclude + wzFile + L"'/>"), Applied, Applied },
        { "style sheet", InKey(L"<?xml-stylesheet href='" + wzFile + L"'?>"), Applied, Applied },
        { "schema", InKey(L"<a" + wzSchema + wzFile + L"'/>"), Applied, Applied },
        { "255 levels", Deep(255), Applied, Applied },
        { "256 levels", Deep(256), Applied, Applied },
        { "257 levels", Deep(257), Applied, Applied },
        { "10,000 levels", Deep(10000), Refused, Refused },
        { "100,000 elements", In(Repeated(L"<x/>", 100000)), Applied, Applied },
        { "1,000 attributes", Attributes(1000), Applied, Applied },
        { "10,000 attributes", Attributes(10000), Refused, Applied, szBound },
        { s_sz100000Attributes, Attributes(100000), Refused, Applied, szBound },
        { "a huge text", InKey(wzHuge), Refused, Refused },
        { "a huge attribute", In(L"<a b='" + wzHuge + L"'/>"), Refused, Refused },
        { "9 MB of text", InKey(std::wstring(9u << 20, L'k')), Applied, Applied },
        { "high surrogate alone", InKey(L"\xD83D."), Refused, Refused },
        { "low surrogate alone", In(L"<a b='\xDE00'/>"), Refused, Refused },
        { "surrogates in the wrong order", InKey(L"\xDE00\xD83D"), Refused, Refused },
        { "high surrogate at the end", InKey(L"") + L"\xD83D", Refused, Applied, szEnd },
        { "reference to a surrogate", InKey(L"&#xD83D;"), Refused, Refused },
        { "no character", InKey(L"\xFFFE"), Refused, Refused },
        { "control character", InKey(L"\x01"), Refused, Refused },
        { "control character in an attribute", In(L"<a b='\x1B'/>"), Refused, Refused },
        { "reference to a control character", InKey(L"&#7;"), Refused, Refused },
        { "reference to NUL", InKey(L"&#0;"), Refused, Refused },
        { "NUL inside", InKey(std::wstring(L"a\0b", 3)), Refused, Refused },
        { "NUL behind the root", InKey(L"") + std::wstring(L"\0<x>", 4), Refused, Applied, szEnd },
        { "declared UTF-8", Declared(L"UTF-8"), Applied, Applied },
        { "declared UTF-16", Declared(L"UTF-16"), Applied, Applied },
        { "declared UTF-7", Declared(L"UTF-7"), Applied, Refused, szLookedUp },
        { "declared EBCDIC", Declared(L"IBM037"), Applied, Refused, szLookedUp },
        { "declared with no such name", Declared(L"x-none"), Applied, Refused, szLookedUp },
        { "byte-order mark of UTF-8", L"\xEF\xBB\xBF" + InKey(L""), Refused, Refused },
        { "byte-order mark of UTF-16", L"\xFF\xFE" + InKey(L""), Refused, Refused },
        { "end of a CDATA section in a text", InKey(L"a]]>b"), Refused, Refused },
        { "escaped end of a CDATA section", InKey(L"]]&gt;<![CDATA[]]]]><![CDATA[>]]>"), Applied, Applied },
        { "format directives", Directives(), Applied, Applied },
    };
}

std::string Word(Verdict verdict)
{
    return verdict == Applied ? "applied" : "refused";
}

class ThreatTable : public CAdapterTest
{
protected:
    ThreatTable()
    {
        std::ofstream(std::filesystem::path(m_file.Name())) << SECRET;
        m_agent.Start();
        m_pAdapter = m_factory.Initialise(nullptr, nullptr, &m_host, nullptr);
        m_pAdapter->RegisterStateObserver(&m_host);
    }
    ~ThreatTable() override { m_factory.Uninitialise(m_pAdapter); }

    /// How a document names the file.
    std::wstring FileUrl() const
    {
        std::wstring wzUrl = m_file.Name();
        std::replace(wzUrl.begin(), wzUrl.end(), L'\\', L'/');
        return L"file://" + std::wstring(wzUrl[0] == L'/' ? L"" : L"/") + wzUrl;
    }

    /// Hands in what a narrow text in the code page 1252 can hold as a policy, and the rest to the DOM's wrapper.
    Verdict Meet(const CThreat& threat)
    {
        const auto isNarrow = [](wchar_t c) { return c != 0 && c < 0x100; };
        const bool bNarrow = std::all_of(threat.text.begin(), threat.text.end(), isNarrow);
        return (bNarrow ? IsPolicyApplied(threat.text) : IsDocumentLoaded(threat.text)) ? Applied : Refused;
    }

    CHostileHost m_host;

private:
    bool IsPolicyApplied(const std::wstring& wzText)
    {
        StoreRevision(L"old");
        m_agent.ClearRecords();
        m_pAdapter->SetConfiguration(std::string(wzText.begin(), wzText.end()).c_str());
        for (const std::wstring& settings : m_agent.GetReceivedSettings())
            EXPECT_EQ(std::wstring::npos, settings.find(Wide(SECRET)));
        const bool bApplied = StoredRevision() != L"old";
        EXPECT_EQ(bApplied ? 1u : 0u, m_agent.GetReceivedSettings().size());
        return bApplied;
    }

    static bool IsDocumentLoaded(const std::wstring& wzText)
    {
        COvXmlDocument document(nullptr, XmlParserBest);
        return document.LoadXML(COvBstr(wzText).Get(), false, false, false) && document.GetChildNodes().size() == 2;
    }

    CTestFile m_file{ "ov-threat-table" };
    PatchAdapterFactory m_factory;
    IAdapter* m_pAdapter = nullptr;
};

} // namespace

TEST_F(ThreatTable, EachDocumentMeetsItsVerdict)
{
    const bool bWine =
        WineDiffers("Windows' parser follows the XML rules that the stand-in's does, and forbids document types");
    for (const CThreat& threat : Threats(FileUrl()))
    {
        if (bWine && threat.what == s_sz100000Attributes && std::getenv("OV_LONG") == nullptr)
            continue;
        SCOPED_TRACE(threat.what);
        const unsigned nPeakMb = PeakMemoryMb();
        const auto begin = std::chrono::steady_clock::now();
        const Verdict verdict = Meet(threat);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        EXPECT_EQ(Word(bWine ? threat.wine : threat.libxml2), Word(verdict));
        EXPECT_FALSE(m_host.m_bHarmed.exchange(false));
        std::printf("%-36s %s %7.3f s %5u MB more\n", threat.what.c_str(), Word(verdict).c_str(), time.count(),
                    PeakMemoryMb() - nPeakMb);
    }
    EXPECT_LE(4u, m_host.m_nDirectives); // they came through as they are
    ::SetErrorInfo(0, nullptr);
}

TEST(ThreatTableDocument, HoldsTheSameTable)
{
    std::string table = "<!-- threats -->\n| document | libxml2 | Wine | why they differ |\n|---|---|---|---|\n";
    for (const CThreat& threat : Threats(L""))
    {
        EXPECT_EQ(threat.libxml2 == threat.wine, *threat.szReason == '\0') << threat.what;
        table += "| " + threat.what + " | " + Word(threat.libxml2) + " | " + Word(threat.wine) + " | " +
                 threat.szReason + " |\n";
    }
    std::ifstream file(TestDataFolder(OV_DOCUMENTS) + "/security.md");
    const std::string document{ std::istreambuf_iterator<char>(file), {} };
    EXPECT_NE(std::string::npos, document.find(table + "<!-- end of threats -->")) << table;
}
