// Policies that are put together from the input, good ones and bad ones, beside a plain idea of what becomes of each.
#include "Fuzz.h"
#include "FuzzAdapter.h"

#include <map>

namespace
{

/// A text of a policy: as the document has it, and as it is meant.
struct CText
{
    std::string written;
    std::wstring strMeant;
};

class CPolicy
{
public:
    explicit CPolicy(CFuzzInput& input) : m_input(input) { Write(); }

    const std::string& Document() const { return m_document; }
    bool IsRefused() const { return m_bRefused; }
    bool IsPatch() const { return m_bPatch; }
    const std::wstring& RevId() const { return m_strRevId; }

    /// Without the id of the settings.
    const std::wstring& Settings() const { return m_strSettings; }

private:
    bool OneIn(unsigned n) { return m_input.Below(n) == 1; }

    void Write()
    {
        static const char* const s_names[] = { "policy", "config", "Policy", "policies" };
        if (OneIn(16))
            m_bRefused = true; // the declaration is one of the two nodes
        else
            m_document = "<?xml version=\"1.0\"?>";
        const std::string prefix = OneIn(4) ? "p:" : "";
        const unsigned nName = OneIn(8) ? m_input.Below(4) : 0;
        m_bPatch = nName == 0;
        m_bRefused = m_bRefused || nName > 1;
        m_document += "<" + prefix + s_names[nName] + " xmlns:p='u'" + Type() + ">";
        for (unsigned n = 0; n < 12 && !m_input.IsEmpty(); ++n)
            Child();
        m_document += "</" + prefix + s_names[nName] + ">";
        if (OneIn(16))
        {
            m_document += "<!-- one too many -->";
            m_bRefused = true;
        }
        m_bRefused = m_bRefused || (m_bPatch && !(m_bComp && m_bConfiguration));
    }

    std::string Type()
    {
        const unsigned n = m_input.Below(16);
        m_bRefused = m_bRefused || (m_bPatch && (n == 1 || n == 2));
        return n == 1 ? "" : n == 2 ? " type='Patch'" : " type='patch'";
    }

    void Child()
    {
        switch (m_input.Below(6))
        {
        case 0:
            Comp();
            break;
        case 1:
            Attribute("groupRef", "name");
            break;
        case 2:
            m_bConfiguration = true;
            Configuration();
            break;
        default:
            Ignored();
            break;
        }
    }

    void Comp()
    {
        static const std::pair<const char*, bool> s_types[] = {
            { "20", true }, { "-1", true },          { " 7 ", true },        { "20.5", true }, { "&amp;H14", true },
            { "x", false }, { "2147483648", false }, { "2147483647", true }, { "", false },    { "1,000", true },
        };
        m_bComp = true;
        const CText revId = Text(true);
        m_strRevId = revId.strMeant;
        const auto& [szType, bLong] = s_types[m_input.Below(std::size(s_types))];
        m_bRefused = m_bRefused || !bLong;
        m_document += "<Comp policyType='" + std::string(szType) + "'" + Named("RevID", revId) + "/>";
    }

    /// The attribute, or, now and then, none, which refuses the policy.
    std::string Named(const std::string& name, const CText& value)
    {
        if (!OneIn(16))
            return " " + name + "=\"" + value.written + "\"";
        m_bRefused = true;
        return "";
    }

    void Attribute(const std::string& element, const std::string& name)
    {
        m_document += "<" + element + Named(name, Text(true)) + "/>";
    }

    void Ignored()
    {
        static const char* const s_nodes[] = { "<!-- Comp -->",
                                               "text",
                                               "<comp/>",
                                               "<?comp x?>",
                                               "<![CDATA[<Comp>]]>",
                                               "<other><Comp/><configuration/></other>",
                                               " \n",
                                               "<p:x/>" };
        m_document += s_nodes[m_input.Below(std::size(s_nodes))];
    }

    void Configuration()
    {
        std::map<std::wstring, std::wstring> settings;
        std::wstring strAssessments;
        const std::string prefix = OneIn(4) ? "p:" : "";
        m_document += "<" + prefix + "configuration>";
        for (unsigned n = m_input.Below(8); n > 0; --n)
            Part(settings, strAssessments);
        m_document += "</" + prefix + "configuration>";
        for (const auto& [szName, szValue] :
             { std::pair(L"AllowReboot", L"false"), std::pair(L"RebootDelay", L"1"),
               std::pair(L"ShowRebootMessage", L"false"), std::pair(L"RebootMessageInterval", L"1") })
            settings.emplace(szName, szValue);
        m_strSettings = L"<?xml version=\"1.0\" encoding=\"utf-8\"?><Policy xmlns:Trevok-Pyx=\"" +
                        std::wstring(L"" TREVOK_WEB_HOST) + L"\\Pyx\\Policy\" schemaVersion=\"1\">" + strAssessments +
                        L"<Trevok-Pyx:Remediation mode=\"manual\"></Trevok-Pyx:Remediation><Trevok-Pyx:Settings>";
        for (const auto& [strName, strValue] : settings)
            m_strSettings += L"<Trevok-Pyx:Setting name=\"" + strName + L"\">" + strValue + L"</Trevok-Pyx:Setting>";
        m_strSettings += L"</Trevok-Pyx:Settings></Policy>";
    }

    void Part(std::map<std::wstring, std::wstring>& settings, std::wstring& strAssessments)
    {
        switch (m_input.Below(8))
        {
        case 0:
            Attribute("policyType", "name");
            break;
        case 1:
            settings.emplace(L"ServerPublicKey", Key());
            break;
        case 2:
            m_document += OneIn(2) ? "<remediation/>" : "<proxy name='x'/>";
            break;
        case 3:
            Assessment(settings, strAssessments);
            break;
        default:
            Ignored();
            break;
        }
    }

    void Assessment(std::map<std::wstring, std::wstring>& settings, std::wstring& strAssessments)
    {
        static const std::tuple<const char*, bool, bool> s_enabled[] = {
            { "true", true, true },  { "false", true, false }, { "1", true, true },      { "0", true, false },
            { "-1", true, true },    { "TRUE", true, true },   { "#TRUE#", true, true }, { " 1 ", true, true },
            { "yes", false, false }, { "", false, false },
        };
        const auto& [szEnabled, bBoolean, bEnabled] = s_enabled[m_input.Below(std::size(s_enabled))];
        m_bRefused = m_bRefused || !bBoolean;
        const CText period = Text(true);
        m_document += "<assessment enabled='" + std::string(szEnabled) + "'" + Named("periodInHours", period) + "/>";
        settings.emplace(L"AssessInterval", period.strMeant);
        strAssessments += L"<Trevok-Pyx:Assessment mode=\"" + std::wstring(bEnabled ? L"auto" : L"off") +
                          L"\"></Trevok-Pyx:Assessment>";
    }

    /// A server key in pieces. @return what they are together.
    std::wstring Key()
    {
        std::wstring strKey;
        m_document += "<serverKey>";
        for (unsigned n = m_input.Below(5); n > 0; --n)
        {
            const CText text = Text(false);
            static const std::pair<const char*, const char*> s_around[] = {
                { "", "" }, { "<a>", "</a>" }, { "<p:b c='d'>", "</p:b>" }, { "<!-- x -->", "" }
            };
            const auto& [szBefore, szAfter] = s_around[m_input.Below(std::size(s_around))];
            m_document += szBefore + text.written + szAfter;
            strKey += text.strMeant;
        }
        m_document += "</serverKey>";
        return strKey;
    }

    CText Text(bool bSpaces)
    {
        static const std::pair<const char*, const wchar_t*> s_pieces[] = {
            { "a", L"a" },
            { "Z9", L"Z9" },
            { "&lt;", L"<" },
            { "&amp;", L"&" },
            { "&quot;", L"\"" },
            { "&#39;", L"'" },
            { "&gt;", L">" },
            { "\xE9", L"\xE9" },
            { "\x80", L"\x20AC" },
            { "&#x3B1;", L"\x3B1" },
            { "&#x1F600;", L"\xD83D\xDE00" },
            { "]]", L"]]" },
            { "%s%n", L"%s%n" },
            { "\\", L"\\" },
            { "{0}", L"{0}" },
            { " b", L" b" },
        };
        CText text;
        for (unsigned n = m_input.Below(6); n > 0; --n)
        {
            const auto& [szWritten, szMeant] =
                s_pieces[m_input.Below(static_cast<unsigned>(std::size(s_pieces)) - (bSpaces ? 0 : 1))];
            text.written += szWritten;
            text.strMeant += szMeant;
        }
        return text;
    }

    CFuzzInput& m_input;
    std::string m_document;
    std::wstring m_strSettings;
    std::wstring m_strRevId;
    bool m_bRefused = false;
    bool m_bPatch = false;
    bool m_bComp = false;
    bool m_bConfiguration = false;
};

/// Takes the id away, once it is seen to be one.
std::wstring WithoutId(std::wstring strSettings)
{
    constexpr wchar_t BEGIN[] = L" id=\"";
    const size_t nBegin = strSettings.find(BEGIN);
    Demand(nBegin != std::wstring::npos, "the settings have an id");
    const std::wstring strId = strSettings.substr(nBegin + 5, 36);
    for (size_t i = 0; i < strId.size(); ++i)
        Demand(i == 8 || i == 13 || i == 18 || i == 23
                   ? strId[i] == L'-'
                   : std::wstring(L"0123456789ABCDEF").find(strId[i]) != std::wstring::npos,
               "the id is a GUID in capitals");
    return strSettings.erase(nBegin, 5 + 36 + 1);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    CFuzzInput input(pData, nSize);
    const CPolicy policy(input);
    const CPolicyOutcome outcome = CFuzzAdapter::Get().Configure(policy.Document().c_str());
    const bool bApplied = policy.IsPatch() && !policy.IsRefused();
    Demand(outcome.nErrors == (policy.IsRefused() ? 1 : 0), "a bad policy is refused, and no other");
    Demand(outcome.settings.size() == (bApplied ? 1 : 0), "the service receives what is accepted");
    Demand(outcome.wzRevId == (bApplied ? policy.RevId() : CFuzzAdapter::OLD_REVISION), "its revision is recorded");
    Demand(!bApplied || WithoutId(outcome.settings[0]) == policy.Settings(), "the settings are those of the policy");
    return 0;
}
