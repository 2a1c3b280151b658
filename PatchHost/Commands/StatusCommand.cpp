// status: the current status document and what it means.
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Session.h"
#include "PatchHost/StatusText.h"
#include "PatchHost/Text.h"

int StatusCommand(const COptions& options)
{
    const COutput out(options);
    CSession session(options);
    const std::optional<std::string> document = session.GetStatus();
    if (!document)
        throw std::runtime_error("the library built no status document; run again with --trace error to see why");
    const std::string raw = AnsiToUtf8(*document);
    if (options.bRaw)
    {
        out.RawText(raw);
        out.Json({ { "document", raw } });
        return UnlessInterrupted(ExitDone);
    }
    const CStatus status = ParseStatus(*document);
    CJson json = StatusJson(status);
    json["document"] = raw;
    out.Json(json);
    out.Text(IndentXml(raw) + Shown(Verdict(status)) + "\n");
    return UnlessInterrupted(ExitDone);
}
