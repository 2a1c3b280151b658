// The registry's file: what outlives a process, and what happens when it is damaged or shared.
#include "OvPlatform.h"
#include "Platform/Control.h"

#include "RegistryValues.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{

CBytes ReadBytes(const wchar_t* szName)
{
    CBytes data(100000);
    EXPECT_EQ(ERROR_SUCCESS, Read(szName, data)) << testing::PrintToString(szName);
    return data;
}

/// A registry in a file of a folder that goes with the test.
class RegistryFile : public testing::Test
{
protected:
    RegistryFile()
    {
        std::string name = (std::filesystem::temp_directory_path() / "ovregistry-XXXXXX").string();
        EXPECT_TRUE(mkdtemp(name.data()));
        m_folder = name;
        Use();
    }

    ~RegistryFile() override
    {
        OvPlatform::SetRegistryInMemory();
        std::filesystem::remove_all(m_folder);
    }

    std::string File() const { return (m_folder / "registry.db").string(); }

    /// Opens the file anew, as another process would.
    void Use() const { OvPlatform::SetRegistryFile(File().c_str()); }

    /// Runs the work in a child process, which has the file to itself until it opens it.
    pid_t Spawn(const std::function<void()>& work) const
    {
        OvPlatform::SetRegistryInMemory(); // no connection may be open across a fork
        const pid_t child = fork();
        if (child != 0)
            return child;
        Use();
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }

    std::filesystem::path m_folder;
};

int ExitCodeOf(pid_t child)
{
    int nStatus = 0;
    EXPECT_EQ(child, waitpid(child, &nStatus, 0));
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -WTERMSIG(nStatus);
}

} // namespace

TEST_F(RegistryFile, OutlivesTheProcess)
{
    EXPECT_EQ(0, ExitCodeOf(Spawn([] {
                  EXPECT_EQ(ERROR_SUCCESS, Write(L"Name", { 1, 2, 3 }));
                  EXPECT_EQ(ERROR_SUCCESS, Write(L"v", { 1 }, L"SOFTWARE\\OvVolatile", REG_OPTION_VOLATILE));
              })));
    Use();
    EXPECT_EQ((CBytes{ 1, 2, 3 }), ReadBytes(L"NAME"));
    CBytes none;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(L"v", none, L"SOFTWARE\\OvVolatile"));
}

TEST_F(RegistryFile, ServesSeveralProcessesAndThreads)
{
    constexpr int Writers = 3;
    constexpr BYTE Values = 10;
    const auto writeAll = [](int nWriter) {
        const std::wstring name = L"v" + std::to_wstring(nWriter);
        const std::wstring key = std::wstring(s_szKey) + L"\\" + name;
        for (BYTE n = 1; n <= Values; ++n)
        {
            EXPECT_EQ(ERROR_SUCCESS, Write(name.c_str(), { n }));
            EXPECT_EQ(ERROR_SUCCESS, Write(L"last", { n }, key.c_str()));
            EXPECT_EQ(CBytes{ n }, ReadBytes(name.c_str()));
        }
    };
    std::vector<pid_t> children;
    for (int i = 0; i < Writers; ++i)
        children.push_back(Spawn([&] { writeAll(i); }));
    Use();
    std::vector<std::thread> threads;
    for (int i = 0; i < Writers; ++i)
        threads.emplace_back(writeAll, Writers + i);
    for (std::thread& thread : threads)
        thread.join();
    for (const pid_t child : children)
        EXPECT_EQ(0, ExitCodeOf(child));
    for (int i = 0; i < 2 * Writers; ++i)
        EXPECT_EQ(CBytes{ Values }, ReadBytes((L"v" + std::to_wstring(i)).c_str()));
}

TEST_F(RegistryFile, TellsWhenItCannotBeUsed)
{
    ASSERT_EQ(ERROR_SUCCESS, Write(L"v", CBytes(20000, 1)));
    OvPlatform::SetRegistryInMemory();
    const auto damage = [this](std::streamoff nAt, size_t nLength) {
        std::fstream store(File(), std::ios::in | std::ios::out | std::ios::binary);
        store.seekp(nAt);
        store << std::string(nLength, '\x5A');
    };
    const std::string folder = m_folder.string();
    const std::tuple<std::string, std::function<void()>, LSTATUS, LSTATUS> rows[] = {
        { folder, [] {}, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED },
        { "/proc/none/registry.db", [] {}, ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED },
        { folder + "/other.db",
          [&] { std::ofstream(folder + "/other.db") << "no database, but a text of some length"; },
          ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_CORRUPT },
        { File(), [&] { damage(4096, 100000); }, ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_CORRUPT },
        { File(), [&] { std::filesystem::resize_file(File(), 5000); }, ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_CORRUPT },
        { File(), [&] { damage(0, 100); }, ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_CORRUPT },
    };
    for (const auto& [file, prepare, lRead, lWrite] : rows)
    {
        prepare();
        OvPlatform::SetRegistryFile(file.c_str());
        CBytes data;
        EXPECT_EQ(lRead, Read(L"v", data)) << file;
        EXPECT_EQ(lWrite, Write(L"v", { 1 })) << file;
        OvPlatform::SetRegistryInMemory();
    }
}

TEST_F(RegistryFile, IsMadeByTheFirstWriteOnlyAndForItsOwnerAlone)
{
    const mode_t wasMask = umask(0);
    OvPlatform::SetRegistryFile((m_folder / "a" / "b" / "registry.db").c_str());
    CBytes data;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(L"v", data));
    EXPECT_TRUE(std::filesystem::is_empty(m_folder));
    EXPECT_EQ(ERROR_SUCCESS, Write(L"v", { 1 }));
    umask(wasMask);
    const std::tuple<const char*, mode_t> rows[] = { { "a", 0700 }, { "a/b", 0700 }, { "a/b/registry.db", 0600 } };
    for (const auto& [szName, nMode] : rows)
    {
        struct stat status = {};
        EXPECT_EQ(0, stat((m_folder / szName).c_str(), &status));
        EXPECT_EQ(nMode, status.st_mode & 0777) << szName;
    }
}

TEST_F(RegistryFile, AllowsNoChangeWhereItCannotBeWritten)
{
    ASSERT_EQ(ERROR_SUCCESS, Write(L"v", { 1 }));
    const std::tuple<std::string, mode_t, mode_t> rows[] = { { "file", 0444, 0777 }, { "folder", 0666, 0555 } };
    for (const auto& [what, nFileMode, nFolderMode] : rows)
    {
        ASSERT_EQ(0, chmod(File().c_str(), nFileMode));
        ASSERT_EQ(0, chmod(m_folder.c_str(), nFolderMode));
        EXPECT_EQ(0, ExitCodeOf(Spawn([&, &szWhat = what] {
                      constexpr uid_t nNobody = 65534;
                      EXPECT_TRUE(geteuid() != 0 || seteuid(nNobody) == 0);
                      const std::tuple<REGSAM, LSTATUS> rights[] = { { KEY_READ, ERROR_SUCCESS },
                                                                     { KEY_WRITE, ERROR_ACCESS_DENIED },
                                                                     { KEY_ALL_ACCESS, ERROR_ACCESS_DENIED } };
                      for (const auto& [samDesired, lResult] : rights)
                      {
                          HKEY hKey = nullptr;
                          EXPECT_EQ(lResult, RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, samDesired, &hKey))
                              << szWhat;
                          EXPECT_EQ(lResult, RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, nullptr, 0, samDesired,
                                                             nullptr, &hKey, nullptr))
                              << szWhat;
                      }
                      CBytes data(10);
                      EXPECT_EQ(ERROR_SUCCESS, Read(L"v", data)) << szWhat;
                  })))
            << what;
    }
    ASSERT_EQ(0, chmod(m_folder.c_str(), 0700));
}

TEST_F(RegistryFile, LiesWhereTheEnvironmentSays)
{
    // szValue: below the folder
    const std::tuple<const char*, const char*, const char*> rows[] = {
        { "HOME", "/home", "home/.local/state/pyx-patch-adapter/registry.db" },
        { "XDG_STATE_HOME", "/state", "state/pyx-patch-adapter/registry.db" },
        { "OVPLATFORM_REGISTRY", "/own.db", "own.db" },
    };
    for (const char* szVariable : { "XDG_STATE_HOME", "OVPLATFORM_REGISTRY" })
        unsetenv(szVariable);
    for (const auto& [szVariable, szValue, szFile] : rows)
    {
        setenv(szVariable, (m_folder.string() + szValue).c_str(), 1);
        OvPlatform::SetRegistryFile(nullptr);
        EXPECT_EQ(ERROR_SUCCESS, Write(L"v", { 1 })) << szVariable;
        EXPECT_TRUE(std::filesystem::exists(m_folder / szFile)) << szVariable;
    }
    setenv("OVPLATFORM_REGISTRY", ":memory:", 1);
    OvPlatform::SetRegistryFile(nullptr);
    CBytes data;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(L"v", data));
}

TEST_F(RegistryFile, OpenKeysKeepTheirRegistry)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr));
    OvPlatform::SetRegistryInMemory();
    const BYTE value = 5;
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(hKey, L"v", 0, REG_BINARY, &value, 1));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(hKey));
    CBytes data;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(L"v", data));
    Use();
    EXPECT_EQ(CBytes{ 5 }, ReadBytes(L"v"));
}

TEST_F(RegistryFile, HasThePredefinedKeysFromTheStart)
{
    const std::tuple<HKEY, std::wstring, REGSAM, LSTATUS> rows[] = {
        { HKEY_LOCAL_MACHINE, L"SOFTWARE", KEY_READ, ERROR_SUCCESS },
        { HKEY_LOCAL_MACHINE, L"SOFTWARE", KEY_READ | KEY_WOW64_32KEY, ERROR_SUCCESS },
        { HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes", KEY_READ, ERROR_SUCCESS },
        { HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet", KEY_READ, ERROR_SUCCESS },
        { HKEY_USERS, L".DEFAULT", KEY_READ, ERROR_SUCCESS },
        { HKEY_USERS, L"S-1-22-1-" + std::to_wstring(geteuid()), KEY_READ, ERROR_SUCCESS },
        { HKEY_DYN_DATA, L"x", KEY_READ, ERROR_INVALID_HANDLE },
        { HKEY_LOCAL_MACHINE, L"SOFTWARE", KEY_READ | KEY_WOW64_32KEY | KEY_WOW64_64KEY, ERROR_INVALID_PARAMETER },
    };
    for (const auto& [hRoot, subKey, samDesired, lResult] : rows)
    {
        HKEY hKey = nullptr;
        EXPECT_EQ(lResult, RegOpenKeyExW(hRoot, subKey.c_str(), 0, samDesired, &hKey))
            << testing::PrintToString(subKey);
        if (hKey)
            RegCloseKey(hKey);
    }
    const std::tuple<HKEY, HKEY, std::wstring> aliases[] = {
        { HKEY_CURRENT_USER, HKEY_USERS, L"S-1-22-1-" + std::to_wstring(geteuid()) + L"\\" },
        { HKEY_CLASSES_ROOT, HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\" },
        { HKEY_CURRENT_CONFIG, HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\" },
    };
    for (const auto& [hRoot, hSame, prefix] : aliases)
    {
        HKEY hKey = nullptr;
        EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(hRoot, L"OvAlias", 0, nullptr, 0, KEY_READ, nullptr, &hKey, nullptr));
        RegCloseKey(hKey);
        EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExW(hSame, (prefix + L"OvAlias").c_str(), 0, KEY_READ, &hKey));
        RegCloseKey(hKey);
    }
}
