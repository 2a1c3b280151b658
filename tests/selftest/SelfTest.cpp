// Proves the library on the machine that it runs on: runs the test programs and the host tool beside it and reports on
// every row. selftest.cmd starts it.
#include "ChildProcess.h"
#include "OvPlatform.h"
#include "Report.h"
#include "TestOutput.h"
#include "Wine.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

namespace
{

const unsigned s_nMinutes = 20; // for one program

CRow Row(const std::string& name, bool bPassed, const std::string& detail)
{
    return { "selftest", name, bPassed ? "passed" : "failed", detail + "\n" };
}

/// A program of the list in data\programs.txt: its name, and in words what is to be known of it.
struct CProgram
{
    std::string name;
    std::set<std::string> words;
};

std::vector<CProgram> ReadPrograms()
{
    std::vector<CProgram> programs;
    std::ifstream list("data\\programs.txt");
    for (std::string line; std::getline(list, line);)
    {
        std::istringstream words(line);
        CProgram program;
        words >> program.name;
        for (std::string word; words >> word;)
            program.words.insert(word);
        programs.push_back(program);
    }
    return programs;
}

/// Why a program is not run; null when it is.
const char* WhyNotRun(const CProgram& program, bool bQuick, bool bServiceThere)
{
    if (bServiceThere && program.words.count("service") != 0)
        return "a patch service runs on this machine, and this program simulates one: stop the service\n";
    if (bQuick && program.words.count("long") != 0)
        return "left out by --quick\n";
    if (IsWine() && program.words.count("windows") != 0)
        return "a text of it damages the heap of Wine's parser\n";
    return nullptr;
}

std::wstring Wide(const std::string& name)
{
    return std::wstring(name.begin(), name.end());
}

std::string ExitCode(uint32_t nExitCode)
{
    char szText[40];
    std::snprintf(szText, sizeof(szText), "it ended with 0x%08X", static_cast<unsigned>(nExitCode));
    return nExitCode == CHILD_NOT_STARTED     ? "it did not start"
           : nExitCode == CHILD_TOOK_TOO_LONG ? "it took too long and was ended"
                                              : szText;
}

void Append(CRows& rows, const CRows& more)
{
    for (const CRow& row : more)
    {
        std::printf("%s  %s  %s\n", row.result.c_str(), row.program.c_str(), row.name.c_str());
        if (row.result != "passed")
            std::printf("%s", row.detail.c_str());
    }
    std::fflush(stdout);
    rows.insert(rows.end(), more.begin(), more.end());
}

CRows RunTests(const CProgram& program)
{
    const std::string output = "report\\" + program.name + ".txt";
    const uint32_t nExitCode = RunChild(L"bin\\" + Wide(program.name) + L".exe", L"", Wide(output), s_nMinutes);
    std::ifstream stream(output);
    CRows rows = ReadTestOutput(program.name, stream);
    if ((nExitCode != 0 && Verdict(rows) != "failed") || rows.empty())
        rows.push_back({ program.name, "the program", "failed", ExitCode(nExitCode) + "\n" });
    return rows;
}

/// A command of the host tool, which keeps out the machine's registry by itself.
CRow RunHost(const std::string& name, const wchar_t* szArguments)
{
    const std::string output = "report\\patchhost-" + name + ".txt";
    const uint32_t nExitCode = RunChild(L"bin\\patchhost.exe", szArguments, Wide(output), s_nMinutes);
    return { "patchhost", name, nExitCode == 0 ? "passed" : "failed", ExitCode(nExitCode) + ", see " + output + "\n" };
}

/// The library's version as it reports it from a copy in that folder.
CRow LoadFrom(const std::string& name, const std::wstring& wzFolder)
{
    wchar_t szHere[MAX_PATH] = {};
    ::GetCurrentDirectoryW(MAX_PATH, szHere);
    std::wstring wzPath = std::wstring(L"\\\\?\\") + szHere + L"\\report\\" + wzFolder;
    for (size_t n = wzPath.find(L"\\report\\") + 8; n != 0; n = wzPath.find(L'\\', n) + 1)
        ::CreateDirectoryW(wzPath.substr(0, wzPath.find(L'\\', n)).c_str(), nullptr);
    const std::wstring wzCopy = wzPath + L"\\PatchAdapter.dll";
    if (!::CopyFileW(L"bin\\PatchAdapter.dll", wzCopy.c_str(), FALSE))
        return Row(name, false, "the library cannot be copied, error " + std::to_string(::GetLastError()));
    const HMODULE hModule = ::LoadLibraryExW(wzCopy.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const DWORD dwError = ::GetLastError();
    const FARPROC pVersion = hModule != nullptr ? ::GetProcAddress(hModule, "GetAdapterVersion") : nullptr;
    ::FreeLibrary(hModule);
    ::DeleteFileW(wzCopy.c_str());
    for (; wzPath.compare(wzPath.size() - 7, 7, L"\\report") != 0; wzPath.resize(wzPath.rfind(L'\\')))
        ::RemoveDirectoryW(wzPath.c_str());
    if (hModule == nullptr && dwError == ERROR_FILENAME_EXCED_RANGE)
        return { "selftest", name, "skipped", "this system loads nothing from there\n" };
    return Row(name, pVersion != nullptr, hModule == nullptr ? "error " + std::to_string(dwError) : "it loads");
}

CRows RunAll(bool bQuick)
{
    CRows rows;
    const std::string keys = DescribeMachineKeys();
    const bool bServiceThere = IsServiceThere();
    Append(rows, { LoadFrom("a folder with letters of other alphabets", L"\x0416 \x65E5\x672C \x00E9") });
    Append(rows,
           { LoadFrom("a path of more than 260 characters",
                      std::wstring(120, L'l') + L"\\" + std::wstring(120, L'o') + L"\\" + std::wstring(60, L'n')) });
    Append(rows, { RunHost("check", L"check") });
    Append(rows, { RunHost("run", L"--state-dir report\\state run examples\\policies\\assess-daily.xml") });
    for (const CProgram& program : ReadPrograms())
        if (const char* const szWhyNot = WhyNotRun(program, bQuick, bServiceThere))
            Append(rows, { { program.name, "the program", "skipped", szWhyNot } });
        else
            Append(rows, RunTests(program));
    Append(rows, { Row("the machine's own keys are as they were", keys == DescribeMachineKeys(),
                       "before: " + keys + "\nnow: " + DescribeMachineKeys()) });
    return rows;
}

/// Goes to the folder of this program.
void GoHome()
{
    wchar_t szProgram[1024] = {};
    ::GetModuleFileNameW(nullptr, szProgram, 1024);
    *std::wcsrchr(szProgram, L'\\') = L'\0';
    ::SetCurrentDirectoryW(szProgram);
}

} // namespace

int main(int nArguments, char** ppArguments)
{
    const bool bQuick = nArguments == 2 && std::strcmp(ppArguments[1], "--quick") == 0;
    if (nArguments > 1 && !bQuick)
    {
        std::puts("selftest [--quick]: --quick leaves out what takes minutes");
        return 2;
    }
    GoHome();
    ::CreateDirectoryW(L"report", nullptr);
    ::SetEnvironmentVariableW(L"OV_SELFTEST", L"1");
    ::SetEnvironmentVariableW(L"OV_TEST_DATA", L"data");
    const CFacts facts = ReadSystemFacts();
    const CRows rows = RunAll(bQuick);
    if (!WriteReport(facts, rows))
    {
        std::puts("the report cannot be written: is this folder read-only?");
        return 2;
    }
    std::printf("\nThe report is in the folder report.\n%s\n", Verdict(rows).c_str());
    return Verdict(rows) == "failed" ? 1 : 0;
}
