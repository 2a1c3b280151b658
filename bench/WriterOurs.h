// The library's own writer behind the calls of the peers.
#pragma once

#include "OvXmlWriter.h"

class CWriterOurs
{
public:
    void Declare() { m_writer.WriteProcessingInstruction(L"xml", LR"(version="1.0" encoding="utf-8")"); }
    void Start(const wchar_t* szName) { m_writer.WriteStartElement(szName); }
    void Attribute(const wchar_t* szName, const wchar_t* szValue) { m_writer.WriteAttrW(szName, szValue, true); }
    void CData(const wchar_t* szText) { m_writer.WriteCData(szText); }
    void End() { m_writer.WriteEndElement(); }
    std::wstring Text(size_t = 0) { return m_writer.ToStringW(); }

private:
    COvXmlWriter m_writer{ true };
};
