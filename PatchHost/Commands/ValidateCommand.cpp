// validate: the library's own intake, with no service and a throw-away store.
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/Refusal.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

namespace
{

const std::string s_message = "Info Msg: ";

/// What the library remarked about a document that it accepted, but not that there is no service.
std::vector<std::string> Remarks(const std::vector<CTraceLine>& lines)
{
    std::vector<std::string> remarks;
    for (const CTraceLine& line : lines)
    {
        if (line.kind == TraceInfo && line.text == s_message + "Applying configuration")
            break;
        if (line.kind == TraceWarning)
            remarks.push_back(line.text.compare(0, s_message.size(), s_message) == 0
                                  ? line.text.substr(s_message.size())
                                  : line.text);
    }
    return remarks;
}

void Accepted(const COutput& out, const std::string& file, const std::vector<std::string>& remarks)
{
    out.Json({ { "file", file }, { "accepted", true }, { "remarks", remarks } });
    out.Text(file + ": " + out.Good("accepted") + "\n");
    for (const std::string& remark : remarks)
        out.Text("    remark: " + Shown(remark) + "\n");
}

void Refused(const COutput& out, const std::string& file, const CRefusal& refusal)
{
    CJson json = { { "file", file }, { "accepted", false } };
    json.update(RefusalJson(refusal));
    out.Json(json);
    out.Text(file + ": " + out.Bad("refused") + "\n" + RefusalText(refusal));
}

ExitCode Unreadable(const COutput& out, const std::string& file, const std::string& reason)
{
    Note(reason);
    out.Json({ { "file", file }, { "error", reason } });
    return ExitFailed;
}

/// A document, or why there is none.
struct CInput
{
    std::string file;
    std::string document;
    std::string error;
};

ExitCode Validate(CSession& session, const COutput& out, const CInput& input, bool bStrict)
{
    const std::vector<CTraceLine> lines = session.SetConfiguration(input.document);
    const std::optional<CRefusal> refusal = FindRefusal(lines, input.document);
    if (refusal)
    {
        Refused(out, input.file, *refusal);
        return ExitRefused;
    }
    const std::vector<std::string> remarks = Remarks(lines);
    Accepted(out, input.file, remarks);
    return bStrict && !remarks.empty() ? ExitRefused : ExitDone;
}

/// All of them before the adapter is made: an interrupt while standard input is read has nothing to wait for.
std::vector<CInput> ReadInputs(const std::vector<std::string>& files)
{
    std::vector<CInput> inputs;
    for (const std::string& file : files)
    {
        inputs.push_back({ file, "", "" });
        try
        {
            inputs.back().document = ReadDocument(file);
        }
        catch (const CCommandError& e)
        {
            inputs.back().error = e.what();
        }
    }
    return inputs;
}

} // namespace

int ValidateCommand(const COptions& options)
{
    const COutput out(options);
    const std::vector<CInput> inputs = ReadInputs(options.files);
    CSession session(options, ServiceKind::Isolated, StateKind::Throwaway);
    ExitCode worst = ExitDone;
    for (const CInput& input : inputs)
    {
        if (IsInterrupted())
            break;
        const ExitCode result = input.error.empty() ? Validate(session, out, input, options.bStrict)
                                                    : Unreadable(out, input.file, input.error);
        if (worst != ExitFailed && result != ExitDone) // a document that was not looked at says less than a refused one
            worst = result;
    }
    return UnlessInterrupted(worst);
}
