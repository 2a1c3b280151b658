#include "AdapterFixture.h"
#include "Masking.h"

namespace
{

class PolicyTranslation : public CAdapterTest
{
protected:
    PolicyTranslation() { StartWithService(); }

    /// The settings document that the configuration becomes, masked, or "<none>".
    std::wstring Translated(const std::string& configuration)
    {
        m_agent.ClearRecords();
        m_transcript = Configure(PolicyConfiguring(configuration));
        const std::vector<std::wstring> received = m_agent.GetReceivedSettings();
        return received.size() == 1 ? Masked(received[0]) : L"<none>";
    }

    /// What the translation wrote about the configuration's children, without the lines around it.
    std::string TranslationLines() const
    {
        const std::string first = "2 Info Msg: Translating policy XML\n";
        const size_t nBegin = m_transcript.find(first);
        const size_t nEnd = m_transcript.find("2 Revision: ");
        return nBegin == std::string::npos || nEnd == std::string::npos
                   ? m_transcript
                   : m_transcript.substr(nBegin + first.size(), nEnd - nBegin - first.size());
    }

    std::string m_transcript;
};

const wchar_t s_szNoKey[] = L"";

// The whole document. interval and key: the settings' values, null for none.
std::wstring Settings(const std::wstring& assessments, const wchar_t* interval, const wchar_t* key)
{
    const auto setting = [](const std::wstring& name, const std::wstring& value) {
        return L"<Trevok-Pyx:Setting name=\"" + name + L"\">" + value + L"</Trevok-Pyx:Setting>";
    };
    return L"<?xml version=\"1.0\" encoding=\"utf-8\"?><Policy "
           L"xmlns:Trevok-Pyx=\"" TREVOK_WEB_HOST L"\\Pyx\\Policy\" schemaVersion=\"1\">" +
           assessments +
           L"<Trevok-Pyx:Remediation mode=\"manual\"></Trevok-Pyx:Remediation><Trevok-Pyx:Settings id=\"#\">" +
           setting(L"AllowReboot", L"false") + (interval ? setting(L"AssessInterval", interval) : L"") +
           setting(L"RebootDelay", L"1") + setting(L"RebootMessageInterval", L"1") +
           (key ? setting(L"ServerPublicKey", key) : L"") + setting(L"ShowRebootMessage", L"false") +
           L"</Trevok-Pyx:Settings></Policy>";
}

std::wstring Assessment(const std::wstring& mode)
{
    return L"<Trevok-Pyx:Assessment mode=\"" + mode + L"\"></Trevok-Pyx:Assessment>";
}

std::string Name(const std::string& name)
{
    return "3 strPolicyNodeName: " + name + "\n";
}

const std::string s_keyMissing = "1 Info Msg: Server public key missing in policy\n";
const std::string s_keyReceived = "2 Info Msg: Server public received through PYX policy\n";

} // namespace

TEST_F(PolicyTranslation, EachConfigurationBecomesItsSettingsDocument)
{
    const struct
    {
        const char* configuration;
        std::wstring settings;
        std::string lines;
    } rows[] = {
        { "", Settings(L"", nullptr, nullptr), s_keyMissing },
        { "<serverKey>KEY</serverKey>", Settings(L"", nullptr, L"KEY"), Name("serverKey") + s_keyReceived },
        { "<serverKey/>", Settings(L"", nullptr, s_szNoKey), Name("serverKey") + s_keyReceived },
        { "<serverKey>a<b>b<c>c</c></b>d</serverKey>", Settings(L"", nullptr, L"abcd"),
          Name("serverKey") + s_keyReceived },
        { "<serverKey>A&lt;b&gt;&amp;\"\xE9</serverKey>", Settings(L"", nullptr, L"A<b>&\"\x00E9"),
          Name("serverKey") + s_keyReceived }, // as it came, not escaped
        { "<serverKey>1</serverKey><serverKey>2</serverKey><serverKey>3</serverKey>", Settings(L"", nullptr, L"1"),
          Name("serverKey") + s_keyReceived + Name("serverKey") +
              "1 Info Msg: More then one server public key in policy\n" + Name("serverKey") +
              "1 Info Msg: More then one server public key in policy\n" },
        { "<assessment enabled=\"true\" periodInHours=\"24\"/>", Settings(Assessment(L"auto"), L"24", nullptr),
          Name("assessment") + s_keyMissing },
        { "<assessment enabled=\"0\" periodInHours=\"a &lt; b\"/>", Settings(Assessment(L"off"), L"a < b", nullptr),
          Name("assessment") + s_keyMissing },
        { "<assessment enabled=\"-1\" periodInHours=\"\"/><assessment enabled=\"false\" periodInHours=\"9\"/>",
          Settings(Assessment(L"auto") + Assessment(L"off"), L"", nullptr),
          Name("assessment") + Name("assessment") + s_keyMissing },
        { "<p:serverKey xmlns:p=\"urn:p\">K</p:serverKey><ServerKey>no</ServerKey>text<!-- serverKey --><other/>",
          Settings(L"", nullptr, L"K"),
          Name("serverKey") + s_keyReceived + Name("ServerKey") + Name("") + Name("") + Name("other") },
        { "<remediation><serverKey>no</serverKey></remediation><proxy host=\"h\"/>", Settings(L"", nullptr, nullptr),
          Name("remediation") + "1 Info Msg: Remediation should not be present in policy\n" + Name("proxy") +
              "1 Info Msg: Proxy should not be present in policy\n" + s_keyMissing },
        { "<policyType name=\"servers\"/><serverKey>K</serverKey>", Settings(L"", nullptr, L"K"),
          Name("policyType") + Name("serverKey") + s_keyReceived },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.settings, Translated(row.configuration)) << row.configuration;
        EXPECT_EQ(row.lines, TranslationLines()) << row.configuration;
    }
    EXPECT_NE(std::string::npos, m_transcript.find("Group: all Policy: servers\n"));
}

TEST_F(PolicyTranslation, EachTranslationHasItsOwnId)
{
    Configure(PolicyConfiguring(""));
    Configure(PolicyConfiguring(""));
    const std::vector<std::wstring> received = m_agent.GetReceivedSettings();
    ASSERT_EQ(2u, received.size());
    EXPECT_NE(received[0], received[1]);
    EXPECT_EQ(Masked(received[0]), Masked(received[1]));
}

TEST_F(PolicyTranslation, TheLastConfigurationOfAPolicyCounts)
{
    Configure(PolicyWith("<configuration><serverKey>1</serverKey></configuration><Comp RevID=\"r\" policyType=\"1\"/>"
                         "<configuration/>"));
    ASSERT_EQ(1u, m_agent.GetReceivedSettings().size());
    EXPECT_EQ(Settings(L"", nullptr, nullptr), Masked(m_agent.GetReceivedSettings()[0]));
}
