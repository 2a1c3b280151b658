// tinyxml2: its printer, which keeps no tree.
#pragma once

#include <string>
#include <tinyxml2.h>

class CTinyxml2Writer
{
public:
    void Declare() { m_printer.PushDeclaration(R"(xml version="1.0" encoding="utf-8")"); }
    void Start(const char* szName) { m_printer.OpenElement(szName, true); }
    void Attribute(const char* szName, const char* szValue) { m_printer.PushAttribute(szName, szValue); }
    void CData(const char* szText) { m_printer.PushText(szText, true); }
    void End() { m_printer.CloseElement(true); }
    std::string Text(size_t = 0)
    {
        return std::string(m_printer.CStr(), static_cast<size_t>(m_printer.CStrSize() - 1));
    }

private:
    tinyxml2::XMLPrinter m_printer{ nullptr, true };
};

inline std::string Tinyxml2Escape(const std::string& text)
{
    tinyxml2::XMLPrinter printer(nullptr, true);
    printer.PushText(text.c_str());
    return std::string(printer.CStr(), static_cast<size_t>(printer.CStrSize() - 1));
}
