#include "PatchHost/Documents.h"

#include "PatchAdapterApi.h"
#include "PatchHost/Output.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

namespace
{

constexpr size_t s_nPiece = 65536;

/// Reads to the end, or until there is more than the limit: an input may have no end.
std::string ReadAll(std::istream& stream, const std::string& file, size_t nLimit, ExitCode failed)
{
    std::string text;
    std::string piece(s_nPiece, '\0');
    do
    {
        stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        text.append(piece, 0, static_cast<size_t>(stream.gcount()));
        if (text.size() > nLimit)
            throw CCommandError(failed, file + " holds more than " + std::to_string(nLimit) + " bytes, the most that " +
                                            "is read");
    } while (stream);
    return text;
}

std::string Cause(const std::filesystem::path& path)
{
    const int nError = errno; // of the attempt to open it
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return "it is a folder";
    return std::generic_category().message(nError == 0 ? ENOENT : nError);
}

} // namespace

std::string ReadFile(const std::string& file, size_t nLimit, ExitCode failed)
{
    if (file == "-")
        return ReadAll(std::cin, "standard input", nLimit, failed);
    const std::filesystem::path path = std::filesystem::u8path(file);
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    std::error_code ignored;
    if (!stream || std::filesystem::is_directory(path, ignored))
        throw CCommandError(failed, "cannot read " + file + ": " + Cause(path));
    return ReadAll(stream, file, nLimit, failed);
}

std::string ReadDocument(const std::string& file)
{
    std::string document = ReadFile(file, PATCHADAPTER_MAX_POLICY_BYTES, ExitFailed);
    if (document.find('\0') != std::string::npos)
        Note(file + " holds a NUL character: the library sees no more than what stands before it");
    return document;
}
