#include "LoadedLibrary.h"

#include <stdexcept>

namespace
{

template <class Function>
Function Find(HMODULE hModule, const char* szName)
{
    const auto address = reinterpret_cast<void*>(::GetProcAddress(hModule, szName));
    if (address == nullptr)
        throw std::runtime_error(std::string("not exported: ") + szName);
    return reinterpret_cast<Function>(address);
}

} // namespace

std::wstring LibraryPath()
{
    wchar_t buffer[1024] = {};
    const std::wstring program(buffer, ::GetModuleFileNameW(nullptr, buffer, 1024));
    const std::string name = OV_ADAPTER_LIBRARY;
    return program.substr(0, program.find_last_of(L"\\/") + 1) + std::wstring(name.begin(), name.end());
}

CLoadedLibrary::CLoadedLibrary() : m_hModule(::LoadLibraryW(LibraryPath().c_str()))
{
    if (m_hModule == nullptr)
        throw std::runtime_error("the library does not load, error " + std::to_string(::GetLastError()));
    m_pGetFactory = Find<GetAdapterFactory1_0Function>(m_hModule, PATCHADAPTER_GET_FACTORY_NAME);
    m_pGetVersion = Find<GetAdapterVersionFunction>(m_hModule, PATCHADAPTER_GET_VERSION_NAME);
}

CLoadedLibrary::~CLoadedLibrary()
{
    ::FreeLibrary(m_hModule);
}
