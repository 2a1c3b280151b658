// status: the current status document and what it means.
#include "Callbacks.h"
#include "Commands.h"
#include "Interrupt.h"
#include "Session.h"
#include "StatusText.h"
#include "Text.h"

int StatusCommand(const COptions& options)
{
    const COutput out(options.bJson);
    CSession session(options);
    CStatusReceiver receiver;
    session.Call("GetStatus", [&](IAdapter& adapter) { adapter.GetStatus(&receiver); });
    if (!receiver.GetStatus())
        throw std::runtime_error("the library built no status document; run again with --trace error to see why");
    const std::string raw = AnsiToUtf8(*receiver.GetStatus());
    if (options.bRaw)
    {
        out.Text(raw + "\n");
        out.Json({ { "document", raw } });
        return UnlessInterrupted(ExitDone);
    }
    const CStatus status = ParseStatus(*receiver.GetStatus());
    CJson json = StatusJson(status);
    json["document"] = raw;
    out.Json(json);
    out.Text(IndentXml(raw) + Verdict(status) + "\n");
    return UnlessInterrupted(ExitDone);
}
