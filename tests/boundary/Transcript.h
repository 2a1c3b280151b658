// The record of a session, compared with the one that is kept beside the sources.
#pragma once

#include "Recording.h"

#include <string>
#include <vector>

/// Lines of UTF-8. What differs from run to run, and the library's version, is masked; line ends within a text show as
/// "\r" and "\n".
class CTranscript
{
public:
    void Add(const std::string& line) { m_lines.push_back(line); }

    void Add(const std::string& prefix, const std::wstring& text);

    /// What the host was told on the calling thread, and then what it was told by the monitor.
    void AddTold(const CHostRecord& record);

    /// Makes this the record.
    void Record() const;

    /// Fails the test at the first line that differs from the record. Under Wine the lines of the table scenario.wine
    /// stand for those of the record; a line there that has no reason before it, or replaces nothing, fails the test
    /// too.
    void Compare() const;

private:
    void Write(const char* szName) const;

    std::vector<std::string> m_lines;
};
