// A file that exists while a test runs.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

/// A small text file in a temporary folder.
class CTestFile
{
public:
    explicit CTestFile(const char* szName) : m_path(std::filesystem::temp_directory_path() / szName)
    {
        std::ofstream(m_path) << "text";
    }
    ~CTestFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CTestFile(const CTestFile&) = delete;
    CTestFile& operator=(const CTestFile&) = delete;

    std::wstring Name() const { return m_path.wstring(); }
    std::wstring Folder() const { return m_path.parent_path().wstring(); }

private:
    std::filesystem::path m_path;
};
