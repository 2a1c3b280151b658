// What a command says: text for people or JSON for programs on standard output, notes on standard error.
#pragma once

#include "PatchHost/Options.h"

#include <nlohmann/json.hpp>

#include <string>

using CJson = nlohmann::ordered_json; // members keep their order

class COutput
{
public:
    explicit COutput(const COptions& options);

    bool IsJson() const { return m_bJson; }

    // Both throw CCommandError (failed) when standard output does not take it.

    /// In text mode alone: the text as it is.
    void Text(const std::string& text) const;

    /// In text mode alone: a document byte by byte, and a line break; escaped on a terminal.
    void RawText(const std::string& document) const;

    /// In JSON mode alone: the object on one line, after the version of this form and the command.
    void Json(const CJson& object) const;

    // Words in colour, where that is wanted.
    std::string Good(const std::string& word) const { return Coloured("32", word); }
    std::string Bad(const std::string& word) const { return Coloured("31", word); }

private:
    std::string Coloured(const char* code, const std::string& word) const;

    const std::string m_command;
    const bool m_bJson;
    const bool m_bColours;
};

/// A sentence of the program itself, on standard error; more lines may follow it.
void Note(const std::string& sentence);
