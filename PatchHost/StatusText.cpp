#include "PatchHost/StatusText.h"

#include "PatchHost/Dom.h"
#include "PatchHost/Text.h"

#include <stdexcept>

CStatus ParseStatus(const std::string& status)
{
    const std::optional<CDomNode> outer = CDomNode::Parse(AnsiToWide(status));
    const std::optional<CDomNode> inner =
        outer ? CDomNode::Parse(Utf8ToWide(outer->TextAt("/*/*[local-name()='data']"))) : std::nullopt;
    if (!inner)
        throw std::runtime_error("the status document does not parse");
    const std::string compliance = "/*/*[local-name()='CompRes']/";
    const std::string meta = "/*/*[local-name()='meta']/";
    const std::string agent = "/*/*[local-name()='wua']/";
    CStatus result;
    result.result = outer->TextAt(compliance + "@Res");
    result.revision = outer->TextAt(compliance + "@RevID");
    result.policyType = outer->TextAt(compliance + "@policyType");
    result.timestamp = outer->TextAt(meta + "@timestamp");
    result.softwareVersion = outer->TextAt(meta + "@softwareVersion");
    result.bServiceRunning = inner->TextAt("/*/@serviceRunning") == "true";
    result.bAssessmentEnabled = inner->TextAt("/*/@assessmentEnabled") == "true";
    result.installed = inner->TextAt(agent + "@installed");
    result.compatible = inner->TextAt(agent + "@compatible");
    result.currentVersion = inner->TextAt(agent + "@currentVersion");
    result.requiredVersion = inner->TextAt(agent + "@requiredVersion");
    return result;
}

std::string Verdict(const CStatus& status)
{
    if (status.revision.empty())
        return "not in force: no policy revision is recorded";
    if (status.result != "Same")
        return "not in force: revision " + status.revision +
               " is recorded, but the service does not say that its "
               "server key is in order";
    if (!status.bServiceRunning)
        return "in force as far as is known: revision " + status.revision +
               " is recorded, but the service does not run";
    return "in force: revision " + status.revision + " is recorded, and the service's server key is in order";
}

CJson StatusJson(const CStatus& status)
{
    return { { "verdict", Verdict(status) },
             { "result", status.result },
             { "revision", status.revision },
             { "policyType", status.policyType },
             { "timestamp", status.timestamp },
             { "softwareVersion", status.softwareVersion },
             { "serviceRunning", status.bServiceRunning },
             { "assessmentEnabled", status.bAssessmentEnabled },
             { "updateAgent",
               { { "installed", status.installed },
                 { "compatible", status.compatible },
                 { "currentVersion", status.currentVersion },
                 { "requiredVersion", status.requiredVersion } } } };
}
