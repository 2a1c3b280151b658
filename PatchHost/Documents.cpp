#include "PatchHost/Documents.h"

#include "PatchHost/Output.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace
{

std::string ReadAll(std::istream& stream)
{
    return { std::istreambuf_iterator<char>(stream), {} };
}

} // namespace

std::string ReadDocument(const std::string& file, ExitCode unreadable)
{
    if (file == "-")
        return ReadAll(std::cin);
    const std::filesystem::path path = std::filesystem::u8path(file);
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path))
        throw CCommandError(unreadable, "cannot read " + file);
    const std::string document = ReadAll(stream);
    if (document.find('\0') != std::string::npos)
        Note(file + " holds a NUL character: the library sees no more than what stands before it");
    return document;
}
