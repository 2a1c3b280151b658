#include "LoadedLibrary.h"

#include "ImportTable.h"

#include <stdexcept>

namespace
{

void WINAPI FastSleep(DWORD dwMilliseconds)
{
    ::Sleep(dwMilliseconds / 1000);
}

} // namespace

CFastPauses::CFastPauses(const CLoadedLibrary& library)
{
    // The table goes when the library is unloaded: nothing has to be put back.
    if (PatchImport(library.GetModule(), "Sleep", reinterpret_cast<void*>(&FastSleep)) == nullptr)
        throw std::runtime_error("the library does not import Sleep");
}

CFastPauses::~CFastPauses() = default;
