// What a command says: text for people or JSON for programs on standard output, notes on standard error.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

using CJson = nlohmann::ordered_json; // members keep their order

class COutput
{
public:
    explicit COutput(bool bJson);

    bool IsJson() const { return m_bJson; }

    // Both throw CCommandError (failed) when standard output does not take it.

    /// In text mode alone: the text as it is.
    void Text(const std::string& text) const;

    /// In JSON mode alone: the object on one line.
    void Json(const CJson& object) const;

    // Words in colour, where the terminal has it and NO_COLOR is not set.
    std::string Good(const std::string& word) const { return Coloured("32", word); }
    std::string Bad(const std::string& word) const { return Coloured("31", word); }

private:
    std::string Coloured(const char* code, const std::string& word) const;

    const bool m_bJson;
    const bool m_bColours;
};

/// A sentence of the program itself, on standard error; more lines may follow it.
void Note(const std::string& sentence);
