// Hands each file that is named, or lies in a folder that is named, to a fuzz target: where there is no fuzzer.
#include "Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

void Replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    Demand(file.is_open(), path.c_str());
    const std::string bytes{ std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>() };
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv)
{
    unsigned nFiles = 0;
    for (int i = 1; i < argc; ++i)
        if (!std::filesystem::is_directory(argv[i]))
            Replay(argv[i]), ++nFiles;
        else
            for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    Replay(entry.path()), ++nFiles;
    std::printf("%u inputs\n", nFiles);
    return nFiles == 0 ? 1 : 0;
}
