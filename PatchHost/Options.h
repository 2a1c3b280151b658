// What the command line asks for, and what the program can end with.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// The program's exit codes. Errors of the command line and of a script have a code of their own.
enum ExitCode : int
{
    ExitDone = 0,
    ExitFailed = 1,
    ExitUsage = 2,
    ExitRefused = 3,       ///< the library refused the document
    ExitNoService = 4,     ///< the patch service is not available
    ExitLibrary = 5,       ///< the library cannot be loaded or has another interface version
    ExitInterrupted = 130, ///< Ctrl-C
};

/// Ends the command with an exit code and a sentence.
class CCommandError : public std::runtime_error
{
public:
    CCommandError(ExitCode code, const std::string& sentence) : std::runtime_error(sentence), m_code(code) {}
    ExitCode GetCode() const { return m_code; }

private:
    ExitCode m_code;
};

/// Which patch service the adapter meets.
enum class ServiceKind
{
    Simulated, ///< the simulated one, as the script says
    Installed, ///< the machine's own
    Down,      ///< none
    Isolated   ///< none that could be reached; not offered on the command line
};

/// When words are coloured.
enum class ColourChoice
{
    Auto, ///< on a terminal, unless NO_COLOR is set
    Always,
    Never
};

/// Texts are UTF-8.
struct COptions
{
    std::string command; ///< its name
    // Common
    std::string library; ///< a bare name is looked for beside the program
    ServiceKind service = ServiceKind::Simulated;
    std::string serviceScript;
    std::string stateFolder;
    unsigned nCodePage = 0;      ///< the ANSI code page; 0: the system's
    int nTraceLevel = -1;        ///< the last kind of trace line that is shown; -1: none
    unsigned nTimeoutMs = 60000; ///< for one call into the library
    bool bJson = false;
    ColourChoice colour = ColourChoice::Auto;
    bool bOrderlyStop = false; ///< stop the adapter before the program ends

    // Of the commands that take them
    std::vector<std::string> files; ///< "-" is standard input
    bool bRaw = false;
    bool bExplain = false;
    bool bStrict = false;          ///< a remark makes the exit code 3
    std::optional<unsigned> forMs; ///< watch: nothing for no end
    unsigned nLoads = 100;
};
