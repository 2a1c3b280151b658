// Policies that are refused: nothing outside changes, and the trace says why, line by line.
#include "Host.h"

namespace
{

const std::string s_declaration = R"(<?xml version="1.0"?>)";
const std::string s_function = "CPatchAdapter::LoadConfigurationXML";

/// The lines of an intake: those of the document's content in the middle, and how it ends.
std::string Intake(const std::string& document, const std::string& content, const std::string& error)
{
    return Entering("CPatchAdapter::SetConfiguration") + Info("Received configuration") +
           "3 Configuration: " + document + "\n" + Entering(s_function) + "2 Received configuration xml: " + document +
           "\n" + content + Exiting(s_function) + error + Exiting("CPatchAdapter::SetConfiguration");
}

/// The last items of a refusal by one of the four checks.
std::string Tail(const std::string& document)
{
    return " strXML: " + document + " Function: " + s_function;
}

/// A failed read of an attribute, as the node reports it.
std::string MissingAttribute(const std::string& name, const std::string& path)
{
    return "0 Error: 80070490 File: OvXmlNode Line: # Evidence: Win32 Error: " +
           ErrorCodeText(static_cast<HRESULT>(0x80070490)) + " strAttrName: " + name + " Node Path: \n" + path +
           " Stack Dump:  \n";
}

std::string BadAttribute(HRESULT hr, unsigned nTo)
{
    char szCode[9];
    std::snprintf(szCode, sizeof(szCode), "%x", static_cast<unsigned>(hr));
    return std::string("0 Error: ") + szCode +
           " File: OvStringUtil Line: # Evidence: Msg: A Win32 API call failed. Info Msg: VariantChangeType vSrc.vt: 8 "
           "vtNew: " +
           std::to_string(nTo) + " nFlags: 0 hr: " + ErrorCodeText(hr) + " Stack Dump:  \n";
}

class PolicyRefusal : public CHost
{
protected:
    void SetUp() override
    {
        StoreRevision(L"before");
        ASSERT_TRUE(m_agent.Start());
        ASSERT_TRUE(Start());
        m_pAdapter->RegisterStateObserver(&m_observer);
        m_observer.Clear();
    }

    void TearDown() override
    {
        m_pAdapter->DeRegisterStateObserver(&m_observer);
        CHost::TearDown();
    }

    void ExpectNothingChangedOutside(const std::string& document)
    {
        EXPECT_EQ(L"before", StoredRevision()) << document;
        EXPECT_TRUE(m_agent.GetReceivedSettings().empty()) << document;
    }

    CRecordingObserver m_observer;
};

} // namespace

TEST_F(PolicyRefusal, EachCheckRefusesWithItsEvidence)
{
    const std::string comp = R"(<Comp RevID="r" policyType="7"/>)";
    const std::string compLine = "3 strNodeName: Comp\n";
    const std::string policy = "3 Name: policy\n";
    const struct
    {
        std::string body;
        std::string content;
        std::string error; ///< "%" stands for the whole document
    } rows[] = {
        { "<!--c-->"
          "<policy type='patch'/>",
          "", "(long) xmlPolicyNodes.size(): 3 Info Msg: The received xml has too many nodes" },
        { "<policy type='Patch'/>", policy,
          "Info Msg: The received xml incorrect policy type strPolicyTypeName: Patch" },
        { "<policy type=''/>", policy, "Info Msg: The received xml incorrect policy type strPolicyTypeName: " },
        { "<Policy type='patch'/>", "3 Name: Policy\n",
          "strMainNodeName: Policy Info Msg: Un-expected node, policy node was expected" },
        { "<policy type='patch'/>", policy,
          "Info Msg: The received xml does not contain both the policyRef and the Comp Nodes bFoundPolicyRefNode: "
          "<false> bFoundComparisionNode: <false>" },
        { "<n:policy xmlns:n='u' type='patch'>" + comp + "</n:policy>", policy + compLine,
          "Info Msg: The received xml does not contain both the policyRef and the Comp Nodes bFoundPolicyRefNode: "
          "<false> bFoundComparisionNode: <true>" },
        { "<policy type='patch'>text<configuration/><!--c--></policy>",
          policy + "3 strNodeName: \n3 strNodeName: configuration\n" + Info("Translating policy XML") +
              Warning("Server public key missing in policy") + "3 strNodeName: \n",
          "Info Msg: The received xml does not contain both the policyRef and the Comp Nodes bFoundPolicyRefNode: "
          "<true> bFoundComparisionNode: <false>" },
    };
    for (const auto& row : rows)
    {
        const std::string document = s_declaration + row.body;
        EXPECT_EQ(Intake(document, row.content, Error("PatchAdapter", row.error + Tail(document))),
                  Configure(document));
        ExpectNothingChangedOutside(document);
    }

    const std::string bare = "<policy type='patch'/>"; // no declaration: one node
    const std::string error = "(long) xmlPolicyNodes.size(): 1 Info Msg: The received xml has too many nodes";
    EXPECT_EQ(Intake(bare, "", Error("PatchAdapter", error + Tail(bare))), Configure(bare));
}

TEST_F(PolicyRefusal, AttributesThatCannotBeReadRefuseWithTheNodesEvidence)
{
    const std::string start = "<policy type=\"patch\">";
    const std::string clone = "<policy type=\"patch\"/>"; // without its content
    const std::string configuration = "3 strNodeName: configuration\n" + Info("Translating policy XML");
    const std::string policy = "3 Name: policy\n";
    const struct
    {
        std::string body;
        std::string content;
        std::string error;
    } rows[] = {
        { "<policy/>", policy, MissingAttribute("type", "<policy/>") },
        { start + "<Comp policyType=\"7\"/></policy>", policy + "3 strNodeName: Comp\n",
          MissingAttribute("RevID", clone + " <Comp policyType=\"7\"/>") },
        { start + "<Comp RevID=\"r\"/></policy>", policy + "3 strNodeName: Comp\n",
          MissingAttribute("policyType", clone + " <Comp RevID=\"r\"/>") },
        { start + "<Comp RevID=\"r\" policyType=\"many\"/></policy>", policy + "3 strNodeName: Comp\n",
          BadAttribute(DISP_E_TYPEMISMATCH, VT_I4) },
        { start + "<Comp RevID=\"r\" policyType=\"2147483648\"/></policy>", policy + "3 strNodeName: Comp\n",
          BadAttribute(DISP_E_OVERFLOW, VT_I4) },
        { start + "<groupRef/></policy>", policy + "3 strNodeName: groupRef\n",
          MissingAttribute("name", clone + " <groupRef/>") },
        { start + "<configuration><policyType/></configuration></policy>",
          policy + configuration + "3 strPolicyNodeName: policyType\n",
          MissingAttribute("name", clone + " <configuration/>  <policyType/>") },
        { start + "<configuration><assessment periodInHours=\"1\"/></configuration></policy>",
          policy + configuration + "3 strPolicyNodeName: assessment\n",
          MissingAttribute("enabled", clone + " <configuration/>  <assessment periodInHours=\"1\"/>") },
        { start + "<configuration><assessment enabled=\"1\"/></configuration></policy>",
          policy + configuration + "3 strPolicyNodeName: assessment\n",
          MissingAttribute("periodInHours", clone + " <configuration/>  <assessment enabled=\"1\"/>") },
        { start + "<configuration><assessment enabled=\"yes\" periodInHours=\"1\"/></configuration></policy>",
          policy + configuration + "3 strPolicyNodeName: assessment\n", BadAttribute(DISP_E_TYPEMISMATCH, VT_BOOL) },
    };
    for (const auto& row : rows)
    {
        const std::string document = s_declaration + row.body;
        EXPECT_EQ(Intake(document, row.content, row.error), Configure(document));
        ExpectNothingChangedOutside(document);
    }
}

TEST_F(PolicyRefusal, TextsThatAreNoXmlNameTheParsersFinding)
{
    const struct
    {
        const char* szDocument; ///< null: no text at all
        std::string shown;
    } rows[] = {
        { nullptr, "<null>" },
        { "", "" },
        { "no xml", "no xml" },
        { "<?xml version=\"1.0\"?><policy type='patch'>", "<?xml version=\"1.0\"?><policy type='patch'>" },
        { "<?xml version=\"1.0\"?><a b='%s%n'", "<?xml version=\"1.0\"?><a b='%s%n'" },
    };
    for (const auto& row : rows)
    {
        const std::string transcript = m_sink.TranscriptOf([&] { m_pAdapter->SetConfiguration(row.szDocument); });
        const std::string text = row.szDocument == nullptr ? "" : row.szDocument;
        const std::string start = Entering("CPatchAdapter::SetConfiguration") + Info("Received configuration") +
                                  "3 Configuration: " + row.shown + "\n" + Entering(s_function) +
                                  "2 Received configuration xml: " + text + "\n" + Exiting(s_function) +
                                  "0 Error: 1 File: OvXmlDocument Line: # Evidence: Msg: A COM method call failed. "
                                  "Method: IXMLDOMDocument::loadXML() pDoc: # bstrXml: " +
                                  text + " XML Parse Error: \nFile Pos:";
        EXPECT_EQ(start, transcript.substr(0, start.size()));
        EXPECT_NE(std::string::npos, transcript.find(" hr: 0x1")) << transcript;
        ExpectNothingChangedOutside(text);
    }
}

TEST_F(PolicyRefusal, TheRevisionOfARefusedPolicyIsReportedButNotRecorded)
{
    Configure(s_declaration + R"(<policy type="patch"><Comp RevID="new" policyType="no"/></policy>)");
    const std::string status = Status();
    EXPECT_NE(std::string::npos, status.find(R"(policyType="20" Res="Same" RevID="new")")) << status;
    EXPECT_EQ(L"before", StoredRevision());
}
