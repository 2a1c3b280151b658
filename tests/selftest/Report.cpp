#include "Report.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

namespace
{

size_t CountOf(const CRows& rows, const char* szResult)
{
    return static_cast<size_t>(
        std::count_if(rows.begin(), rows.end(), [&](const CRow& row) { return row.result == szResult; }));
}

void WriteSummary(std::ostream& stream, const CFacts& facts, const CRows& rows)
{
    stream << "Self-test of the patch adapter " << OV_PROJECT_VERSION << "\n\n";
    for (const auto& [name, value] : facts)
        stream << name << ": " << value << "\n";
    stream << "\n";
    for (const CRow& row : rows)
    {
        stream << row.result << "  " << row.program << "  " << row.name << "\n";
        if (row.result != "passed")
            stream << row.detail;
    }
    stream << "\nRows that took a branch for Windows, which no run under Wine has seen:\n";
    for (const CRow& row : rows)
        if (row.bOnWindowsAlone)
            stream << row.result << "  " << row.program << "  " << row.name << "\n" << row.detail;
    stream << "\n" << Verdict(rows) << "\n";
}

void WriteJson(std::ostream& stream, const CFacts& facts, const CRows& rows)
{
    nlohmann::ordered_json report = { { "version", OV_PROJECT_VERSION }, { "result", Verdict(rows) } };
    for (const auto& [name, value] : facts)
        report["system"][name] = value;
    for (const CRow& row : rows)
        report["rows"].push_back({ { "program", row.program },
                                   { "name", row.name },
                                   { "result", row.result },
                                   { "detail", row.detail },
                                   { "onWindowsAlone", row.bOnWindowsAlone } });
    const auto replaceBadBytes = nlohmann::ordered_json::error_handler_t::replace;
    stream << report.dump(2, ' ', false, replaceBadBytes) << "\n";
}

} // namespace

std::string Verdict(const CRows& rows)
{
    if (rows.empty() || CountOf(rows, "failed") != 0)
        return "failed";
    const size_t nSkipped = CountOf(rows, "skipped");
    return nSkipped == 0 ? "passed" : "passed, with " + std::to_string(nSkipped) + " rows skipped";
}

bool WriteReport(const CFacts& facts, const CRows& rows)
{
    std::ofstream summary("report\\summary.txt");
    std::ofstream json("report\\report.json", std::ios::binary);
    WriteSummary(summary, facts, rows);
    WriteJson(json, facts, rows);
    summary.close();
    json.close();
    return summary && json;
}
