#include "PatchHost/AdapterLibrary.h"

#include "PatchHost/Console.h"
#include "PatchHost/Text.h"

namespace
{

/// The folder of the running program, with its separator.
std::wstring ProgramFolder()
{
    wchar_t buffer[1024] = {};
    const DWORD nLength = ::GetModuleFileNameW(nullptr, buffer, 1024);
    const std::wstring path(buffer, nLength);
    const size_t nEnd = path.find_last_of(L"\\/");
    return nEnd == std::wstring::npos ? std::wstring() : path.substr(0, nEnd + 1);
}

std::wstring FullPath(const std::string& path)
{
    const std::wstring wide = Utf8ToWide(path);
    return wide.find_first_of(L"\\/") == std::wstring::npos ? ProgramFolder() + wide : wide;
}

std::string VersionText(uint32_t nMajor, uint32_t nMinor)
{
    return std::to_string(nMajor) + "." + std::to_string(nMinor);
}

std::string VersionSentence(uint32_t nMajor, uint32_t nMinor)
{
    return " has interface version " + VersionText(nMajor, nMinor) + ", this host is made for " +
           VersionText(PATCHADAPTER_INTERFACE_MAJOR, PATCHADAPTER_INTERFACE_MINOR);
}

} // namespace

CAdapterLibrary::CAdapterLibrary(const std::string& path) : m_path(UserPath(FullPath(path)))
{
    m_hModule = ::LoadLibraryW(Utf8ToWide(m_path).c_str());
    if (m_hModule == nullptr)
        throw CLibraryError("cannot load " + m_path + ": " + LoadFailure(m_path, ::GetLastError()));
    try
    {
        m_pGetFactory = Find<GetAdapterFactory1_0Function>(PATCHADAPTER_GET_FACTORY_NAME);
        CheckVersion();
    }
    catch (...)
    {
        ::FreeLibrary(m_hModule);
        throw;
    }
}

CAdapterLibrary::~CAdapterLibrary()
{
    ::FreeLibrary(m_hModule);
}

template <class Function>
Function CAdapterLibrary::Find(const char* name) const
{
    // Through void*: the platform's own function type says nothing of the arguments.
    const auto address = reinterpret_cast<void*>(::GetProcAddress(m_hModule, name));
    if (address == nullptr)
        throw CLibraryError(m_path + " does not export " + name);
    return reinterpret_cast<Function>(address);
}

void CAdapterLibrary::CheckVersion()
{
    Find<GetAdapterVersionFunction>(PATCHADAPTER_GET_VERSION_NAME)(&m_nMajor, &m_nMinor);
    if (m_nMajor != PATCHADAPTER_INTERFACE_MAJOR)
        throw CLibraryError(m_path + VersionSentence(m_nMajor, m_nMinor));
}

std::string CAdapterLibrary::GetRemark() const
{
    return m_nMinor == PATCHADAPTER_INTERFACE_MINOR ? "" : m_path + VersionSentence(m_nMajor, m_nMinor);
}
