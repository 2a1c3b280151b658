#include "PatchHost/CommandLine.h"

#include "PatchAdapterApi.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Output.h"
#include "PatchHost/ServiceScript.h"
#include "PatchHost/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>

namespace
{

constexpr char s_szExitCodes[] = R"(
Exit codes: 0 done, 1 failed, 2 wrong command line or service script, 3 document refused, 4 patch service not available,
5 library cannot be loaded or has another interface version, 130 interrupted. Data goes to standard output, messages go
to standard error. "help COMMAND" shows what a command takes; "--" ends the options.
)";

struct CCommand
{
    const char* szName;
    const char* szDescription;
    CommandFunction function;
    std::vector<std::string> options; ///< those that it takes, next to --help, --version and --color
};

const std::vector<CCommand>& Commands()
{
    static const std::vector<CCommand> commands = {
        { "run",
          "the main job against a simulated service, from start to stop",
          &RunCommand,
          { "--library", "--state-dir", "--acp", "--trace", "--timeout", "--json" } },
        { "info",
          "what the library says of itself, and the installed service's state",
          &InfoCommand,
          { "--library", "--json" } },
        { "validate",
          "whether the library accepts documents; nothing outside changes",
          &ValidateCommand,
          { "--library", "--acp", "--trace", "--timeout", "--json", "--strict", "--orderly-stop" } },
        { "translate",
          "the settings document that a policy becomes",
          &TranslateCommand,
          { "--library", "--acp", "--trace", "--timeout", "--json", "--orderly-stop", "--raw", "--explain" } },
        { "apply",
          "hands a policy in and shows each step with its outcome",
          &ApplyCommand,
          { "--library", "--service", "--service-script", "--state-dir", "--acp", "--trace", "--timeout", "--json",
            "--orderly-stop" } },
        { "status",
          "the current status document and what it means",
          &StatusCommand,
          { "--library", "--service", "--service-script", "--state-dir", "--acp", "--trace", "--timeout", "--json",
            "--orderly-stop", "--raw" } },
        { "watch",
          "shows each notification as it comes",
          &WatchCommand,
          { "--library", "--service", "--service-script", "--state-dir", "--acp", "--trace", "--timeout", "--json",
            "--orderly-stop", "--for" } },
        { "state",
          "the stored revision and where it is stored",
          &StateCommand,
          { "--service", "--state-dir", "--json" } },
        { "record",
          "writes every call across the library's boundary to a file, as JSON lines",
          &RecordCommand,
          { "--library", "--service", "--service-script", "--acp", "--trace", "--timeout" } },
        { "replay",
          "plays a recorded session again and compares what comes back",
          &ReplayCommand,
          { "--library", "--trace", "--timeout", "--json" } },
        { "check",
          "tries the rules of a plug-in of this kind and reports each",
          &CheckCommand,
          { "--library", "--trace", "--timeout", "--json", "--loads" } },
    };
    return commands;
}

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
                   throw CLI::ValidationError(szName, "'" + word + "' is not one of " +
                                                          CLI::detail::join(Names(values), ", ") +
                                                          Suggestion(word, Names(values)));
               target = found->second;
           },
           szDescription)
        ->type_name(CLI::detail::join(Names(values), "|"));
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
        throw CLI::ValidationError(option,
                                   "'" + text + "' is not a time of up to 49 days, such as 500ms, 30s, 2m or 1h");
    return nCount * unit->second;
}

template <class Value>
void AddTime(CLI::App& app, const char* szName, Value& target, const char* szDescription)
{
    app.add_option_function<std::string>(
           szName, [&target, szName](const std::string& text) { target = Milliseconds(szName, text); }, szDescription)
        ->type_name("TIME");
}

void AddLibraryOptions(CLI::App& app, COptions& options)
{
    static const std::map<std::string, ServiceKind> services = { { "simulated", ServiceKind::Simulated },
                                                                 { "installed", ServiceKind::Installed },
                                                                 { "down", ServiceKind::Down } };
    static const std::map<std::string, int> levels = {
        { "none", -1 },        { "error", TraceError },   { "warning", TraceWarning },
        { "info", TraceInfo }, { "detail", TraceDetail }, { "trace", TraceCall }
    };
    app.add_option("--library", options.library, "the adapter library to load; a bare name: beside this program")
        ->capture_default_str()
        ->type_name("FILE");
    AddWord(app, "--service", options.service, services, "the patch service; simulated unless given");
    app.add_option("--service-script", options.serviceScript, "what the simulated service does; see patchhost --help")
        ->type_name("FILE");
    app.add_option("--state-dir", options.stateFolder, "keep the stored revision in this folder")->type_name("FOLDER");
    app.add_option("--acp", options.nCodePage,
                   "the ANSI code page in which documents are read, such as 1252; on Windows only the system's own")
        ->type_name("NUMBER");
    AddWord(app, "--trace", options.nTraceLevel, levels, "show the library's trace on standard error, up to a kind");
    AddTime(app, "--timeout", options.nTimeoutMs,
            "how long one call into the library may take, such as 30s; 0 for no limit, 60s unless given");
}

void AddOutputOptions(CLI::App& app, COptions& options)
{
    static const std::map<std::string, ColourChoice> colours = { { "auto", ColourChoice::Auto },
                                                                 { "always", ColourChoice::Always },
                                                                 { "never", ColourChoice::Never } };
    app.add_flag("--json", options.bJson, "one JSON object, or one a line, in place of text");
    AddWord(app, "--color", options.colour, colours, "when words are coloured; auto unless given: on a terminal");
    app.add_flag("--strict", options.bStrict, "exit code 3 when there is a remark on an accepted document");
    app.add_flag("--orderly-stop", options.bOrderlyStop,
                 "stop the adapter before the program ends, which takes up to ten seconds");
    app.add_flag("--raw", options.bRaw, "the document byte by byte, as the service or the host gets it");
    app.add_flag("--explain", options.bExplain, "each setting beside what it came from");
    AddTime(app, "--for", options.forMs, "end after this time, such as 60s; otherwise Ctrl-C ends it");
    app.add_option("--loads", options.nLoads, "how often to load and unload")
        ->capture_default_str()
        ->type_name("NUMBER");
}

/// @param nMost  how many; below 0 for any number from one on.
void AddFiles(CLI::App& command, COptions& options, int nMost, const char* szDescription)
{
    command.add_option("FILE", options.files, szDescription)->required()->expected(1, nMost)->type_name("");
}

void AddArguments(const std::map<std::string, CLI::App*>& commands, COptions& options)
{
    for (const char* const szName : { "run", "translate", "apply" })
        AddFiles(*commands.at(szName), options, 1, "the policy document, - for standard input");
    AddFiles(*commands.at("validate"), options, -1, "the documents, - for standard input");
    AddFiles(*commands.at("record"), options, -1,
             "the file to write, - for standard output; then the policies to hand in");
    AddFiles(*commands.at("replay"), options, 1, "the recorded session");
}

bool Takes(const CCommand& command, const std::string& option)
{
    return option == "--color" ||
           std::find(command.options.begin(), command.options.end(), option) != command.options.end();
}

std::string Spelled(const CLI::Option* pOption)
{
    return pOption->get_lnames().empty() ? "" : "--" + pOption->get_lnames().front();
}

std::string UnknownCommand(const std::string& word)
{
    std::vector<std::string> known = { "help" };
    for (const CCommand& command : Commands())
        known.emplace_back(command.szName);
    const std::string suggestion = Suggestion(word, known);
    return "there is no command '" + word + "'" + (suggestion.empty() ? "; see patchhost --help" : suggestion);
}

const CCommand* FindCommand(const std::string& word)
{
    for (const CCommand& command : Commands())
        if (word == command.szName)
            return &command;
    return nullptr;
}

/// A word that nothing takes. @param pCommand  null when there is no command.
[[noreturn]] void RefuseWord(const std::string& word, const CCommand* pCommand)
{
    std::vector<std::string> known = { "--help", "--version", "--color" };
    for (const CCommand& command : Commands())
        if (pCommand == nullptr || &command == pCommand)
            known.insert(known.end(), command.options.begin(), command.options.end());
    throw CCommandError(ExitUsage, "'" + word + "' was not expected" + (word[0] == '-' ? Suggestion(word, known) : ""));
}

/// The commands pass on what they do not know of, so that an unknown command can be answered.
void RefuseLeftovers(const CLI::App& app, const CCommand* pCommand)
{
    std::vector<std::string> left = app.remaining(true);
    left.erase(std::remove(left.begin(), left.end(), "--"), left.end()); // the parser hands the mark over, too
    const auto word = std::find_if(left.begin(), left.end(), [](const std::string& s) { return s[0] != '-'; });
    if (pCommand == nullptr && word != left.end())
        throw CCommandError(ExitUsage, UnknownCommand(*word));
    if (!left.empty())
        RefuseWord(left.front(), pCommand);
    if (pCommand == nullptr)
        throw CCommandError(ExitUsage, "a command is required; see patchhost --help");
}

/// Options stand with the program, so that they may come before the command; each command takes some of them.
void RefuseForeignOptions(const CLI::App& app, const CCommand& command)
{
    for (const CLI::Option* const pOption : app.get_options())
        if (pOption->count() > 0 && !Takes(command, Spelled(pOption)))
            throw CCommandError(ExitUsage, std::string(command.szName) + " takes no " + Spelled(pOption));
}

void RefuseContradictions(const COptions& options)
{
    if (options.bRaw && options.bExplain)
        throw CCommandError(ExitUsage, "--raw and --explain exclude each other");
    const auto first = options.files.begin() + (options.command == "record" ? 1 : 0); // which is an output
    if (std::count(first, options.files.end(), "-") + (options.serviceScript == "-" ? 1 : 0) > 1)
        throw CCommandError(ExitUsage, "standard input (-) can be read only once");
}

/// For the end of a command's own help.
std::string OptionsHelp(const CLI::App& app, const CCommand& command)
{
    return CLI::Formatter().make_group("Options of the command", false,
                                       app.get_options([&command](const CLI::Option* pOption) {
                                           return pOption != nullptr && Takes(command, Spelled(pOption));
                                       }));
}

/// "help COMMAND" as the option says it.
std::vector<std::string> WithoutHelpWord(const std::vector<std::string>& arguments)
{
    if (arguments.empty() || arguments.front() != "help")
        return arguments;
    if (arguments.size() > 2)
        RefuseWord(arguments[2], nullptr);
    if (arguments.size() == 1)
        return { "--help" };
    if (arguments[1][0] != '-' && FindCommand(arguments[1]) == nullptr)
        throw CCommandError(ExitUsage, UnknownCommand(arguments[1]));
    return { arguments[1], "--help" };
}

std::map<std::string, CLI::App*> AddCommands(CLI::App& app)
{
    std::map<std::string, CLI::App*> commands;
    for (const CCommand& command : Commands())
    {
        CLI::App* const pCommand = app.add_subcommand(command.szName, command.szDescription)->fallthrough();
        pCommand->allow_windows_style_options(false);
        pCommand->footer([&app, &command] { return OptionsHelp(app, command); });
        commands[command.szName] = pCommand;
    }
    return commands;
}

void Parse(CLI::App& app, const std::vector<std::string>& arguments, CRequest& request)
{
    const std::vector<std::string> words = WithoutHelpWord(arguments);
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const CCommand* const pCommand = chosen.empty() ? nullptr : FindCommand(chosen.front()->get_name());
    RefuseLeftovers(app, pCommand);
    RefuseForeignOptions(app, *pCommand);
    request.command = pCommand->function;
    request.options.command = pCommand->szName;
    RefuseContradictions(request.options);
}

} // namespace

std::optional<CRequest> ParseCommandLine(const std::vector<std::string>& arguments)
{
    CRequest request = {};
    request.options.library = PATCHHOST_LIBRARY;
    CLI::App app("Loads the patch adapter library and drives it as the agent would.", "patchhost");
    app.set_version_flag("-V,--version", PATCHHOST_VERSION);
    app.allow_extras();
    app.allow_windows_style_options(false); // a path may begin with a slash
    AddLibraryOptions(app, request.options);
    AddOutputOptions(app, request.options);
    const std::map<std::string, CLI::App*> commands = AddCommands(app);
    app.footer(s_szExitCodes + std::string("\n") + g_szServiceScriptHelp); // now: the commands would inherit it
    AddArguments(commands, request.options);
    const COutput out({});
    try
    {
        Parse(app, arguments, request);
    }
    catch (const CLI::CallForHelp&)
    {
        out.Text(app.help());
        return std::nullopt;
    }
    catch (const CLI::CallForVersion& e)
    {
        out.Text(std::string(e.what()) + "\n");
        return std::nullopt;
    }
    catch (const CLI::ParseError& e)
    {
        throw CCommandError(ExitUsage, e.what());
    }
    return request;
}
