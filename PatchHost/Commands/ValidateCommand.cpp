// validate: the library's own intake, with no service and a throw-away store.
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/Refusal.h"
#include "PatchHost/Session.h"

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

ExitCode Unreadable(const COutput& out, const std::string& file, const std::string& reason)
{
    Note(reason);
    out.Json({ { "file", file }, { "error", reason } });
    return ExitFailed;
}

ExitCode Validate(CSession& session, const COutput& out, const std::string& file, const std::string& document)
{
    const std::vector<CTraceLine> lines = session.SetConfiguration(document);
    const std::optional<CRefusal> refusal = FindRefusal(lines, document);
    if (refusal)
        Refused(out, file, *refusal);
    else
        Accepted(out, file, lines);
    return refusal ? ExitRefused : ExitDone;
}

/// A document, or why there is none.
struct CInput
{
    std::string file;
    std::string document;
    std::string error;
};

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
    const COutput out(options.bJson);
    const std::vector<CInput> inputs = ReadInputs(options.files);
    CSession session(options, ServiceKind::Isolated, StateKind::Throwaway);
    ExitCode worst = ExitDone;
    for (const CInput& input : inputs)
    {
        if (IsInterrupted())
            break;
        const ExitCode result = input.error.empty() ? Validate(session, out, input.file, input.document)
                                                    : Unreadable(out, input.file, input.error);
        if (worst != ExitFailed && result != ExitDone) // a document that was not looked at says less than a refused one
            worst = result;
    }
    return UnlessInterrupted(worst);
}
