#include "TestOutput.h"

#include <istream>

namespace
{

const size_t s_nMark = 13; // the length of "[       OK ] "

struct CMark
{
    const char* szMark;
    const char* szResult; // null: the test goes on
};

const CMark s_marks[] = {
    { "[       OK ] ", "passed" },
    { "[  FAILED  ] ", "failed" },
    { "[  SKIPPED ] ", "skipped" },
};

/// "Suite.Name" of a line "Suite.Name (3 ms)" or "Suite.Name, where ...".
std::string NameIn(const std::string& line)
{
    return line.substr(s_nMark, line.find_first_of(" ,", s_nMark) - s_nMark);
}

/// The result that the line gives to the test of that name; null when it gives none.
const char* ResultIn(const std::string& line, const std::string& name)
{
    for (const CMark& mark : s_marks)
        if (line.compare(0, s_nMark, mark.szMark) == 0 && NameIn(line) == name)
            return mark.szResult;
    return nullptr;
}

} // namespace

CRows ReadTestOutput(const std::string& program, std::istream& output)
{
    CRows rows;
    bool bRunning = false;
    for (std::string line; std::getline(output, line);)
    {
        line.erase(line.find_last_not_of('\r') + 1);
        if (line.compare(0, s_nMark, "[ RUN      ] ") == 0)
        {
            rows.push_back({ program, NameIn(line), "failed", "" });
            bRunning = true;
            continue;
        }
        if (!bRunning)
            continue;
        CRow& row = rows.back();
        const char* const szResult = ResultIn(line, row.name);
        row.bOnWindowsAlone = row.bOnWindowsAlone || line.compare(0, s_nMark, "[ WINDOWS  ] ") == 0;
        if (szResult != nullptr)
            row.result = szResult;
        else
            row.detail += line + "\n";
        bRunning = szResult == nullptr;
    }
    if (bRunning)
        rows.back().detail += "the program ended here\n";
    return rows;
}
