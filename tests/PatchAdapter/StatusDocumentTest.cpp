#include "AdapterFixture.h"

namespace
{

// The attributes of the three elements that vary, each with its leading blank.
std::string Document(const std::string& compRes, const std::string& patch, const std::string& wua)
{
    const auto narrow = [](const wchar_t* sz) { return std::string(sz, sz + std::char_traits<wchar_t>::length(sz)); };
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    const std::string domain = narrow(TREVOK_REVERSE_DOMAIN);
    return declaration + "<status xmlns=\"" + domain + "\\mansys\\status\" type=\"patch\"><CompRes xmlns=\"" + domain +
           "\\msys\\csc\"" + compRes + "></CompRes><meta timestamp=\"#\" protocolVersion=\"1\" softwareVersion=\"" +
           VERSION_TEXT + "\"></meta><data><![CDATA[" + declaration + "<patch xmlns=\"http://" +
           narrow(TREVOK_WEB_HOST) + "/xml/mansys/patch.xsd\" agentVersion=\"" + VERSION_TEXT + "\"" + patch + "><wua" +
           wua + "></wua></patch>]]></data></status>";
}

const std::string s_noRef = " policyType=\"20\" Res=\"NoRef\"";
const std::string s_noRef42 = " policyType=\"20\" Res=\"NoRef\" RevID=\"42\"";
const std::string s_same42 = " policyType=\"20\" Res=\"Same\" RevID=\"42\"";
const std::string s_notRunning = " serviceRunning=\"false\" assessmentEnabled=\"false\"";
const std::string s_running = " serviceRunning=\"true\" assessmentEnabled=\"true\"";
const std::string s_runningOff = " serviceRunning=\"true\" assessmentEnabled=\"false\"";
const std::string s_notRetrieved =
    " installed=\"true\" compatible=\"true\" currentVersion=\"0.0.0.0\" requiredVersion=\"0.0.0.0\"";
const std::string s_retrieved =
    " installed=\"true\" compatible=\"true\" currentVersion=\"7.4.7600.226\" requiredVersion=\"7.2.6001.788\"";

class StatusDocument : public CAdapterTest
{
};

} // namespace

TEST_F(StatusDocument, ShowsTheServiceAndTheRevision)
{
    const struct
    {
        const char* what;
        std::optional<std::wstring> revision;
        AgentEvent event;
        std::vector<std::pair<LONG, CAgentValue>> values;
        LONG failing; // the state whose read fails; 0 for none
        std::string document;
    } rows[] = {
        { "nothing at all", {}, AgentEvent::Absent, {}, 0, Document(s_noRef, s_notRunning, s_notRetrieved) },
        { "empty revision", L"", AgentEvent::Absent, {}, 0, Document(s_noRef, s_notRunning, s_notRetrieved) },
        { "not running", L"42", AgentEvent::Absent, {}, 0, Document(s_same42, s_notRunning, s_notRetrieved) },
        { "not signalled", L"42", AgentEvent::NotSignalled, {}, 0, Document(s_same42, s_notRunning, s_notRetrieved) },
        { "all well", L"42", AgentEvent::Signalled, {}, 0, Document(s_same42, s_running, s_retrieved) },
        { "no revision", {}, AgentEvent::Signalled, {}, 0, Document(s_noRef, s_running, s_retrieved) },
        { "key not accepted",
          L"42",
          AgentEvent::Signalled,
          { { 11, false } },
          0,
          Document(s_noRef42, s_running, s_retrieved) },
        { "not installed",
          L"42",
          AgentEvent::Signalled,
          { { 4, false }, { 8, false } },
          0,
          Document(s_same42, s_runningOff, " installed=\"false\"") },
        { "incompatible, one version zero",
          L"42",
          AgentEvent::Signalled,
          { { 5, false }, { 6, L"0.0.0.0" }, { 7, L"7.2" } },
          0,
          Document(s_same42, s_running, " installed=\"true\" compatible=\"false\" requiredVersion=\"7.2\"") },
        { "unreadable versions",
          L"42",
          AgentEvent::Signalled,
          { { 6, L"x" }, { 7, nullptr } },
          0,
          Document(s_same42, s_running, " installed=\"true\" compatible=\"true\"") },
        { "first read fails", L"42", AgentEvent::Signalled, {}, 4, Document(s_noRef42, s_runningOff, s_notRetrieved) },
        { "last read fails", L"42", AgentEvent::Signalled, {}, 11, Document(s_noRef42, s_running, s_notRetrieved) },
        { "revision to escape",
          L"a&<\"\x00E9\xD83D\xDE00",
          AgentEvent::Absent,
          {},
          0,
          Document(" policyType=\"20\" Res=\"Same\" RevID=\"a&amp;&lt;&quot;&#x00E9;&#x01F600;\"", s_notRunning,
                   s_notRetrieved) },
    };
    for (const auto& row : rows)
    {
        CAgentSimulator agent;
        ASSERT_TRUE(agent.PublishClass());
        ASSERT_TRUE(agent.SetEventState(row.event));
        for (const auto& [stateId, value] : row.values)
            agent.SetValue(stateId, value);
        if (row.failing != 0)
            agent.AddFault({ AgentCall::GetState, E_FAIL, row.failing });
        RemoveRevisionKey();
        if (row.revision)
            StoreRevision(*row.revision);
        StartAdapter();
        EXPECT_EQ(row.document, Status()) << row.what;
        StopAdapter();
        EXPECT_EQ(0u, agent.GetLiveObjects());
    }
}
