// The status document, written in the same way by every writer.
#pragma once

#include <string>

/// A text of the writer's kind.
template <class Char>
const Char* Pick(const char* szNarrow, const wchar_t* szWide)
{
    if constexpr (sizeof(Char) == 1)
        return szNarrow;
    else
        return szWide;
}

#define OV_TEXT(sz) Pick<Char>(sz, L##sz)

/// Both writers and the CDATA; every value is looked through for what must be escaped.
template <class Writer, class Char>
std::basic_string<Char> WriteStatus()
{
    Writer outer;
    outer.Declare();
    outer.Start(OV_TEXT("status"));
    outer.Attribute(OV_TEXT("xmlns"), OV_TEXT("example.trevok\\mansys\\status"));
    outer.Attribute(OV_TEXT("type"), OV_TEXT("patch"));
    outer.Start(OV_TEXT("CompRes"));
    outer.Attribute(OV_TEXT("xmlns"), OV_TEXT("example.trevok\\msys\\csc"));
    outer.Attribute(OV_TEXT("policyType"), OV_TEXT("20"));
    outer.Attribute(OV_TEXT("Res"), OV_TEXT("Same"));
    outer.Attribute(OV_TEXT("RevID"), OV_TEXT("HQ-2026-114"));
    outer.End();
    outer.Start(OV_TEXT("meta"));
    outer.Attribute(OV_TEXT("timestamp"), OV_TEXT("2026-03-04T09:15:27.000"));
    outer.Attribute(OV_TEXT("protocolVersion"), OV_TEXT("1"));
    outer.Attribute(OV_TEXT("softwareVersion"), OV_TEXT("1.0.0.0"));
    outer.End();
    outer.Start(OV_TEXT("data"));
    Writer inner;
    inner.Declare();
    inner.Start(OV_TEXT("patch"));
    inner.Attribute(OV_TEXT("xmlns"), OV_TEXT("http://www.trevok.example/xml/mansys/patch.xsd"));
    inner.Attribute(OV_TEXT("agentVersion"), OV_TEXT("1.0.0.0"));
    inner.Attribute(OV_TEXT("serviceRunning"), OV_TEXT("true"));
    inner.Attribute(OV_TEXT("assessmentEnabled"), OV_TEXT("true"));
    inner.Start(OV_TEXT("wua"));
    inner.Attribute(OV_TEXT("installed"), OV_TEXT("true"));
    inner.Attribute(OV_TEXT("compatible"), OV_TEXT("true"));
    inner.Attribute(OV_TEXT("currentVersion"), OV_TEXT("7.4.7600.226"));
    inner.Attribute(OV_TEXT("requiredVersion"), OV_TEXT("7.2.6001.788"));
    inner.End();
    inner.End();
    const std::basic_string<Char> text = inner.Text(1024);
    outer.CData(text.c_str());
    outer.End();
    outer.End();
    return outer.Text(2048);
}
