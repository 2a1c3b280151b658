#include "PatchHost/CommandLine.h"

#include "PatchHost/Commands/Commands.h"
#include "PatchHost/ServiceScript.h"
#include "PatchHost/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <limits>
#include <map>

namespace
{

const char s_szExitCodes[] = R"(
Exit codes: 0 done, 1 failed, 2 wrong command line or service script, 3 document refused, 4 patch service not available,
5 library cannot be loaded or has another interface version, 130 interrupted. Data goes to standard output, messages go
to standard error. The adapter takes up to ten seconds to stop; a second Ctrl-C does not wait for it.
)";

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

template <class Value>
std::vector<std::string> Names(const std::map<std::string, Value>& values)
{
    std::vector<std::string> names;
    for (const auto& [name, value] : values)
        names.push_back(name);
    return names;
}

/// An option that takes one of some words.
template <class Value>
void AddWord(CLI::App& app, const char* szName, Value& target, const std::map<std::string, Value>& values,
             const char* szDescription)
{
    app.add_option_function<std::string>(
           szName,
           [&target, szName, values](const std::string& word) {
               const auto found = values.find(word);
               if (found == values.end())
                   throw CLI::ValidationError(szName, "'" + word + "' is none of " +
                                                          CLI::detail::join(Names(values), ", ") +
                                                          Suggestion(word, Names(values)));
               target = found->second;
           },
           szDescription)
        ->type_name("WORD");
}

/// Milliseconds of a text such as "500ms", "30s", "2m", "1h" or "0".
unsigned Milliseconds(const std::string& option, const std::string& text)
{
    static const std::map<std::string, unsigned> units = {
        { "ms", 1 }, { "s", 1000 }, { "m", 60000 }, { "h", 3600000 }
    };
    const size_t nDigits = std::min(text.find_first_not_of("0123456789"), text.size());
    const auto unit = units.find(text.substr(nDigits));
    unsigned nCount = 0;
    const bool bCount = std::from_chars(text.data(), text.data() + nDigits, nCount).ec == std::errc();
    if (text == "0")
        return 0;
    if (!bCount || unit == units.end() || nCount > std::numeric_limits<unsigned>::max() / unit->second)
        throw CLI::ValidationError(option, "'" + text + "' is no time of up to 49 days, such as 500ms, 30s, 2m or 1h");
    return nCount * unit->second;
}

template <class Value>
void AddTime(CLI::App& app, const char* szName, Value& target, const char* szDescription)
{
    app.add_option_function<std::string>(
           szName, [&target, szName](const std::string& text) { target = Milliseconds(szName, text); }, szDescription)
        ->type_name("TIME");
}

void AddCommonOptions(CLI::App& app, COptions& options)
{
    static const std::map<std::string, ServiceKind> services = { { "simulated", ServiceKind::Simulated },
                                                                 { "installed", ServiceKind::Installed },
                                                                 { "down", ServiceKind::Down } };
    static const std::map<std::string, int> levels = { { "none", -1 }, { "error", 0 },  { "warning", 1 },
                                                       { "info", 2 },  { "detail", 3 }, { "trace", 4 } };
    app.add_option("--library", options.library, "the adapter library to load")
        ->capture_default_str()
        ->type_name("FILE");
    AddWord(app, "--service", options.service, services,
            "the patch service: simulated (the default), installed or down; run, validate, translate and check have "
            "one of their own");
    app.add_option("--service-script", options.serviceScript, "what the simulated service does; see patchhost --help")
        ->type_name("FILE");
    app.add_option("--state-dir", options.stateFolder, "keep the recorded revision in this folder")
        ->type_name("FOLDER");
    app.add_option("--acp", options.nCodePage,
                   "the ANSI code page in which documents are read, such as 1252; on Windows the system's alone")
        ->type_name("NUMBER");
    AddWord(app, "--trace", options.nTraceLevel, levels,
            "show the library's trace on standard error, up to a kind: none, error, warning, info, detail, trace");
    AddTime(app, "--timeout", options.nTimeoutMs,
            "how long one call into the library may take, such as 30s; 60s unless told, 0 for no limit");
    app.add_flag("--json", options.bJson, "one JSON object, or one a line, in place of text");
}

/// @param nMost  how many; below 0 for any number from one on.
void AddFiles(CLI::App& command, COptions& options, int nMost, const char* szDescription)
{
    command.add_option("FILE", options.files, szDescription)->required()->expected(1, nMost)->type_name("");
}

void AddOwnOptions(const std::map<std::string, CLI::App*>& commands, COptions& options)
{
    for (const char* const szName : { "run", "translate", "apply" })
        AddFiles(*commands.at(szName), options, 1, "the policy document, - for standard input");
    AddFiles(*commands.at("validate"), options, -1, "the documents, - for standard input");
    AddFiles(*commands.at("record"), options, -1,
             "the file to write, - for standard output; then the policies to hand in");
    AddFiles(*commands.at("replay"), options, 1, "the recorded session");
    commands.at("translate")->add_flag("--raw", options.bRaw, "the document as the service gets it");
    commands.at("translate")->add_flag("--explain", options.bExplain, "each setting beside what it came from");
    commands.at("status")->add_flag("--raw", options.bRaw, "the document as the host gets it");
    AddTime(*commands.at("watch"), "--for", options.forMs, "end after this time, such as 60s; without it with Ctrl-C");
    commands.at("check")
        ->add_option("--loads", options.nLoads, "how often to load and unload")
        ->capture_default_str()
        ->type_name("NUMBER");
}

std::string UnknownCommand(const std::string& word)
{
    std::vector<std::string> known;
    for (const CCommand& command : s_commands)
        known.emplace_back(command.szName);
    const std::string suggestion = Suggestion(word, known);
    return "there is no command '" + word + "'" + (suggestion.empty() ? "; see patchhost --help" : suggestion);
}

std::string Unexpected(const CLI::App& app, const std::string& word)
{
    std::vector<std::string> known;
    const CLI::App* const pCommand = app.get_subcommands().front();
    for (const CLI::App* const pApp : { &app, pCommand })
        for (const CLI::Option* const pOption : pApp->get_options())
            for (const std::string& name : pOption->get_lnames())
                known.push_back("--" + name);
    return "this was not expected: " + word + (word[0] == '-' ? Suggestion(word, known) : "");
}

/// For the end of a command's own help.
std::string CommonOptions(const CLI::App& app)
{
    return CLI::Formatter().make_group(
        "Options of every command", false, app.get_options([](const CLI::Option* pOption) {
            return pOption != nullptr && pOption->get_name() != "--help" && pOption->get_name() != "--version";
        }));
}

/// The commands take what the program does not know of, so that an unknown command can be answered.
void RefuseLeftovers(const CLI::App& app)
{
    const std::vector<std::string> left = app.remaining(true);
    if (!app.get_subcommands().empty())
    {
        if (!left.empty())
            throw CCommandError(ExitUsage, Unexpected(app, left.front()));
        return;
    }
    const auto word = std::find_if(left.begin(), left.end(), [](const std::string& s) { return s[0] != '-'; });
    throw CCommandError(ExitUsage,
                        word != left.end() ? UnknownCommand(*word) : "a command is required; see patchhost --help");
}

} // namespace

std::optional<CRequest> ParseCommandLine(const std::vector<std::string>& arguments)
{
    CRequest request = {};
    request.options.library = PATCHHOST_LIBRARY;
    CLI::App app("Loads the patch adapter library and drives it as the agent would.", "patchhost");
    app.set_version_flag("--version", PATCHHOST_VERSION);
    app.allow_extras();
    app.allow_windows_style_options(false); // a path may begin with a slash
    AddCommonOptions(app, request.options);
    std::map<std::string, CLI::App*> commands;
    for (const CCommand& command : s_commands)
    {
        CLI::App* const pCommand = app.add_subcommand(command.szName, command.szDescription)->fallthrough();
        pCommand->allow_windows_style_options(false);
        pCommand->footer([&app] { return CommonOptions(app); });
        pCommand->set_version_flag("--version", PATCHHOST_VERSION);
        commands[command.szName] = pCommand;
        pCommand->callback([&request, &command] { request.command = command.function; });
    }
    app.footer(s_szExitCodes + std::string("\n") + g_szServiceScriptHelp); // now, for the commands would take it over
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
