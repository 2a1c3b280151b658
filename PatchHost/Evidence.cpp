#include "PatchHost/Evidence.h"

#include "PatchHost/Text.h"

#include <algorithm>
#include <cstring>

namespace
{

const char* const s_names[] = {
#include "EvidenceNames.inc" // made from the library's sources
};

bool StartsWith(const std::string& text, size_t nPos, const std::string& start)
{
    return text.compare(nPos, start.size(), start) == 0;
}

/// The name of the item that begins at a position, the longest that fits; null for none. A name may end in a colon of
/// its own.
const char* NameAt(const std::string& text, size_t nPos)
{
    const char* szLongest = nullptr;
    for (const char* const szName : s_names)
        if (StartsWith(text, nPos, std::string(szName) + ": ") &&
            (szLongest == nullptr || std::strlen(szName) > std::strlen(szLongest)))
            szLongest = szName;
    return szLongest;
}

/// Where the value that begins at a position ends.
size_t ValueEnd(const std::string& text, size_t nPos, const std::string& name, const std::string& document)
{
    if (name == "tzSettingsXml") // another document: the one item behind it ends it
        return std::min(text.rfind(" tzErrorInfo: "), text.size());
    const size_t nSkip = !document.empty() && StartsWith(text, nPos, document) ? nPos + document.size() : nPos;
    for (size_t nBlank = text.find(' ', nSkip); nBlank != std::string::npos; nBlank = text.find(' ', nBlank + 1))
        if (NameAt(text, nBlank + 1) != nullptr)
            return nBlank;
    return text.size();
}

bool IsDocument(const CEvidenceItem& item)
{
    return item.name == "strXML" || item.name == "bstrXml" || item.name == "tzSettingsXml";
}

/// The document as it stands in a line: each break mark is a blank there.
std::string AsRendered(const std::string& document)
{
    std::string text = AnsiToUtf8(document.c_str());
    std::replace(text.begin(), text.end(), '\r', ' ');
    return text;
}

} // namespace

std::vector<CEvidenceItem> SplitEvidence(const std::string& text, const std::string& document)
{
    const std::string rendered = AsRendered(document);
    std::vector<CEvidenceItem> items;
    size_t nPos = 0;
    while (nPos < text.size())
    {
        const char* const szName = NameAt(text, nPos);
        const std::string name = szName == nullptr ? "" : szName;
        const size_t nValue = szName == nullptr ? nPos : nPos + name.size() + 2;
        const size_t nEnd = std::max(ValueEnd(text, nValue, name, rendered), nValue);
        items.push_back({ name, text.substr(nValue, nEnd - nValue) });
        nPos = nEnd + 1;
    }
    return items;
}

std::string EvidenceText(const std::vector<CEvidenceItem>& items)
{
    std::string text;
    for (const CEvidenceItem& item : items)
    {
        if (item.name == "Stack Dump" && Trimmed(item.value).empty())
            continue; // the stack tracer is off, as it mostly is
        const std::string value =
            IsDocument(item) ? "(" + Count(item.value.size(), "character") + ")" : Trimmed(item.value);
        text += "    " + item.name + (item.name.empty() ? "" : ": ") + Shown(value) + "\n";
    }
    return text;
}

CJson EvidenceJson(const std::vector<CEvidenceItem>& items)
{
    CJson json = CJson::array();
    for (const CEvidenceItem& item : items)
        json.push_back({ { "name", item.name }, { "value", item.value } });
    return json;
}
