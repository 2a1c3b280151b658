// libxml2: its text writer, its escaping, its parser.
#pragma once

#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/xmlwriter.h>
#include <string>

inline const xmlChar* Xml(const char* sz)
{
    return reinterpret_cast<const xmlChar*>(sz);
}

class CLibxml2Writer
{
public:
    CLibxml2Writer() : m_pBuffer(xmlBufferCreate()), m_pWriter(xmlNewTextWriterMemory(m_pBuffer, 0)) {}
    ~CLibxml2Writer()
    {
        xmlFreeTextWriter(m_pWriter);
        xmlBufferFree(m_pBuffer);
    }
    CLibxml2Writer(const CLibxml2Writer&) = delete;
    CLibxml2Writer& operator=(const CLibxml2Writer&) = delete;

    void Declare() { xmlTextWriterStartDocument(m_pWriter, nullptr, "utf-8", nullptr); }
    void Start(const char* szName) { xmlTextWriterStartElement(m_pWriter, Xml(szName)); }
    void Attribute(const char* szName, const char* szValue)
    {
        xmlTextWriterWriteAttribute(m_pWriter, Xml(szName), Xml(szValue));
    }
    void CData(const char* szText) { xmlTextWriterWriteCDATA(m_pWriter, Xml(szText)); }
    void End() { xmlTextWriterFullEndElement(m_pWriter); }
    std::string Text(size_t = 0)
    {
        xmlTextWriterFlush(m_pWriter);
        return std::string(reinterpret_cast<const char*>(xmlBufferContent(m_pBuffer)),
                           static_cast<size_t>(xmlBufferLength(m_pBuffer)));
    }

private:
    xmlBufferPtr m_pBuffer;
    xmlTextWriterPtr m_pWriter;
};

/// Markup and everything beyond ASCII as references. @return to be freed with xmlFree.
inline xmlChar* Libxml2Escape(const std::string& text)
{
    return xmlEncodeEntitiesReentrant(nullptr, Xml(text.c_str()));
}

/// Parses and frees a document. @return whether it was one.
inline bool Libxml2Parse(const std::string& text)
{
    const xmlDocPtr pDoc =
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_HUGE);
    xmlFreeDoc(pDoc);
    return pDoc != nullptr;
}
