// Policy intake: a document from the host is parsed, its outline checked and its identity noted.
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStringUtil.h"
#include "ovCore/OvXmlDocument.h"
#include "ovCore/OvXmlNodeList.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/GuardBoundary.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PolicyXml.h"

#include <cstring>

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchAdapter";
const wchar_t s_szSetConfiguration[] = L"CPatchAdapter::SetConfiguration";
const wchar_t s_szLoadConfiguration[] = L"CPatchAdapter::LoadConfigurationXML";

constexpr bool s_bIsFile = true;
constexpr bool s_bThrow = true;
constexpr bool s_bPreserveWhitespace = true;

// The document is refused. @param finding  what is wrong with it; the document and the operation follow.
[[noreturn]] void Refuse(LONG nLine, const COvEvidence& finding, const std::wstring& strXML)
{
    throw COvException(E_FAIL, s_szSource, nLine,
                       finding + COvEvidence(L"strXML", strXML) + FunctionName(s_szLoadConfiguration));
}

// Before the text is traced, widened or parsed, each of which needs memory for several copies of it.
void RefuseTooLarge(const char* pszConfiguration)
{
    const size_t nBytes = pszConfiguration != nullptr ? std::strlen(pszConfiguration) : 0;
    if (nBytes <= PATCHADAPTER_MAX_POLICY_BYTES)
        return;
    throw COvException(E_FAIL, s_szSource, __LINE__,
                       InfoMsg(L"The received xml is too large") + COvEvidence(L"nBytes", static_cast<DWORD>(nBytes)) +
                           COvEvidence(L"nMaxBytes", DWORD{ PATCHADAPTER_MAX_POLICY_BYTES }) +
                           FunctionName(s_szSetConfiguration));
}

} // namespace

void CPatchAdapter::SetConfiguration(const char* pszConfiguration)
{
    const CPatchTraceScope scope(&m_Trace, s_szSetConfiguration);
    GuardBoundary(m_Trace, s_szSource, __LINE__, s_szSetConfiguration, [&] {
        m_Trace.Info(L"Received configuration");
        RefuseTooLarge(pszConfiguration);
        m_Trace.Detail(L"Configuration", pszConfiguration);
        LoadConfigurationXML(COvStringUtil::NarrowToWide(pszConfiguration));
        ProcessConfiguration();
    });
}

void CPatchAdapter::LoadConfigurationXML(const std::wstring& strXML)
{
    const CPatchTraceScope scope(&m_Trace, s_szLoadConfiguration);
    m_Trace.Info(L"Received configuration xml", strXML);
    COvXmlDocument document(nullptr, XmlParserBest);
    document.LoadXML(COvBstr(strXML).Get(), !s_bIsFile, s_bThrow, !s_bPreserveWhitespace);
    const COvXmlNodeList xmlPolicyNodes = document.GetChildNodes();
    if (xmlPolicyNodes.size() != 2) // normally the XML declaration and the main element
        Refuse(__LINE__,
               COvEvidence(L"(long) xmlPolicyNodes.size()", static_cast<LONG>(xmlPolicyNodes.size())) +
                   InfoMsg(L"The received xml has too many nodes"),
               strXML);
    ReadMainNode(xmlPolicyNodes[1], strXML);
    ReadChildren(xmlPolicyNodes[1], strXML);
    if (m_Trace.IsBound())
        m_Trace.Info(COvEvidence(L"Revision", m_wzRevId) + COvEvidence(L"Policy Type", m_lPolicyType) +
                     COvEvidence(L"Group", m_wzGroup) + COvEvidence(L"Policy", m_wzPolicyName));
    m_Trace.Info(L"Loaded configuration xml");
}

void CPatchAdapter::ReadMainNode(const COvXmlNode& mainNode, const std::wstring& strXML)
{
    m_nPolicyKind = PolicyKindNone;
    const CBaseName strMainNodeName(mainNode);
    m_Trace.Detail(L"Name", strMainNodeName.Sz());
    if (strMainNodeName == L"policy")
    {
        const std::wstring strPolicyTypeName = AttrText(mainNode, L"type");
        if (strPolicyTypeName != L"patch")
            Refuse(__LINE__,
                   InfoMsg(L"The received xml incorrect policy type") +
                       COvEvidence(L"strPolicyTypeName", strPolicyTypeName),
                   strXML);
        m_nPolicyKind = PolicyKindPatch;
    }
    else if (strMainNodeName == L"config")
        m_nPolicyKind = PolicyKindConfig;
    else
        Refuse(__LINE__,
               COvEvidence(L"strMainNodeName", strMainNodeName.Sz()) +
                   InfoMsg(L"Un-expected node, policy node was expected"),
               strXML);
}

void CPatchAdapter::ReadChildren(const COvXmlNode& mainNode, const std::wstring& strXML)
{
    bool bFoundPolicyRefNode = false;
    bool bFoundComparisionNode = false;
    for (const COvXmlNode& node : mainNode.GetChildNodes())
    {
        const CBaseName strNodeName(node);
        m_Trace.Detail(L"strNodeName", strNodeName.Sz());
        if (strNodeName == L"Comp")
        {
            bFoundComparisionNode = true;
            ReadComp(node);
        }
        else if (strNodeName == L"groupRef")
            m_wzGroup = AttrText(node, L"name");
        else if (strNodeName == L"configuration")
        {
            bFoundPolicyRefNode = true;
            TranslatePolicyXML(node);
        }
    }
    if (m_nPolicyKind == PolicyKindPatch && !(bFoundPolicyRefNode && bFoundComparisionNode))
        Refuse(__LINE__,
               InfoMsg(L"The received xml does not contain both the policyRef and the Comp Nodes") +
                   COvEvidence(L"bFoundPolicyRefNode", bFoundPolicyRefNode) +
                   COvEvidence(L"bFoundComparisionNode", bFoundComparisionNode),
               strXML);
}

// Both under one lock, so that no status document shows the new revision with the old type; but a type that cannot be
// read leaves the new revision in place.
void CPatchAdapter::ReadComp(const COvXmlNode& comp)
{
    const COvSingleLock lock(&m_csStatus, true);
    OvCallIn([&] { // the parser is not ours: whatever it does, the lock is released
        m_wzRevId = AttrText(comp, L"RevID");
        m_lPolicyType = comp.GetAttrValueLong(COvBstr(L"policyType").Get());
    });
}
