// pugixml: a tree of its own, saved to memory.
#pragma once

#include <pugixml.hpp>
#include <string>

struct CPugixmlText final : pugi::xml_writer
{
    std::string text;
    void write(const void* pData, size_t nSize) override { text.append(static_cast<const char*>(pData), nSize); }
};

class CPugixmlWriter
{
public:
    void Declare()
    {
        pugi::xml_node declaration = m_open.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "utf-8";
    }
    void Start(const char* szName) { m_open = m_open.append_child(szName); }
    void Attribute(const char* szName, const char* szValue) { m_open.append_attribute(szName) = szValue; }
    void CData(const char* szText) { m_open.append_child(pugi::node_cdata).set_value(szText); }
    void End() { m_open = m_open.parent(); }

    std::string Text(size_t = 0)
    {
        CPugixmlText output;
        m_doc.save(output, "", pugi::format_raw);
        return std::move(output.text);
    }

private:
    pugi::xml_document m_doc;
    pugi::xml_node m_open = m_doc;
};

/// Escapes the text that a document was given before.
inline std::string PugixmlEscape(const pugi::xml_document& doc)
{
    CPugixmlText output;
    doc.save(output, "", pugi::format_raw | pugi::format_no_declaration);
    return std::move(output.text);
}
