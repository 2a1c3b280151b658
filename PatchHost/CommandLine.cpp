#include "CommandLine.h"

#include "Commands.h"
#include "ServiceScript.h"
#include "Suggestion.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <map>

namespace
{

const char s_szExitCodes[] = R"(
Exit codes: 0 done, 1 failed, 2 wrong command line or service script, 3 document refused, 4 patch service not available,
5 library cannot be loaded or has another interface version, 130 interrupted. Data goes to standard output, messages go
to standard error. The adapter takes up to ten seconds to stop; a second Ctrl-C does not wait for it.
)";

const std::map<std::string, unsigned> s_units = { { "ms", 1 }, { "s", 1000 }, { "m", 60000 }, { "h", 3600000 } };

struct CCommand
{
    const char* szName;
    const char* szDescription;
    CommandFunction function;
};

const CCommand s_commands[] = {
    { "run", "the main job against a simulated service, from start to stop", &RunCommand },
    { "info", "what the library says of itself, and the installed service's state", &InfoCommand },
    { "validate", "whether the library accepts documents; nothing outside changes", &ValidateCommand },
    { "translate", "the settings document that a policy becomes", &TranslateCommand },
    { "apply", "hands a policy in and shows each step with its outcome", &ApplyCommand },
    { "status", "the current status document and what it means", &StatusCommand },
    { "watch", "shows each notification as it comes", &WatchCommand },
    { "state", "the recorded revision and where it is stored", &StateCommand },
    { "record", "writes every call across the library's boundary to a file, as JSON lines", &RecordCommand },
    { "replay", "plays a recorded session again and compares what comes back", &ReplayCommand },
    { "check", "tries the rules of a plug-in of this kind, and tells of each", &CheckCommand },
};

void AddCommonOptions(CLI::App& app, COptions& options)
{
    static const std::map<std::string, ServiceKind> services = { { "simulated", ServiceKind::Simulated },
                                                                 { "installed", ServiceKind::Installed },
                                                                 { "down", ServiceKind::Down } };
    static const std::map<std::string, int> levels = { { "none", -1 }, { "error", 0 },  { "warning", 1 },
                                                       { "info", 2 },  { "detail", 3 }, { "trace", 4 } };
    app.add_option("--library", options.library, "the adapter library to load")->capture_default_str();
    app.add_option("--service", options.service, "the patch service: simulated (the default), installed or down")
        ->transform(CLI::CheckedTransformer(services).description(""));
    app.add_option("--service-script", options.serviceScript, "what the simulated service does, a file; see below");
    app.add_option("--state-dir", options.stateFolder, "keep the recorded revision in this folder");
    app.add_option("--acp", options.nCodePage, "the ANSI code page in which documents are read, such as 1252");
    app.add_option(
           "--trace", options.nTraceLevel,
           "show the library's trace on standard error, up to a kind: none, error, warning, info, detail, trace")
        ->transform(CLI::CheckedTransformer(levels).description(""));
    app.add_option("--timeout", options.nTimeoutMs,
                   "how long one call into the library may take, such as 30s; 0 for no limit")
        ->transform(CLI::AsNumberWithUnit(s_units, CLI::AsNumberWithUnit::UNIT_REQUIRED, "TIME").description(""))
        ->default_str("60s");
    app.add_flag("--json", options.bJson, "one JSON object, or one a line, in place of text");
}

void AddFile(CLI::App& command, COptions& options, const char* szDescription)
{
    command.add_option("FILE", options.files, szDescription)->required()->expected(1);
}

void AddOwnOptions(const std::map<std::string, CLI::App*>& commands, COptions& options)
{
    for (const char* const szName : { "run", "translate", "apply" })
        AddFile(*commands.at(szName), options, "the policy document, - for standard input");
    commands.at("validate")
        ->add_option("FILE", options.files, "the documents, - for standard input")
        ->required()
        ->expected(1, -1);
    commands.at("record")
        ->add_option("FILE", options.files, "the file to write, - for standard output; then the policies to hand in")
        ->required()
        ->expected(1, -1);
    AddFile(*commands.at("replay"), options, "the recorded session");
    commands.at("translate")->add_flag("--raw", options.bRaw, "the document as the service gets it");
    commands.at("translate")->add_flag("--explain", options.bExplain, "each setting beside what it came from");
    commands.at("status")->add_flag("--raw", options.bRaw, "the document as the host gets it");
    commands.at("watch")
        ->add_option("--for", options.nForMs, "end after this time, such as 60s; without it with Ctrl-C")
        ->transform(CLI::AsNumberWithUnit(s_units, CLI::AsNumberWithUnit::UNIT_REQUIRED, "TIME").description(""));
    commands.at("check")->add_option("--loads", options.nLoads, "how often to load and unload")->capture_default_str();
}

std::string UnknownCommand(const std::string& word)
{
    std::vector<std::string> known;
    for (const CCommand& command : s_commands)
        known.emplace_back(command.szName);
    const std::string nearest = Nearest(word, known);
    return "there is no command '" + word + "'" + (nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

/// The commands take what the program does not know of, so that an unknown command can be answered.
void RefuseLeftovers(const CLI::App& app)
{
    const std::vector<std::string> left = app.remaining(true);
    if (app.get_subcommands().empty() && !left.empty() && left.front()[0] != '-')
        throw CCommandError(ExitUsage, UnknownCommand(left.front()));
    if (!left.empty())
        throw CCommandError(ExitUsage, "this was not expected: " + left.front());
    if (app.get_subcommands().empty())
        throw CCommandError(ExitUsage, "A subcommand is required; see patchhost --help");
}

} // namespace

std::optional<CRequest> ParseCommandLine(const std::vector<std::string>& arguments)
{
    CRequest request = {};
    request.options.library = PATCHHOST_LIBRARY;
    CLI::App app("Loads the patch adapter library and drives it as the agent would.", "patchhost");
    app.set_version_flag("--version", PATCHHOST_VERSION);
    app.footer(s_szExitCodes + std::string("\n") + g_szServiceScriptHelp);
    app.allow_extras();
    app.allow_windows_style_options(false); // a path may begin with a slash
    AddCommonOptions(app, request.options);
    std::map<std::string, CLI::App*> commands;
    for (const CCommand& command : s_commands)
    {
        CLI::App* const pCommand = app.add_subcommand(command.szName, command.szDescription)->fallthrough();
        pCommand->allow_windows_style_options(false);
        pCommand->allow_extras(false);
        pCommand->set_version_flag("--version", PATCHHOST_VERSION);
        commands[command.szName] = pCommand;
        pCommand->callback([&request, &command] { request.command = command.function; });
    }
    AddOwnOptions(commands, request.options);
    try
    {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        RefuseLeftovers(app);
    }
    catch (const CLI::Success& e)
    {
        app.exit(e); // writes the help or the version
        return std::nullopt;
    }
    catch (const CLI::ParseError& e)
    {
        throw CCommandError(ExitUsage, e.what());
    }
    return request;
}
