#include "PatchHost/State.h"

#include "OvPlatform.h"
#include "PatchHost/Options.h"
#include "PatchHost/Output.h"
#include "PatchHost/PolicyRevision.h"
#include "PatchHost/Text.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

// A store of this program's own is a key of the user's hive that stands in for HKEY_LOCAL_MACHINE in this process
// alone; what is kept of it is a file.

namespace
{

std::wstring StandInPath()
{
    return L"Software\\patchhost\\" + std::to_wstring(::GetCurrentProcessId());
}

void StandIn()
{
    ::RegDeleteTreeW(HKEY_CURRENT_USER, StandInPath().c_str()); // of a process of this number that was ended
    HKEY hKey = nullptr;
    LONG lResult = ::RegCreateKeyExW(HKEY_CURRENT_USER, StandInPath().c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                     KEY_ALL_ACCESS, nullptr, &hKey, nullptr);
    if (lResult == ERROR_SUCCESS)
        lResult = ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, hKey);
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        throw std::runtime_error("the machine's registry cannot be kept out: error " + std::to_string(lResult));
}

std::filesystem::path FolderOrDefault(const std::string& folder)
{
    if (!folder.empty())
        return std::filesystem::u8path(folder);
    const wchar_t* const szLocal = ::_wgetenv(L"LOCALAPPDATA");
    return std::filesystem::path(szLocal == nullptr ? L"." : szLocal) / L"patchhost";
}

/// What becomes the file once it is written: whoever ends the process in between leaves the old one.
std::filesystem::path NewFile(const std::string& file)
{
    return std::filesystem::u8path(file + ".new");
}

/// Keeps the recorded revision in a file, unless it is the one that is kept.
void Keep(const std::string& file, const std::optional<std::string>& kept)
{
    const std::optional<std::string> revision = ReadPolicyRevision();
    if (!revision || revision == kept)
        return;
    std::ofstream stream(NewFile(file), std::ios::binary);
    stream << *revision;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + file + ".new");
    std::filesystem::rename(NewFile(file), std::filesystem::u8path(file));
}

} // namespace

CStatePlace::CStatePlace(StateKind kind, const std::string& folder) : m_kind(kind)
{
    m_description = "HKLM\\SOFTWARE\\Trevok\\Trevok Patch Agent, PolicyRevId";
    if (m_kind == StateKind::Machine && !folder.empty())
        throw CCommandError(ExitUsage, "--state-dir does not go with --service installed on Windows: the revision "
                                       "is then in the machine's registry");
    if (m_kind == StateKind::Machine)
        return;
    StandIn();
    m_description = "nowhere";
    if (m_kind == StateKind::Throwaway)
        return;
    const std::filesystem::path path = std::filesystem::absolute(FolderOrDefault(folder)).make_preferred();
    std::filesystem::create_directories(path);
    m_file = (path / "revision.txt").u8string();
    m_description = m_file;
    std::ifstream stream(path / "revision.txt", std::ios::binary);
    if (stream)
        WritePolicyRevision({ std::istreambuf_iterator<char>(stream), {} });
    m_kept = ReadPolicyRevision();
}

CStatePlace::~CStatePlace()
{
    if (m_kind == StateKind::Machine)
        return;
    try
    {
        if (!m_file.empty())
            Keep(m_file, m_kept);
    }
    catch (const std::exception& e)
    {
        Note(std::string("the recorded revision is not kept: ") + e.what());
    }
    ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, StandInPath().c_str());
}
