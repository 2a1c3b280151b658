// The status document: what the service, the registry record and the library say, as the host gets it.
#include "ovCore/OvCallOut.h"
#include "ovCore/OvDateTime.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStringUtil.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/GuardBoundary.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PatchApi.h"

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchAdapter";
const wchar_t s_szGetStatus[] = L"CPatchAdapter::GetStatus";
constexpr bool s_bEscape = true;
constexpr LONG s_nProtocolVersion = 1;

enum WuaCompatibility : LONG
{
    CompatibilityNotRead = 0,
    WuaIsCompatible = 1,
    WuaIsNotCompatible = 2
};

const wchar_t* BoolText(bool bValue)
{
    return bValue ? L"true" : L"false";
}

// Opens a document whose root is in a default namespace.
void StartDocument(COvXmlWriter& writer, const wchar_t* szRoot, const wchar_t* szNamespace)
{
    writer.WriteStartDocument();
    writer.WriteProcessingInstruction(L"xml", L"version=\"1.0\" encoding=\"utf-8\"");
    writer.WriteStartElement(szRoot, nullptr);
    writer.WriteNameSpace(L"", szNamespace, s_bEscape);
}

// Version 0.0.0.0 says that the service has none to tell.
void WriteVersionUnlessZero(COvXmlWriter& writer, const wchar_t* szName, const COvVersion& version)
{
    if (version != COvVersion())
        writer.WriteAttrW(szName, version.Text().sz, s_bEscape);
}

} // namespace

// What is gathered for one document, at its start values.
struct CPatchAdapter::CServiceStatus
{
    bool bServiceRunning = false;
    bool bStatusRetrieved = false;
    bool bWuaInstalled = false;
    LONG nWuaCompatibility = CompatibilityNotRead;
    COvVersion verWuaCurrent;
    COvVersion verWuaRequired;
    bool bAssessmentEnabled = false;
    bool bServerKeyStatus = false;
};

bool CPatchAdapter::GetStatus(IStatusReceiver* pReceiver)
{
    const CPatchTraceScope scope(&m_Trace, s_szGetStatus);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szGetStatus, [&] {
        if (!RefuseNull(pReceiver, L"A null status receiver was passed", s_szGetStatus))
            ReportStatus(pReceiver);
    });
    return true;
}

void CPatchAdapter::ReportStatus(IStatusReceiver* pReceiver)
{
    m_Trace.Info(L"Processing status request");
    std::wstring wzStatus;
    const std::string status = COvStringUtil::WideToNarrow(BuildStatusXml(wzStatus));
    OvCallOut([&] { pReceiver->OnStatus(status.c_str()); });
    m_Trace.Detail(L"status xml", wzStatus);
    m_Trace.Info(L"Finished Creating Status XML");
}

std::wstring& CPatchAdapter::BuildStatusXml(std::wstring& wzStatus)
{
    const COvSingleLock lock(&m_csStatus, true);
    const CServiceStatus status = GatherStatus();
    m_Trace.Info(L"Creating Status XML");
    COvXmlWriter writer(false);
    StartDocument(writer, L"status", TREVOK_REVERSE_DOMAIN L"\\mansys\\status");
    writer.WriteAttrW(L"type", L"patch", s_bEscape);
    WriteCompliance(writer, status);
    WriteMeta(writer);
    writer.WriteStartElement(L"data", nullptr);
    writer.WriteCData(BuildPatchXml(status).c_str());
    writer.WriteEndElement();
    writer.WriteEndElement();
    return wzStatus = writer.ToString();
}

CPatchAdapter::CServiceStatus CPatchAdapter::GatherStatus()
{
    CServiceStatus status;
    status.bServiceRunning = IsServiceRunning();
    if (status.bServiceRunning)
        status.bStatusRetrieved =
            RetrieveStatusInfo(status.bWuaInstalled, status.nWuaCompatibility, status.verWuaCurrent,
                               status.verWuaRequired, status.bAssessmentEnabled, status.bServerKeyStatus);
    return status;
}

// After a failure the outputs that were read before it keep what was read; compatibility and versions do not.
bool CPatchAdapter::RetrieveStatusInfo(bool& bWuaInstalled, LONG& nWuaCompatibility, COvVersion& verWuaCurrent,
                                       COvVersion& verWuaRequired, bool& bAssessmentEnabled, bool& bServerKeyStatus)
{
    bool bWuaCompatible = false;
    std::wstring strWuaCurrentVersion;
    std::wstring strWuaRequiredVersion;
    CPatchApi api(&m_Trace);
    if (!api.GetStatusInfo(&bWuaInstalled, &bWuaCompatible, &strWuaCurrentVersion, &strWuaRequiredVersion,
                           &bAssessmentEnabled, &bServerKeyStatus))
    {
        m_Trace.Warning(InfoMsg(L"Unable to retrieve status information from the Patch Agent Service"));
        return false;
    }
    nWuaCompatibility = bWuaCompatible ? WuaIsCompatible : WuaIsNotCompatible;
    verWuaCurrent.SetVersion(std::move(strWuaCurrentVersion));
    verWuaRequired.SetVersion(std::move(strWuaRequiredVersion));
    return true;
}

void CPatchAdapter::WriteCompliance(COvXmlWriter& writer, const CServiceStatus& status) const
{
    const bool bInForce = !m_wzRevId.empty() && (!status.bServiceRunning || status.bServerKeyStatus);
    writer.WriteStartElement(L"CompRes", nullptr);
    writer.WriteNameSpace(L"", TREVOK_REVERSE_DOMAIN L"\\msys\\csc", s_bEscape);
    writer.WriteAttrW(L"policyType", COvStringUtil::LongToString(m_lPolicyType, 10).c_str(), s_bEscape);
    writer.WriteAttrW(L"Res", bInForce ? m_wzCompRes.c_str() : L"NoRef", s_bEscape);
    if (!m_wzRevId.empty())
        writer.WriteAttrW(L"RevID", m_wzRevId.c_str(), s_bEscape);
    writer.WriteEndElement();
}

void CPatchAdapter::WriteMeta(COvXmlWriter& writer)
{
    writer.WriteStartElement(L"meta", nullptr);
    writer.WriteAttrW(L"timestamp", COvDateTime::Now().Format(COvDateTime::DOCUMENT_FORM).c_str(), s_bEscape);
    writer.WriteAttrW(L"protocolVersion", COvStringUtil::LongToString(s_nProtocolVersion, 10).c_str(), s_bEscape);
    writer.WriteAttrW(L"softwareVersion", GetBinaryVersion().Text().sz, s_bEscape);
    writer.WriteEndElement();
}

std::wstring CPatchAdapter::BuildPatchXml(const CServiceStatus& status)
{
    COvXmlWriter writer(false);
    StartDocument(writer, L"patch", L"http://" TREVOK_WEB_HOST L"/xml/mansys/patch.xsd");
    writer.WriteAttrW(L"agentVersion", GetBinaryVersion().Text().sz, s_bEscape);
    writer.WriteAttrW(L"serviceRunning", BoolText(status.bServiceRunning), s_bEscape);
    writer.WriteAttrW(L"assessmentEnabled", BoolText(status.bAssessmentEnabled), s_bEscape);
    writer.WriteStartElement(L"wua", nullptr);
    WriteWua(writer, status);
    writer.WriteEndElement();
    writer.WriteEndElement();
    return writer.ToString();
}

void CPatchAdapter::WriteWua(COvXmlWriter& writer, const CServiceStatus& status)
{
    if (!status.bStatusRetrieved)
    {
        writer.WriteAttrW(L"installed", BoolText(true), s_bEscape);
        writer.WriteAttrW(L"compatible", BoolText(true), s_bEscape);
        writer.WriteAttrW(L"currentVersion", COvVersion().Text().sz, s_bEscape);
        writer.WriteAttrW(L"requiredVersion", COvVersion().Text().sz, s_bEscape);
        return;
    }
    writer.WriteAttrW(L"installed", BoolText(status.bWuaInstalled), s_bEscape);
    if (!status.bWuaInstalled)
        return;
    if (status.nWuaCompatibility != CompatibilityNotRead)
        writer.WriteAttrW(L"compatible", BoolText(status.nWuaCompatibility == WuaIsCompatible), s_bEscape);
    WriteVersionUnlessZero(writer, L"currentVersion", status.verWuaCurrent);
    WriteVersionUnlessZero(writer, L"requiredVersion", status.verWuaRequired);
}
