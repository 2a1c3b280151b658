// patchhost: loads the adapter library and drives it as the agent would.
#include "AdapterLibrary.h"
#include "RunCommand.h"
#include "State.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace
{

// Exit codes; the command line's own errors end with 2.
constexpr int s_nDone = 0;
constexpr int s_nFailed = 1;
constexpr int s_nUsage = 2;
constexpr int s_nLibrary = 5;

struct COptions
{
    CRunOptions run;
    std::string stateFolder;
    int nTraceLevel = 0;
};

void Describe(CLI::App& app, COptions& options)
{
    options.run.library = PATCHHOST_LIBRARY;
    app.set_version_flag("--version", PATCHHOST_VERSION);
    app.add_option("--library", options.run.library, "the adapter library to load")->capture_default_str();
    app.add_option("--state-dir", options.stateFolder, "keep the recorded revision in this folder");
    app.add_option("--trace", options.nTraceLevel,
                   "show the library's trace on standard error: -1 nothing, 0 errors, 1 warnings, 2 information, "
                   "3 details, 4 function entry and exit")
        ->check(CLI::Range(-1, 4))
        ->capture_default_str();
    app.allow_windows_style_options(false); // a path may begin with a slash
    app.require_subcommand(1);

    CLI::App* pRun = app.add_subcommand("run", "the main job against a simulated service, from start to stop");
    pRun->add_option("FILE", options.run.policy, "the policy document, - for standard input")->required();
}

int Run(const COptions& options)
{
    try
    {
        UseStateFolder(options.stateFolder);
        CTraceSink sink(options.nTraceLevel);
        RunMainJob(options.run, sink);
        return s_nDone;
    }
    catch (const CLibraryError& e)
    {
        std::cerr << "patchhost: " << e.what() << "\n";
        return s_nLibrary;
    }
    catch (const std::exception& e)
    {
        std::cerr << "patchhost: " << e.what() << "\n";
        return s_nFailed;
    }
}

} // namespace

int main(int argc, char** argv)
{
    COptions options;
    CLI::App app("Loads the patch adapter library and drives it as the agent would.", "patchhost");
    Describe(app, options);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& e) // help and version
    {
        return app.exit(e);
    }
    catch (const CLI::ParseError& e)
    {
        app.exit(e);
        return s_nUsage;
    }
    return Run(options);
}
