// translate: the settings document that a policy becomes, as a service of this process's own receives it.
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Console.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Dom.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/Refusal.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

namespace
{

/// A line of the settings document and what it came from.
struct COrigin
{
    std::string setting;
    std::string value;
    std::string origin;
};

std::string PathOr(const std::vector<CDomNode>& nodes, size_t nIndex, const std::string& attribute)
{
    return nIndex < nodes.size() ? nodes[nIndex].Path() + attribute : "the policy";
}

std::string Named(const std::string& name)
{
    return "*[local-name()='" + name + "']";
}

/// The children of the configuration that counts, the last one.
std::vector<CDomNode> Children(const CDomNode& policy, const std::string& name)
{
    return policy.Select("/*/" + Named("configuration") + "[last()]/" + Named(name));
}

std::string OriginOf(const std::string& setting, const CDomNode& policy)
{
    if (setting == "AssessInterval")
        return PathOr(Children(policy, "assessment"), 0, "/@periodInHours");
    if (setting == "ServerPublicKey")
        return PathOr(Children(policy, "serverKey"), 0, "");
    return "fixed";
}

std::vector<COrigin> Explain(const CDomNode& settings, const CDomNode& policy)
{
    std::vector<COrigin> origins;
    const std::vector<CDomNode> assessments = Children(policy, "assessment");
    for (const CDomNode& node : settings.Select("/*/" + Named("Assessment")))
        origins.push_back(
            { "Assessment mode", node.TextAt("@mode"), PathOr(assessments, origins.size(), "/@enabled") });
    origins.push_back({ "Remediation mode", settings.TextAt("/*/" + Named("Remediation") + "/@mode"), "fixed" });
    for (const CDomNode& node : settings.Select("/*/" + Named("Settings") + "/*"))
    {
        const std::string name = node.TextAt("@name");
        origins.push_back({ name, node.Text(), OriginOf(name, policy) });
    }
    return origins;
}

std::string Padded(const std::string& text, size_t nWidth)
{
    return text + std::string(text.size() < nWidth ? nWidth - text.size() : 0, ' ') + "  ";
}

std::string Table(const std::vector<COrigin>& origins)
{
    size_t nValue = 0;
    for (const COrigin& origin : origins)
        nValue = std::max(nValue, origin.value.size());
    std::string text;
    for (const COrigin& origin : origins)
        text += Padded(origin.setting, 21) + Padded(Shown(origin.value), nValue) + origin.origin + "\n";
    return text;
}

CJson TableJson(const std::vector<COrigin>& origins)
{
    CJson json = CJson::array();
    for (const COrigin& origin : origins)
        json.push_back({ { "setting", origin.setting }, { "value", origin.value }, { "origin", origin.origin } });
    return json;
}

void Show(const COutput& out, const COptions& options, const std::wstring& settings, const std::string& document)
{
    const std::string text = WideToUtf8(settings);
    CJson json = { { "settings", text } };
    if (!options.bExplain)
    {
        const bool bRaw = options.bRaw || !IsTerminal(Stream::Output);
        if (bRaw)
            out.RawText(text);
        else
            out.Text(IndentXml(text));
        out.Json(json);
        return;
    }
    const std::optional<CDomNode> made = CDomNode::Parse(settings);
    const std::optional<CDomNode> policy = CDomNode::Parse(AnsiToWide(document.c_str()));
    if (!made || !policy) // a value that is no XML text goes to the service as it is
        throw std::runtime_error("the settings document cannot be explained: it does not parse");
    const std::vector<COrigin> origins = Explain(*made, *policy);
    json["explained"] = TableJson(origins);
    out.Text(Table(origins));
    out.Json(json);
}

} // namespace

int TranslateCommand(const COptions& options)
{
    const COutput out(options);
    const std::string document = ReadDocument(options.files.front());
    COptions own = options;
    own.serviceScript.clear();
    CSession session(own, ServiceKind::Simulated, StateKind::Throwaway);
    const std::optional<CRefusal> refusal = FindRefusal(session.SetConfiguration(document), document);
    if (refusal)
    {
        Note(options.files.front() + " is refused\n" + RefusalText(*refusal));
        out.Json({ { "settings", nullptr }, { "refusal", RefusalJson(*refusal) } });
        return UnlessInterrupted(ExitRefused);
    }
    const std::optional<std::wstring> settings = session.GetService().GetLastSettings();
    if (settings)
        Show(out, options, *settings, document);
    else
    {
        Note("nothing is translated: a config document has no settings");
        out.Json({ { "settings", nullptr } });
    }
    return UnlessInterrupted(ExitDone);
}
