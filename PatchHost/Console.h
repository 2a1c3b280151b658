// The program's surroundings: its arguments, its standard streams and what its process holds.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The arguments without the program's name, in UTF-8.
std::vector<std::string> Arguments(int argc, char** argv);

/// A path from the platform as the user of this system writes it, in UTF-8.
std::string UserPath(const std::wstring& path);

enum class Stream
{
    Output,
    Error
};

bool IsTerminal(Stream stream);

/// Whether the stream is a terminal that understands colours; makes it so where it has to be told.
bool HasColours(Stream stream);

/// The columns of the terminal that standard output is, or as many as the variable COLUMNS says; nothing for neither.
std::optional<unsigned> Columns();

/// Makes an empty file that only its owner may read, or makes one so that is there; a system that has no such rights
/// leaves it to the folder. @return false when that cannot be done.
bool MakePrivate(const std::filesystem::path& file);

/// Why the library of this path could not be loaded, in the system's words. @param dwError  of the attempt.
std::string LoadFailure(const std::string& path, unsigned long dwError);

/// Standard input and output carry documents byte by byte from now on, and a reader that goes away is an error of
/// writing.
void PrepareStreams();

/// Makes a code page the system's ANSI code page for this process.
/// @return false where that cannot be done and it is not the system's own.
bool UseAnsiCodePage(unsigned nCodePage);

/// What this process holds at the moment.
struct CProcessCounts
{
    unsigned nThreads = 0;
    unsigned nHandles = 0; ///< 0 where the system does not count them
};

CProcessCounts CountProcess();
