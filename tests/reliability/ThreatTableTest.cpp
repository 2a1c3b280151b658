// Documents that are made to do harm, and what becomes of each with either parser. docs/security.md holds the same
// table. The long form (OV_LONG) has huge texts of 64 MB and meets those that keep Wine's parser busy for long.
#include "MemoryPeak.h"
#include "ovCore/OvXmlDocument.h"
#include "ovCore/OvXmlNodeList.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "TestFile.h"
#include "tests/PatchAdapter/AdapterFixture.h"
#include "Wine.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace
{

const char s_szSecret[] = "secret-of-the-machine"; // in a file that documents name
const char s_szDirectives[] = "%s%n%5$x%%";

/// Watches that every text comes as the argument of the one format, and that the secret is in none.
class CWatch final : public ILogSink, public IStateObserver
{
public:
#define OV_WATCH(operation)                                                                                            \
    void operation(const char* format, ...) override                                                                   \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        Watch(format, va_arg(arguments, const char*));                                                                 \
        va_end(arguments);                                                                                             \
    }
    OV_WATCH(LogError)
    OV_WATCH(LogWarning)
    OV_WATCH(LogInfo)
    OV_WATCH(LogDetail)
    OV_WATCH(LogTrace)
#undef OV_WATCH
    void OnStateChange(int32_t, const char* status) override
    {
        Watch("PatchAdapter: %s", status);
    }

    std::atomic<bool> m_bHarmed = false;
    std::atomic<unsigned> m_nDirectives = 0; // texts with them

private:
    void Watch(const char* format, const char* text)
    {
        if (std::strcmp(format, "PatchAdapter: %s") != 0 || std::strstr(text, s_szSecret) != nullptr)
            m_bHarmed = true;
        m_nDirectives += std::strstr(text, s_szDirectives) != nullptr ? 1u : 0u;
    }
};

enum Door
{
    Policy,  ///< SetConfiguration, in the code page 1252
    Document ///< the DOM wrapper, for what no narrow text holds
};

enum Verdict
{
    Refused,
    Applied
};

struct CThreat
{
    std::string what;
    Door door;
    std::wstring text;
    Verdict libxml2;
    Verdict wine;
    const char* szReason = ""; ///< why the parsers differ
    bool bSlowOnWine = false;
};

std::wstring Repeated(const std::wstring& wzPart, size_t nCount)
{
    std::wstring wzResult;
    wzResult.reserve(wzPart.size() * nCount);
    for (size_t i = 0; i < nCount; ++i)
        wzResult += wzPart;
    return wzResult;
}

std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

const std::wstring s_wzXml = L"<?xml version=\"1.0\"?>";

/// The policy element, with this in its configuration.
std::wstring Element(const std::wstring& wzConfiguration)
{
    return Wide(PolicyConfiguring("#"))
        .substr(s_wzXml.size())
        .replace(Wide(PolicyConfiguring("#")).find(L'#') - s_wzXml.size(), 1, wzConfiguration);
}

std::wstring Key(const std::wstring& wzText)
{
    return L"<serverKey>" + wzText + L"</serverKey>";
}

std::wstring Deep(size_t nLevels) // policy and configuration are two of them
{
    return s_wzXml + Element(Repeated(L"<a>", nLevels - 2) + Repeated(L"</a>", nLevels - 2));
}

std::wstring Attributes(size_t nCount)
{
    std::wstring wzResult;
    for (size_t i = 0; i < nCount; ++i)
        wzResult += L" a" + std::to_wstring(i) + L"=''";
    return s_wzXml + Element(L"<x" + wzResult + L"/>");
}

std::wstring Directives()
{
    std::wstring wzText = s_wzXml + L"<policy type='patch'><Comp RevID='%' policyType='20'/><groupRef name='%'/>"
                                    L"<configuration x='%'><policyType name='%'/>"
                                    L"<assessment enabled='1' periodInHours='%'/><serverKey>%</serverKey>"
                                    L"</configuration><?p %?></policy>";
    for (size_t n = 0; (n = wzText.find(L'%', n)) != std::wstring::npos; n += std::strlen(s_szDirectives))
        wzText.replace(n, 1, Wide(s_szDirectives));
    return wzText;
}

std::vector<CThreat> Threats(const std::wstring& wzFile)
{
    const bool bLong = std::getenv("OV_LONG") != nullptr;
    const std::wstring wzHuge(bLong ? 64u << 20 : 12u << 20, L'k');
    const std::wstring wzKey = Element(Key(L"K"));
    const std::wstring wzEntity = Element(Key(L"&e;"));
    const char* const szDtd = "Wine takes a document type declaration, and counts it as a node";
    const char* const szBound = "the stand-in bounds the attributes";
    const char* const szEnd = "Wine does not read what is behind the root from there on";
    const char* const szLookedUp = "Wine looks up the encoding that it is told to ignore";
    const auto declared = [&](const wchar_t* szEncoding) {
        return L"<?xml version='1.0' encoding='" + std::wstring(szEncoding) + L"'?>" + Element(Key(L"\xE9"));
    };
    return {
        { "document type", Policy, s_wzXml + L"<!DOCTYPE policy>" + wzKey, Refused, Refused },
        { "document type, no XML declaration", Policy, L"<!DOCTYPE policy>" + wzKey, Refused, Applied, szDtd },
        { "external subset", Policy, L"<!DOCTYPE policy SYSTEM '" + wzFile + L"'>" + wzKey, Refused, Applied, szDtd },
        { "external entity", Policy, L"<!DOCTYPE policy [<!ENTITY e SYSTEM '" + wzFile + L"'>]>" + wzEntity, Refused,
          Applied, szDtd },
        { "external parameter entity", Policy,
          L"<!DOCTYPE policy [<!ENTITY % e SYSTEM '" + wzFile + L"'> %e;]>" + wzKey, Refused, Applied, szDtd },
        { "nested entities", Policy,
          L"<!DOCTYPE policy [<!ENTITY a 'xxxxxxxxxx'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c "
          L"'&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'><!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;'>]>" +
              Element(Key(Repeated(L"&e;", 1000))),
          Refused, Refused },
        { "quadratic entities", Policy,
          L"<!DOCTYPE policy [<!ENTITY e '" + std::wstring(50000, L'x') + L"'>]>" +
              Element(Key(Repeated(L"&e;", bLong ? 2000 : 150))),
          Refused, Applied, szDtd },
        { "XInclude", Policy,
          s_wzXml + Element(Key(L"<i:include xmlns:i='http://www.w3.org/2001/XInclude' parse='text' href='" + wzFile +
                                L"'/>")),
          Applied, Applied },
        { "style sheet and schema", Policy,
          s_wzXml + Element(Key(L"<?xml-stylesheet href='" + wzFile +
                                L"'?><a xmlns:s='http://www.w3.org/2001/XMLSchema-instance' "
                                L"s:noNamespaceSchemaLocation='" +
                                wzFile + L"'/>")),
          Applied, Applied },
        { "255 levels", Policy, Deep(255), Applied, Applied },
        { "256 levels", Policy, Deep(256), Applied, Applied },
        { "257 levels", Policy, Deep(257), Applied, Applied },
        { "10,000 levels", Policy, Deep(10000), Refused, Refused },
        { "1,000 attributes", Policy, Attributes(1000), Applied, Applied },
        { "10,000 attributes", Policy, Attributes(10000), Refused, Applied, szBound },
        { "100,000 attributes", Policy, Attributes(100000), Refused, Applied, szBound, true },
        { "a huge text", Policy, s_wzXml + Element(Key(wzHuge)), Refused, Refused },
        { "a huge attribute", Policy, s_wzXml + Element(L"<a b='" + wzHuge + L"'/>"), Refused, Refused },
        { "9 MB of text", Policy, s_wzXml + Element(Key(std::wstring(9u << 20, L'k'))), Applied, Applied },
        { "high surrogate alone", Document,
          s_wzXml + Element(L"a\xD83D"
                            L"b"),
          Refused, Refused },
        { "low surrogate alone", Document, s_wzXml + Element(L"<a b='\xDE00'/>"), Refused, Refused },
        { "surrogates in the wrong order", Document, s_wzXml + Element(L"\xDE00\xD83D"), Refused, Refused },
        { "high surrogate at the end", Document, s_wzXml + wzKey + L"\xD83D", Refused, Applied, szEnd },
        { "reference to a surrogate", Policy, s_wzXml + Element(Key(L"&#xD83D;")), Refused, Refused },
        { "no character", Document, s_wzXml + Element(L"\xFFFE"), Refused, Refused },
        { "control character", Policy, s_wzXml + Element(Key(L"\x01")), Refused, Refused },
        { "control character in an attribute", Policy, s_wzXml + Element(L"<a b='\x1B'/>"), Refused, Refused },
        { "reference to a control character", Policy, s_wzXml + Element(Key(L"&#7;")), Refused, Refused },
        { "reference to NUL", Policy, s_wzXml + Element(Key(L"&#0;")), Refused, Refused },
        { "NUL inside", Document, s_wzXml + Element(std::wstring(L"a\0b", 3)), Refused, Refused },
        { "NUL behind the root", Document, s_wzXml + wzKey + std::wstring(L"\0<x>", 4), Refused, Applied, szEnd },
        { "declared UTF-8", Policy, declared(L"UTF-8"), Applied, Applied },
        { "declared UTF-16", Policy, declared(L"UTF-16"), Applied, Applied },
        { "declared UTF-7", Policy, declared(L"UTF-7"), Applied, Refused, szLookedUp },
        { "declared EBCDIC", Policy, declared(L"IBM037"), Applied, Refused, szLookedUp },
        { "declared with no such name", Policy, declared(L"x-none"), Applied, Refused, szLookedUp },
        { "byte-order mark of UTF-8", Policy, L"\xEF\xBB\xBF" + s_wzXml + wzKey, Refused, Refused },
        { "byte-order mark of UTF-16", Policy, L"\xFF\xFE" + s_wzXml + wzKey, Refused, Refused },
        { "end of a CDATA section in a text", Policy, s_wzXml + Element(Key(L"a]]>b")), Refused, Refused },
        { "escaped end of a CDATA section", Policy, s_wzXml + Element(Key(L"]]&gt;<![CDATA[]]]]><![CDATA[>]]>")),
          Applied, Applied },
        { "format directives", Policy, Directives(), Applied, Applied },
    };
}

std::string Word(Verdict verdict)
{
    return verdict == Applied ? "applied" : "refused";
}

/// The table's rows in the document.
std::vector<std::string> DocumentedRows()
{
    std::ifstream file(OV_SECURITY_DOCUMENT);
    std::vector<std::string> rows;
    bool bInside = false;
    for (std::string line; std::getline(file, line);)
    {
        if (line.compare(0, 4, "<!--") == 0)
            bInside = line == "<!-- threats -->";
        else if (bInside)
            rows.push_back(line);
    }
    return rows;
}

class ThreatTable : public CAdapterTest
{
protected:
    ThreatTable()
    {
        std::ofstream(std::filesystem::path(m_file.Name())) << s_szSecret;
        m_agent.Start();
        m_pAdapter = m_factory.Initialise(nullptr, nullptr, &m_watch, nullptr);
        m_pAdapter->RegisterStateObserver(&m_watch);
    }
    ~ThreatTable() override { m_factory.Uninitialise(m_pAdapter); }

    /// How a document names the file.
    std::wstring FileUrl() const
    {
        std::wstring wzUrl = m_file.Name();
        std::replace(wzUrl.begin(), wzUrl.end(), L'\\', L'/');
        return L"file://" + std::wstring(wzUrl[0] == L'/' ? L"" : L"/") + wzUrl;
    }

    Verdict Meet(const CThreat& threat)
    {
        return (threat.door == Policy ? IsPolicyApplied(threat) : IsDocumentLoaded(threat)) ? Applied : Refused;
    }

    CWatch m_watch;

private:
    bool IsPolicyApplied(const CThreat& threat)
    {
        StoreRevision(L"old");
        m_agent.ClearRecords();
        m_pAdapter->SetConfiguration(std::string(threat.text.begin(), threat.text.end()).c_str());
        for (const std::wstring& settings : m_agent.GetReceivedSettings())
            EXPECT_EQ(std::wstring::npos, settings.find(Wide(s_szSecret))) << threat.what;
        const bool bApplied = StoredRevision() != L"old";
        EXPECT_EQ(bApplied ? 1u : 0u, m_agent.GetReceivedSettings().size()) << threat.what;
        return bApplied;
    }

    static bool IsDocumentLoaded(const CThreat& threat)
    {
        COvXmlDocument document(nullptr, XmlParserBest);
        return document.LoadXML(COvBstr(threat.text).Get(), false, false, false) &&
               document.GetChildNodes().size() == 2;
    }

    CTestFile m_file{ "ov-threat-table" };
    PatchAdapterFactory m_factory;
    IAdapter* m_pAdapter = nullptr;
};

} // namespace

TEST_F(ThreatTable, EachDocumentMeetsItsVerdict)
{
    for (const CThreat& threat : Threats(FileUrl()))
    {
        if (IsWine() && threat.bSlowOnWine && std::getenv("OV_LONG") == nullptr)
            continue;
        const CMemoryPeak peak;
        const auto begin = std::chrono::steady_clock::now();
        const Verdict verdict = Meet(threat);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        EXPECT_EQ(Word(IsWine() ? threat.wine : threat.libxml2), Word(verdict)) << threat.what;
        EXPECT_FALSE(m_watch.m_bHarmed.exchange(false)) << threat.what;
        std::printf("%-36s %s %7.3f s %5u MB\n", threat.what.c_str(), Word(verdict).c_str(), time.count(),
                    peak.RiseMb());
    }
    EXPECT_LE(4u, m_watch.m_nDirectives); // they came through as they are
    ::SetErrorInfo(0, nullptr);
}

TEST_F(ThreatTable, IsTheDocumentsTable)
{
    std::vector<std::string> rows = { "| document | libxml2 | Wine | why they differ |", "|---|---|---|---|" };
    for (const CThreat& threat : Threats(L""))
    {
        EXPECT_EQ(threat.libxml2 == threat.wine, *threat.szReason == '\0') << threat.what;
        rows.push_back("| " + threat.what + " | " + Word(threat.libxml2) + " | " + Word(threat.wine) + " | " +
                       threat.szReason + " |");
    }
    EXPECT_EQ(rows, DocumentedRows());
}
