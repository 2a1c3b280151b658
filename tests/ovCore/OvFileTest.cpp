#include "ovCore/OvFile.h"

#include "ovCore/OvSystem.h"
#include "Raised.h"
#include "TestFile.h"

#include <gtest/gtest.h>

namespace
{

const wchar_t s_szNoShare[] = L"0x80004005 OvFile | Info Msg: UNC path has server name but no share name | tzFileNm: ";

} // namespace

TEST(OvFile, TellsDrivePathsFromOthers)
{
    const struct
    {
        const wchar_t* szName;
        const wchar_t* szDrive; ///< null: not a drive path
    } rows[] = {
        { L"C:\\a\\b.txt", L"C:\\" },
        { L"z:\\", L"z:\\" },
        { L"?:\\a", L"?:\\" }, // the letter is not checked
        { L"C:", nullptr },
        { L"C:/a", nullptr },
        { L":\\a", nullptr },
        { L"", nullptr },
        { L"C", nullptr },
        { L"\\\\srv\\share", nullptr },
        { L"a.txt", nullptr },
    };
    for (const auto& row : rows)
    {
        std::wstring strDrive = L"unchanged";
        EXPECT_EQ(row.szDrive != nullptr, COvFile::HasDrivePath(row.szName, &strDrive)) << row.szName;
        EXPECT_EQ(row.szDrive != nullptr ? row.szDrive : L"unchanged", strDrive);
        EXPECT_EQ(row.szDrive != nullptr, COvFile::HasDrivePath(row.szName, nullptr)) << row.szName;
    }
}

TEST(OvFile, TakesUncPathsApart)
{
    const struct
    {
        const wchar_t* szName;
        const wchar_t* szRoot; ///< null: not a UNC path
        const wchar_t* szServer;
        const wchar_t* szShare;
    } rows[] = {
        { L"\\\\srv\\share", L"\\\\srv\\share", L"srv", L"share" },
        { L"\\\\srv\\share\\f\\g", L"\\\\srv\\share", L"srv", L"share" },
        { L"\\\\srv\\", L"\\\\srv\\", L"srv", L"" },
        { L"\\\\\\share", L"\\\\\\share", L"", L"share" },
        { L"\\srv\\share", nullptr, nullptr, nullptr },
        { L"C:\\a", nullptr, nullptr, nullptr },
        { L"\\", nullptr, nullptr, nullptr },
        { L"", nullptr, nullptr, nullptr },
    };
    for (const auto& row : rows)
    {
        std::wstring strRoot, strServer, strShare;
        EXPECT_EQ(row.szRoot != nullptr, COvFile::HasUncPath(row.szName, &strRoot, &strServer, &strShare))
            << row.szName;
        EXPECT_EQ(row.szRoot != nullptr, COvFile::HasUncPath(row.szName, nullptr, nullptr, nullptr)) << row.szName;
        EXPECT_EQ(row.szRoot != nullptr ? row.szRoot : L"", strRoot);
        EXPECT_EQ(row.szServer != nullptr ? row.szServer : L"", strServer);
        EXPECT_EQ(row.szShare != nullptr ? row.szShare : L"", strShare);
    }
    for (const std::wstring strName : { L"\\\\srv", L"\\\\" })
    {
        EXPECT_EQ(s_szNoShare + strName, Raised([&] { COvFile::HasUncPath(strName, nullptr, nullptr, nullptr); }));
        EXPECT_EQ(s_szNoShare + strName, Raised([&] { COvFile::MakeUnicodeName(strName); }));
    }
}

TEST(OvFile, MakesLongNames)
{
    const struct
    {
        const wchar_t* szName;
        const wchar_t* szLong;
    } rows[] = {
        { L"C:\\a\\b.txt", L"\\\\?\\C:\\a\\b.txt" },
        { L"\\\\srv\\share\\f", L"\\\\?\\UNC\\srv\\share\\f" },
        { L"a.txt", L"a.txt" },
        { L"\\a", L"\\a" },
        { L"", L"" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.szLong, COvFile::MakeUnicodeName(row.szName));
}

TEST(OvFile, SplitsNames)
{
    const struct
    {
        const wchar_t* szPath;
        const wchar_t* szFolder;
        const wchar_t* szBase;
        const wchar_t* szExtension;
        const wchar_t* szFile;
    } rows[] = {
        { L"C:\\dir\\name.tar.gz", L"C:\\dir", L"name.tar", L"gz", L"name.tar.gz" },
        { L"C:\\d.ir\\name", L"C:\\d.ir", L"name", L"", L"name" },
        { L"name.", L"", L"name", L"", L"name." },
        { L".name", L"", L"", L"name", L".name" },
        { L"\\name", L"", L"name", L"", L"name" },
        { L"dir\\", L"dir", L"", L"", L"" },
        { L"", L"", L"", L"", L"" },
    };
    for (const auto& row : rows)
    {
        std::wstring strFolder, strBase, strExtension, strFile;
        COvFile::GetFileNameParts(row.szPath, &strFolder, &strBase, &strExtension, &strFile);
        EXPECT_EQ(row.szFolder, strFolder);
        EXPECT_EQ(row.szBase, strBase);
        EXPECT_EQ(row.szExtension, strExtension);
        EXPECT_EQ(row.szFile, strFile);
        COvFile::GetFileNameParts(row.szPath, nullptr, nullptr, nullptr, nullptr);
    }
}

TEST(OvFile, AFileExistsWhenItCanBeRead)
{
    const CTestFile file("OvFileTest.txt");
    EXPECT_TRUE(COvFile::FileExists(file.Name()));
    EXPECT_TRUE(COvFile::FileExists(file.Name(), true, L"the file"));
    EXPECT_FALSE(COvFile::FileExists(file.Folder()));
    EXPECT_FALSE(COvFile::FileExists(file.Name() + L"x"));
    EXPECT_FALSE(COvFile::FileExists(L""));
    const HANDLE hFile =
        ::CreateFileW(file.Name().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, hFile);
    EXPECT_FALSE(COvFile::FileExists(file.Name())); // open for that handle alone
    ::CloseHandle(hFile);
    EXPECT_TRUE(COvFile::FileExists(file.Name()));
}

TEST(OvFile, AMissingFileIsToldWithItsLongName)
{
    const std::wstring strStart = L"0x80004005 OvFile | Info Msg: Specified file does not exist | tzFileNm: ";
    EXPECT_EQ(strStart + L"C:\\no\\such | tzDesc: a policy | tzNewFileNm: \\\\?\\C:\\no\\such",
              Raised([] { COvFile::FileExists(L"C:\\no\\such", true, L"a policy"); }));
    EXPECT_EQ(strStart + L" | tzDesc: <null>", Raised([] { COvFile::FileExists(L"", true, nullptr); }));
    EXPECT_EQ(s_szNoShare + std::wstring(L"\\\\srv"), Raised([] { COvFile::FileExists(L"\\\\srv"); }));
}

TEST(OvFile, NamesTheFilesOfModules)
{
    const std::wstring strExecutable = COvFile::GetModuleFileNameW(nullptr);
    std::wstring strName;
    COvFile::GetFileNameParts(strExecutable, nullptr, &strName, nullptr, nullptr);
    EXPECT_EQ(L"OvFileTest", strName);
    EXPECT_TRUE(COvFile::FileExists(strExecutable));
    EXPECT_EQ(strExecutable, COvFile::GetModuleFileNameW(std::wstring()));
    EXPECT_EQ(strExecutable, COvFile::GetModuleFileNameW(::GetModuleHandleW(nullptr)));
    EXPECT_EQ(L"", COvFile::GetModuleFileNameW(L"NotLoaded.dll"));
    EXPECT_NE(L"", COvFile::GetModuleFileNameW(L"kernel32.dll"));
    int nNoModule = 0;
    EXPECT_EQ(L"0x80004005 OvFile | Method: GetModuleFileName() | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_MOD_NOT_FOUND),
              Raised([&] { COvFile::GetModuleFileNameW(reinterpret_cast<HMODULE>(&nNoModule)); }));
}

TEST(OvSystem, TellsTheCurrentDirectory)
{
    const std::wstring strDirectory = COvSystem::GetCurrentDirectoryW();
    EXPECT_EQ(std::filesystem::current_path().filename().wstring(), strDirectory.substr(strDirectory.rfind(L'\\') + 1));
}
