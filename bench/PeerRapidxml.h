// rapidxml: a tree that points to the caller's texts, printed to memory.
#pragma once

#include <cstring>
#include <iterator>
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>
#include <string>

class CRapidxmlWriter
{
public:
    void Declare()
    {
        m_pOpen->append_node(m_doc.allocate_node(rapidxml::node_pi, "xml", R"(version="1.0" encoding="utf-8")"));
    }
    void Start(const char* szName)
    {
        rapidxml::xml_node<>* const pNode = m_doc.allocate_node(rapidxml::node_element, szName);
        m_pOpen->append_node(pNode);
        m_pOpen = pNode;
    }
    void Attribute(const char* szName, const char* szValue)
    {
        m_pOpen->append_attribute(m_doc.allocate_attribute(szName, szValue));
    }
    void CData(const char* szText) { m_pOpen->append_node(m_doc.allocate_node(rapidxml::node_cdata, nullptr, szText)); }
    void End() { m_pOpen = m_pOpen->parent(); }

    std::string Text()
    {
        std::string text;
        rapidxml::print(std::back_inserter(text), m_doc, rapidxml::print_no_indenting);
        return text;
    }

    /// With room that is known to suffice: as fast as it goes.
    std::string Text(size_t nRoom)
    {
        std::string text(nRoom, '\0');
        text.resize(
            static_cast<size_t>(rapidxml::print(text.data(), m_doc, rapidxml::print_no_indenting) - text.data()));
        return text;
    }

private:
    rapidxml::xml_document<> m_doc;
    rapidxml::xml_node<>* m_pOpen = &m_doc;
};

/// Escapes a text; the output, which it starts with, has room for it.
inline void RapidxmlEscape(const std::string& text, std::string& output)
{
    output.resize(text.size() * 6);
    char* const pEnd =
        rapidxml::internal::copy_and_expand_chars(text.data(), text.data() + text.size(), '\0', output.data());
    output.resize(static_cast<size_t>(pEnd - output.data()));
}
