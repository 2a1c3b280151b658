#include "OvXmlWriter.h"

#include "ovCore/OvException.h"
#include "ovCore/OvXmlWriterDocument.h"

namespace
{

// The names of the node types, as refusals show the open node's. A namespace node is never the open one.
const wchar_t* const s_szTypeNames[] = { L"typeDocStart", L"typePI", L"typeComment", L"typeElemStart",
                                         L"typeAttr",     nullptr,   L"typeCData",   L"typeStr" };

const wchar_t* TypeName(const COvXmlWriterNode* pNode)
{
    return pNode != nullptr ? s_szTypeNames[pNode->nType] : L"{unknown - no document}";
}

bool IsDocument(const COvXmlWriterNode* pNode)
{
    return pNode != nullptr && pNode->nType == typeDocStart;
}

bool IsElement(const COvXmlWriterNode* pNode)
{
    return pNode != nullptr && pNode->nType == typeElemStart;
}

bool IsDocumentOrElement(const COvXmlWriterNode* pNode)
{
    return IsDocument(pNode) || IsElement(pNode);
}

} // namespace

COvXmlWriter::COvXmlWriter(bool bStartDocument)
{
    OV_SCOPE(L"COvXmlWriter::COvXmlWriter");
    if (bStartDocument)
        WriteStartDocument();
}

COvXmlWriter::~COvXmlWriter() = default;

void COvXmlWriter::WriteStartDocument()
{
    OV_SCOPE(L"COvXmlWriter::WriteStartDocument");
    m_pDocument = std::make_unique<COvXmlWriterDocument>();
    m_pCurrent = m_pDocument->Document();
}

void COvXmlWriter::WriteProcessingInstruction(const wchar_t* tzPiName, const wchar_t* tzPiText)
{
    OV_SCOPE(L"COvXmlWriter::WriteProcessingInstruction");
    OvCheckPointer(L"tzPiName", tzPiName, s_szSource, __LINE__);
    OvCheckPointer(L"tzPiText", tzPiText, s_szSource, __LINE__);
    if (m_pCurrent == nullptr)
        Refuse(__LINE__, L"Cannot create a processing instruction. There is no document.",
               COvEvidence(L"tzPiName", tzPiName) + COvEvidence(L"tzPiText", tzPiText));
    if (!IsDocument(m_pCurrent))
        Refuse(__LINE__,
               L"Cannot write processing instruction. These must be created at the document level before all elements.",
               COvEvidence(L"tzPiName", tzPiName) + COvEvidence(L"tzPiText", tzPiText));
    m_pDocument->Append(m_pCurrent, typePI, tzPiName, tzPiText, false);
}

void COvXmlWriter::WriteStartElement(const wchar_t* tzElemName, const wchar_t* prefix)
{
    OV_SCOPE(L"COvXmlWriter::WriteStartElement");
    OvCheckPointer(L"tzElemName", tzElemName, s_szSource, __LINE__);
    if (m_pCurrent == nullptr)
        Refuse(__LINE__, L"Cannot open an element. There is no document.", COvEvidence(L"tzElemName", tzElemName));
    if (!IsDocumentOrElement(m_pCurrent))
        Refuse(__LINE__,
               L"Cannot open an element. These must be created at the document level or beneath another element.",
               COvEvidence(L"tzElemName", tzElemName));
    m_pCurrent = m_pDocument->Append(m_pCurrent, typeElemStart, tzElemName, prefix, false);
}

void COvXmlWriter::WriteNameSpace(const wchar_t* tzPrefix, const wchar_t* tzValue, bool bEscape)
{
    OV_SCOPE(L"COvXmlWriter::WriteNameSpace");
    OvCheckPointer(L"tzPrefix", tzPrefix, s_szSource, __LINE__);
    OvCheckPointer(L"tzValue", tzValue, s_szSource, __LINE__);
    if (!IsElement(m_pCurrent))
        Refuse(__LINE__, L"Cannot add a namespace. Previous node was not an element.",
               COvEvidence(L"tzPrefix", tzPrefix) + COvEvidence(L"tzValue", tzValue));
    m_pDocument->Append(m_pCurrent, typeNameSpace, tzPrefix, tzValue, bEscape);
}

void COvXmlWriter::WriteAttrW(const wchar_t* tzAttrName, const wchar_t* wzAttrValue, bool bEscape)
{
    OV_SCOPE(L"COvXmlWriter::WriteAttrW");
    OvCheckPointer(L"tzAttrName", tzAttrName, s_szSource, __LINE__);
    OvCheckPointer(L"wzAttrValue", wzAttrValue, s_szSource, __LINE__);
    if (!IsElement(m_pCurrent))
        Refuse(__LINE__, L"Cannot add an attribute. Previous node was not an element.",
               COvEvidence(L"tzAttrName", tzAttrName) + COvEvidence(L"wzAttrValue", wzAttrValue));
    m_pDocument->Append(m_pCurrent, typeAttr, tzAttrName, wzAttrValue, bEscape);
}

void COvXmlWriter::WriteStringW(const wchar_t* wzText, bool bEscape)
{
    OV_SCOPE(L"COvXmlWriter::WriteStringW");
    OvCheckPointer(L"wzText", wzText, s_szSource, __LINE__);
    if (!IsDocumentOrElement(m_pCurrent))
        Refuse(__LINE__, L"Cannot add a string. Previous node was not a document or element.",
               COvEvidence(L"wzText", wzText));
    m_pDocument->Append(m_pCurrent, typeStr, wzText, nullptr, bEscape);
}

void COvXmlWriter::WriteCData(const wchar_t* tzText)
{
    OV_SCOPE(L"COvXmlWriter::WriteCData");
    OvCheckPointer(L"tzText", tzText, s_szSource, __LINE__);
    if (!IsDocumentOrElement(m_pCurrent))
        Refuse(__LINE__, L"Cannot add a CData section. Previous node was not a document or element.",
               COvEvidence(L"tzText", tzText));
    m_pDocument->Append(m_pCurrent, typeCData, tzText, nullptr, false);
}

void COvXmlWriter::WriteEndElement()
{
    OV_SCOPE(L"COvXmlWriter::WriteEndElement");
    if (m_pCurrent == nullptr)
        Refuse(__LINE__, L"Cannot close an element. There is no document.", COvEvidence());
    if (!IsDocumentOrElement(m_pCurrent))
        Refuse(__LINE__, L"Cannot close an element. Previous node was not an element or document.", COvEvidence());
    m_pCurrent = m_pCurrent->pParent;
}

std::wstring COvXmlWriter::ToStringW() const
{
    OV_SCOPE(L"COvXmlWriter::ToStringW");
    return m_pDocument != nullptr ? m_pDocument->Render() : std::wstring();
}

std::wstring COvXmlWriter::ToString() const
{
    OV_SCOPE(L"COvXmlWriter::ToString");
    return ToStringW();
}

void COvXmlWriter::Refuse(LONG nLine, const wchar_t* szMessage, const COvEvidence& arguments) const
{
    OvRaise(E_FAIL, s_szSource, nLine,
            COvEvidence(L"Info Msg", szMessage) + arguments + COvEvidence(L"Prev Node Type", TypeName(m_pCurrent)));
}
