// validate: the library's own intake, with no service and a throw-away record.
#include "Commands.h"
#include "Documents.h"
#include "Evidence.h"
#include "Interrupt.h"
#include "Output.h"
#include "Session.h"

namespace
{

const std::string s_message = "Info Msg: ";

/// What the library remarked about a document that it accepted, but not that there is no service.
std::vector<std::string> Remarks(const std::vector<CTraceLine>& lines)
{
    std::vector<std::string> remarks;
    for (const CTraceLine& line : lines)
    {
        if (line.nKind == 2 && line.text == s_message + "Applying configuration")
            break;
        if (line.nKind == 1)
            remarks.push_back(line.text.compare(0, s_message.size(), s_message) == 0
                                  ? line.text.substr(s_message.size())
                                  : line.text);
    }
    return remarks;
}

void Accepted(const COutput& out, const std::string& file, const std::vector<CTraceLine>& lines)
{
    const std::vector<std::string> remarks = Remarks(lines);
    out.Json({ { "file", file }, { "accepted", true }, { "remarks", remarks } });
    out.Text(file + ": " + out.Good("accepted") + "\n");
    for (const std::string& remark : remarks)
        out.Text("    remark: " + remark + "\n");
}

void Refused(const COutput& out, const std::string& file, const CRefusal& refusal)
{
    CJson json = { { "file", file }, { "accepted", false } };
    json.update(RefusalJson(refusal));
    out.Json(json);
    out.Text(file + ": " + out.Bad("refused") + "\n" + RefusalText(refusal));
}

/// @return whether the document was accepted.
bool Validate(CSession& session, const COutput& out, const std::string& file)
{
    const std::string document = ReadDocument(file);
    const CCallTrace trace(session.GetSink());
    session.Call("SetConfiguration", [&](IAdapter& adapter) { adapter.SetConfiguration(document.c_str()); });
    const std::optional<CRefusal> refusal = FindRefusal(trace.GetLines(), document);
    if (refusal)
        Refused(out, file, *refusal);
    else
        Accepted(out, file, trace.GetLines());
    return !refusal;
}

} // namespace

int ValidateCommand(const COptions& options)
{
    const COutput out(options.bJson);
    CSession session(options, ServiceKind::Isolated, RecordKind::Throwaway);
    bool bAllAccepted = true;
    for (const std::string& file : options.files)
    {
        if (IsInterrupted())
            return ExitInterrupted;
        bAllAccepted = Validate(session, out, file) && bAllAccepted;
    }
    return bAllAccepted ? ExitDone : ExitRefused;
}
