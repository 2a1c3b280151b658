#include "PatchHost/Refusal.h"

#include "PatchHost/Dom.h"
#include "PatchHost/Text.h"

#include <algorithm>
#include <cstdlib>

namespace
{

const std::string s_evidence = " Evidence: ";

constexpr size_t s_nShown = 100; ///< of a long line
constexpr size_t s_nBefore = 60; ///< of them before the column

/// What stands between two texts, trimmed.
std::string Between(const std::string& text, const std::string& start, const std::string& end)
{
    const size_t nStart = text.find(start);
    if (nStart == std::string::npos)
        return std::string();
    const size_t nValue = nStart + start.size();
    const size_t nEnd = text.find(end, nValue);
    return Trimmed(text.substr(nValue, nEnd == std::string::npos ? nEnd : nEnd - nValue));
}

std::string ValueOf(const std::vector<CEvidenceItem>& items, const std::string& name)
{
    for (const CEvidenceItem& item : items)
        if (item.name == name)
            return item.value;
    return std::string();
}

/// The node that the library looked at last: it names each child when it comes to it.
std::optional<CDomNode> LastNode(const std::vector<CTraceLine>& lines, const std::string& document)
{
    size_t nChild = 0;   // counted from 1, of the main node
    size_t nSetting = 0; // of the configuration
    bool bMain = false;
    for (const CTraceLine& line : lines)
    {
        bMain = bMain || (line.kind == TraceDetail && line.text.rfind("Name: ", 0) == 0);
        if (line.kind == TraceDetail && line.text.rfind("strNodeName: ", 0) == 0)
        {
            ++nChild;
            nSetting = 0;
        }
        nSetting += line.kind == TraceDetail && line.text.rfind("strPolicyNodeName: ", 0) == 0 ? 1 : 0;
    }
    std::optional<CDomNode> node = CDomNode::Parse(AnsiToWide(document.c_str()));
    for (const size_t nIndex : { bMain ? size_t{ 2 } : size_t{ 0 }, nChild, nSetting })
    {
        if (!node || nIndex == 0)
            break;
        const std::vector<CDomNode> children = node->Children();
        if (nIndex > children.size())
            break;
        node = children[nIndex - 1];
    }
    return node;
}

void ReadParseError(CRefusal& refusal, const std::string& parseError)
{
    refusal.message = "the document does not parse";
    refusal.reason = Between(parseError, "Reason:\n", "\nSource:\n");
    const size_t nSource = parseError.find("\nSource:\n");
    if (nSource != std::string::npos)
        refusal.source = parseError.substr(nSource + 9, parseError.find('\n', nSource + 9) - nSource - 9);
    if (refusal.source == "No source available.")
        refusal.source.clear();
    refusal.nLine = std::atol(Between(parseError, "Line: ", " ").c_str());
    refusal.nColumn = std::atol(Between(parseError, "Line Pos: ", "\n").c_str());
}

/// The library says of which type a value should have been, not of which attribute.
std::string ConversionMessage(const std::string& type)
{
    return type == "11" ? "the attribute 'enabled' is not a truth value: true, false, 1, 0 or -1"
                        : "the attribute 'policyType' is not a whole number of 32 bits";
}

/// Which of the two nodes of a patch policy is missing, by the names that they have in the document.
std::string MissingNodes(const std::vector<CEvidenceItem>& evidence)
{
    std::string missing;
    if (ValueOf(evidence, "bFoundComparisionNode") == "<false>")
        missing += ": there is no 'Comp'";
    if (ValueOf(evidence, "bFoundPolicyRefNode") == "<false>")
        missing += std::string(missing.empty() ? ": there is" : " and") + " no 'configuration'";
    return missing;
}

/// The sentence of a failure that is not about the document: what failed, and the system's text.
std::string FailedCall(const std::vector<CEvidenceItem>& evidence)
{
    std::string sentence;
    for (const char* const szName : { "Msg", "Exception Info", "Method", "Win32 Error", "Win32 GetLastError", "hr" })
    {
        const std::string value = Trimmed(ValueOf(evidence, szName));
        if (!value.empty())
            sentence += (sentence.empty() ? "" : " ") + value;
    }
    return sentence.empty() ? "the library gives no reason" : sentence;
}

std::string Message(const std::vector<CEvidenceItem>& evidence)
{
    const std::string attribute = ValueOf(evidence, "strAttrName");
    if (!attribute.empty())
        return "the attribute '" + attribute + "' is missing";
    const std::string type = ValueOf(evidence, "vtNew");
    if (!type.empty())
        return ConversionMessage(type);
    const std::string message = ValueOf(evidence, "Info Msg");
    return message.empty() ? FailedCall(evidence) : message + MissingNodes(evidence);
}

void AddNode(CRefusal& refusal, const std::vector<CTraceLine>& lines, const std::string& document)
{
    std::optional<CDomNode> node = LastNode(lines, document);
    if (!ValueOf(refusal.evidence, "bFoundPolicyRefNode").empty() && node)
        node = node->Select("/*").front(); // what is missing is missing in the main node, not in its last child
    if (!node)
        return;
    refusal.nodePath = node->Path().empty() ? "/" : node->Path();
    refusal.outline = refusal.nodePath == "/" ? "" : node->Outline();
}

/// The faulty line with a caret under its column.
std::string SourceText(const CRefusal& refusal)
{
    const std::wstring line = Utf8ToWide(refusal.source);
    const size_t nColumn = static_cast<size_t>(std::max(refusal.nColumn - 1, 0L));
    const size_t nStart = line.size() > s_nShown && nColumn > s_nBefore ? nColumn - s_nBefore : 0;
    const auto part = [&line](size_t nFrom, size_t nCount) {
        return nFrom < line.size() ? Utf8ToWide(Shown(WideToUtf8(line.substr(nFrom, nCount)))) : std::wstring();
    };
    const size_t nCaret = part(nStart, nColumn - nStart).size() + (nColumn > line.size() ? nColumn - line.size() : 0);
    const std::string before = nStart > 0 ? "... " : "";
    return "        " + before + WideToUtf8(part(nStart, s_nShown)) + (nStart + s_nShown < line.size() ? " ..." : "") +
           "\n        " + std::string(before.size() + nCaret, ' ') + "^\n";
}

} // namespace

std::optional<CRefusal> FindRefusal(const std::vector<CTraceLine>& lines, const std::string& document)
{
    const auto error =
        std::find_if(lines.begin(), lines.end(), [](const CTraceLine& line) { return line.kind == TraceError; });
    if (error == lines.end())
        return std::nullopt;
    CRefusal refusal;
    refusal.code = Between(error->text, "Error: ", " File: ");
    const size_t nEvidence = std::min(error->text.find(s_evidence), error->text.size() - s_evidence.size());
    refusal.evidence = SplitEvidence(error->text.substr(nEvidence + s_evidence.size()), document);
    const std::string parseError = ValueOf(refusal.evidence, "XML Parse Error");
    if (!parseError.empty())
    {
        ReadParseError(refusal, parseError);
        return refusal;
    }
    refusal.message = Message(refusal.evidence);
    const bool bLoaded = std::any_of(lines.begin(), lines.end(), [](const CTraceLine& line) {
        return line.text == "Info Msg: Loaded configuration xml";
    });
    if (!bLoaded) // else the document is not to blame
        AddNode(refusal, lines, document);
    return refusal;
}

std::string RefusalText(const CRefusal& refusal)
{
    std::string text = "    " + refusal.message + "\n";
    if (!refusal.reason.empty())
        text += "    the parser says: " + Shown(refusal.reason) + "\n";
    if (refusal.nLine > 0)
        text += "    line " + std::to_string(refusal.nLine) + ", column " + std::to_string(refusal.nColumn) + "\n";
    if (!refusal.source.empty())
        text += SourceText(refusal);
    if (!refusal.nodePath.empty())
        text += "    at " + Shown(refusal.nodePath) + "\n";
    if (!refusal.outline.empty())
        text += "        " + Shown(refusal.outline) + "\n";
    return text;
}

CJson RefusalJson(const CRefusal& refusal)
{
    CJson json = { { "code", refusal.code }, { "message", refusal.message } };
    if (!refusal.reason.empty())
        json["reason"] = refusal.reason;
    if (refusal.nLine > 0)
        json.update({ { "line", refusal.nLine }, { "column", refusal.nColumn }, { "source", refusal.source } });
    if (!refusal.nodePath.empty())
        json["node"] = refusal.nodePath;
    json["evidence"] = EvidenceJson(refusal.evidence);
    return json;
}
