#include "State.h"

#include <stdexcept>

void UseStateFolder(const std::string& folder)
{
    if (!folder.empty())
        throw std::runtime_error("--state-dir is not available on Windows: the record is in the machine's registry");
}
