// Policy translation: the policy's configuration becomes the patch service's own settings document.
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvXmlNodeList.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PolicyXml.h"
#include "TrevokPatchApi.h"

#include <string_view>

using namespace std::string_view_literals; // their length is known: names are compared for each element

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchAdapter";
const wchar_t s_szPrefix[] = L"Trevok-Pyx";
constexpr bool s_bEscape = true;

// A new GUID: 36 characters, upper case, without braces.
std::wstring NewGuidText()
{
    GUID guid = {};
    const HRESULT hr = ::CoCreateGuid(&guid);
    if (FAILED(hr))
        throw COvException(hr, s_szSource, __LINE__,
                           COvEvidence(L"Method", L"CoCreateGuid") + COvEvidence(L"hr", hr, true) +
                               FunctionName(L"CPatchAdapter::TranslatePolicyXML"));
    wchar_t szBraced[39] = {};
    ::StringFromGUID2(guid, szBraced, 39);
    return std::wstring(szBraced + 1, 36);
}

// An element of ours that says no more than a mode.
void WriteMode(COvXmlWriter& writer, const wchar_t* szElement, const wchar_t* szMode)
{
    writer.WriteStartElement(szElement, s_szPrefix);
    writer.WriteAttr(L"mode", szMode, s_bEscape);
    writer.WriteEndElement();
}

void WriteSettings(COvXmlWriter& writer, const std::map<std::wstring, std::wstring>& settings)
{
    writer.WriteStartElement(L"Settings", s_szPrefix);
    writer.WriteAttr(L"id", NewGuidText(), s_bEscape);
    for (const auto& [name, value] : settings)
    {
        writer.WriteStartElement(L"Setting", s_szPrefix);
        writer.WriteAttr(L"name", name, s_bEscape);
        writer.WriteString(value, !s_bEscape); // the service takes the text as it came
        writer.WriteEndElement();
    }
    writer.WriteEndElement();
}

} // namespace

// One settings document while it is being made.
struct CPatchAdapter::CTranslation
{
    COvXmlWriter writer{ false };
    CSettings settings;
    bool bServerKey = false; // one was met
};

void CPatchAdapter::TranslatePolicyXML(const COvXmlNode& configurationNode)
{
    m_Trace.Info(L"Translating policy XML");
    CTranslation translation;
    m_wzSettingsXml.clear();
    COvXmlWriter& writer = translation.writer;
    writer.WriteStartDocument();
    writer.WriteProcessingInstruction(L"xml", L"version=\"1.0\" encoding=\"utf-8\"");
    writer.WriteStartElement(L"Policy", nullptr);
    writer.WriteNameSpace(s_szPrefix, TREVOK_WEB_HOST L"\\Pyx\\Policy", s_bEscape);
    writer.WriteAttr(L"schemaVersion", L"1", s_bEscape);
    for (const COvXmlNode& node : configurationNode.GetChildNodes())
        TranslateChild(node, translation);
    if (!translation.bServerKey)
        m_Trace.Warning(InfoMsg(L"Server public key missing in policy"));
    AddRemediationSettings(translation.settings, writer);
    WriteSettings(writer, translation.settings);
    writer.WriteEndElement();
    m_wzSettingsXml = writer.ToString();
}

void CPatchAdapter::TranslateChild(const COvXmlNode& node, CTranslation& translation)
{
    const CBaseName strPolicyNodeName(node);
    m_Trace.Detail(L"strPolicyNodeName", strPolicyNodeName.Sz());
    if (strPolicyNodeName == L"policyType"sv)
        m_wzPolicyName = AttrText(node, L"name");
    else if (strPolicyNodeName == L"assessment"sv)
        TranslateAssessment(node, translation);
    else if (strPolicyNodeName == L"remediation"sv)
        m_Trace.Warning(InfoMsg(L"Remediation should not be present in policy"));
    else if (strPolicyNodeName == L"proxy"sv)
        m_Trace.Warning(InfoMsg(L"Proxy should not be present in policy"));
    else if (strPolicyNodeName == L"serverKey"sv)
        TranslateServerKey(node, translation);
}

// The element is written only after both attributes have been read.
void CPatchAdapter::TranslateAssessment(const COvXmlNode& node, CTranslation& translation)
{
    const bool bEnabled = node.GetAttrValueBool(COvBstr(L"enabled").Get());
    const std::wstring strPeriod = AttrText(node, L"periodInHours");
    WriteMode(translation.writer, L"Assessment", bEnabled ? L"auto" : L"off");
    translation.settings.emplace(L"AssessInterval", strPeriod);
}

void CPatchAdapter::TranslateServerKey(const COvXmlNode& node, CTranslation& translation)
{
    if (translation.bServerKey)
    {
        m_Trace.Warning(InfoMsg(L"More then one server public key in policy"));
        return;
    }
    translation.bServerKey = true;
    m_Trace.Info(L"Server public received through PYX policy");
    translation.settings.emplace(L"ServerPublicKey", COvStringUtil::FromBSTR(node.GetText()));
}

// Whatever the policy says, remediation is manual and a reboot is never forced.
void CPatchAdapter::AddRemediationSettings(CSettings& settings, COvXmlWriter& writer)
{
    WriteMode(writer, L"Remediation", L"manual");
    settings.emplace(L"AllowReboot", L"false");
    settings.emplace(L"RebootDelay", L"1");
    settings.emplace(L"ShowRebootMessage", L"false");
    settings.emplace(L"RebootMessageInterval", L"1");
}
