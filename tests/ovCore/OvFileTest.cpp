#include "ovCore/OvFile.h"

#include "ovCore/OvSystem.h"
#include "Raised.h"
#include "TestFile.h"

#include <gtest/gtest.h>

TEST(OvFile, TakesPathsApart)
{
    const struct
    {
        const wchar_t* szName;
        const wchar_t* szDrive; // "-": not a drive path
        const wchar_t* szUnc;   // root, server and share; "-": not a UNC path
        const wchar_t* szLong;
        const wchar_t* szParts; // folder, base name, extension and file name
    } rows[] = {
        { L"C:\\dir\\name.tar.gz", L"C:\\", L"-", L"\\\\?\\C:\\dir\\name.tar.gz", L"C:\\dir|name.tar|gz|name.tar.gz" },
        { L"?:\\", L"?:\\", L"-", L"\\\\?\\?:\\", L"?:|||" }, // the letter is not checked
        { L"C:", L"-", L"-", L"C:", L"|C:||C:" },
        { L"C:/a", L"-", L"-", L"C:/a", L"|C:/a||C:/a" },
        { L":\\a", L"-", L"-", L":\\a", L":|a||a" },
        { L"\\\\srv\\share\\f.g\\h", L"-", L"\\\\srv\\share|srv|share", L"\\\\?\\UNC\\srv\\share\\f.g\\h",
          L"\\\\srv\\share\\f.g|h||h" },
        { L"\\\\srv\\share", L"-", L"\\\\srv\\share|srv|share", L"\\\\?\\UNC\\srv\\share", L"\\\\srv|share||share" },
        { L"\\\\srv\\", L"-", L"\\\\srv\\|srv|", L"\\\\?\\UNC\\srv\\", L"\\\\srv|||" },
        { L"\\a", L"-", L"-", L"\\a", L"|a||a" },
        { L".name", L"-", L"-", L".name", L"||name|.name" },
        { L"", L"-", L"-", L"", L"|||" },
    };
    for (const auto& row : rows)
    {
        std::wstring a, b, c, d;
        EXPECT_EQ(row.szDrive, COvFile::HasDrivePath(row.szName, &a) ? a : L"-") << row.szName;
        EXPECT_EQ(row.szUnc, COvFile::HasUncPath(row.szName, &a, &b, &c) ? a + L"|" + b + L"|" + c : L"-");
        EXPECT_EQ(row.szLong, COvFile::MakeUnicodeName(row.szName));
        COvFile::GetFileNameParts(row.szName, &a, &b, &c, &d);
        EXPECT_EQ(row.szParts, a + L"|" + b + L"|" + c + L"|" + d);
    }
    COvFile::GetFileNameParts(L"a", nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(L"0x80004005 OvFile | Info Msg: UNC path has server name but no share name | tzFileNm: \\\\srv",
              Raised([] { COvFile::MakeUnicodeName(L"\\\\srv"); }));
}

TEST(OvFile, AFileExistsWhenItCanBeRead)
{
    const CTestFile file("OvFileTest.txt");
    EXPECT_TRUE(COvFile::FileExists(file.Name(), true, L"the file"));
    EXPECT_FALSE(COvFile::FileExists(file.Folder()));
    EXPECT_FALSE(COvFile::FileExists(file.Name() + L"x"));
    const HANDLE hFile =
        ::CreateFileW(file.Name().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, hFile);
    EXPECT_FALSE(COvFile::FileExists(file.Name())); // open for that handle alone
    ::CloseHandle(hFile);
    const std::wstring strStart = L"0x80004005 OvFile | Info Msg: Specified file does not exist | tzFileNm: ";
    EXPECT_EQ(strStart + L"C:\\no\\such | tzDesc: a policy | tzNewFileNm: \\\\?\\C:\\no\\such",
              Raised([] { COvFile::FileExists(L"C:\\no\\such", true, L"a policy"); }));
    EXPECT_EQ(strStart + L" | tzDesc: <null>", Raised([] { COvFile::FileExists(L"", true, nullptr); }));
}

TEST(OvFile, NamesTheFilesOfModulesAndTheCurrentDirectory)
{
    const std::wstring strExecutable = COvFile::GetModuleFileNameW(nullptr);
    std::wstring strName;
    COvFile::GetFileNameParts(strExecutable, nullptr, &strName, nullptr, nullptr);
    EXPECT_EQ(L"OvFileTest", strName);
    EXPECT_TRUE(COvFile::FileExists(strExecutable));
    EXPECT_EQ(strExecutable, COvFile::GetModuleFileNameW(std::wstring()));
    EXPECT_EQ(L"", COvFile::GetModuleFileNameW(L"NotLoaded.dll"));
    EXPECT_NE(L"", COvFile::GetModuleFileNameW(L"kernel32.dll"));
    int nNoModule = 0;
    EXPECT_EQ(L"0x80004005 OvFile | Method: GetModuleFileName() | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_MOD_NOT_FOUND),
              Raised([&] { COvFile::GetModuleFileNameW(reinterpret_cast<HMODULE>(&nNoModule)); }));
    const std::wstring strDirectory = COvSystem::GetCurrentDirectoryW();
    EXPECT_EQ(std::filesystem::current_path().filename().wstring(), strDirectory.substr(strDirectory.rfind(L'\\') + 1));
}
