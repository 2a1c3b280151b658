#include "PatchHost/ProcessCounts.h"

#include "Platform/Control.h"

#include <filesystem>
#include <iterator>

CProcessCounts CountProcess()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    const auto nThreads = std::distance(begin(tasks), end(tasks));
    return { static_cast<unsigned>(nThreads), OvPlatform::OpenHandles() };
}
