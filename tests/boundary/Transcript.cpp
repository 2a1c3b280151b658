#include "Transcript.h"

#include "Masking.h"
#include "TestData.h"
#include "Wine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace
{

const std::string s_record = TestDataFolder(OV_SCENARIO_FOLDER) + "/scenario.transcript";

std::vector<std::string> ReadLines(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

std::wstring Widened(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    const int nLength = static_cast<int>(text.size());
    wide.resize(static_cast<size_t>(::MultiByteToWideChar(CP_ACP, 0, text.data(), nLength, wide.data(), nLength)));
    return wide;
}

std::wstring Replaced(std::wstring text, const std::wstring& what, const std::wstring& by)
{
    for (size_t n = 0; (n = text.find(what, n)) != std::wstring::npos; n += by.size())
        text.replace(n, what.size(), by);
    return text;
}

// "-line" is replaced by the "+line" behind it, for the reason in the "#line" before it.
void UseWinesLines(std::vector<std::string>& record)
{
    std::string reason;
    std::string from;
    for (const std::string& line : ReadLines(TestDataFolder(OV_SCENARIO_FOLDER) + "/scenario.wine"))
    {
        const std::string text = line.substr(std::min<size_t>(1, line.size()));
        (line[0] == '#' ? reason : from) = line[0] == '+' ? from : text;
        if (line[0] != '+')
            continue;
        EXPECT_NE("", reason) << line;
        EXPECT_NE(record.end(), std::find(record.begin(), record.end(), from)) << "replaces nothing: " << from;
        std::replace(record.begin(), record.end(), from, text);
    }
}

} // namespace

void CTranscript::AddTold(const CHostRecord& record)
{
    for (const bool bMonitor : { false, true })
        for (const CTold& told : record.All())
            if (bMonitor == (told.dwThreadId != ::GetCurrentThreadId()))
                Add((bMonitor ? "monitor " : "host ") + told.what + " ", Widened(told.text));
}

void CTranscript::Add(const std::string& prefix, const std::wstring& text)
{
    const std::string version = OV_VERSION;
    std::wstring shown = Replaced(Masked(text), std::wstring(version.begin(), version.end()), L"<version>");
    shown = Replaced(Replaced(shown, L"\r", L"\\r"), L"\n", L"\\n");
    const int nLength = static_cast<int>(shown.size());
    std::string bytes(3 * shown.size() + 1, '\0');
    bytes.resize(static_cast<size_t>(::WideCharToMultiByte(CP_UTF8, 0, shown.data(), nLength, bytes.data(),
                                                           static_cast<int>(bytes.size()), nullptr, nullptr)));
    Add(prefix + bytes);
}

void CTranscript::Write(const char* szName) const
{
    std::ofstream file(szName, std::ios::binary);
    for (const std::string& line : m_lines)
        file << line << "\n";
}

void CTranscript::Record() const
{
    Write(s_record.c_str());
}

void CTranscript::Compare() const
{
    std::vector<std::string> record = ReadLines(s_record);
    if (WineDiffers("Windows writes the lines of the record, as the stand-in does by the documented message texts"))
        UseWinesLines(record);
    const auto [recorded, now] = std::mismatch(record.begin(), record.end(), m_lines.begin(), m_lines.end());
    if (recorded == record.end() && now == m_lines.end())
        return;
    const auto step = std::find_if(std::make_reverse_iterator(now), m_lines.rend(),
                                   [](const std::string& line) { return line.compare(0, 3, "== ") == 0; });
    EXPECT_EQ(recorded == record.end() ? "<end>" : *recorded, now == m_lines.end() ? "<end>" : *now)
        << (step == m_lines.rend() ? "" : *step) << "\nThe whole transcript is now in scenario.actual.";
    Write("scenario.actual");
}
