// A row of the report: one test, or one thing that the self-test looks at by itself.
#pragma once

#include <string>
#include <vector>

struct CRow
{
    std::string program;
    std::string name;
    std::string result;           ///< "passed", "failed" or "skipped"
    std::string detail;           ///< why it failed or was skipped; what it found
    bool bOnWindowsAlone = false; ///< it took a branch that no run under Wine takes
};

using CRows = std::vector<CRow>;
