// Texts between the command line (UTF-8) and the platform (UTF-16), and documents made readable.
#pragma once

#include <string>
#include <vector>

std::wstring Utf8ToWide(const std::string& text);
std::string WideToUtf8(const std::wstring& text);

// The library's narrow texts are in the system's ANSI code page.
std::wstring AnsiToWide(const std::string& text);
std::string AnsiToUtf8(const std::string& text);
std::string Utf8ToAnsi(const std::string& text);

/// A text from outside for a terminal: control characters (C0, DEL, C1) and line breaks as \\n, \\x1B and the like.
std::string Shown(const std::string& text);

/// The system's text for an error code, with the code: "Access denied. (error 5)".
std::string SystemText(unsigned long dwError);

/// Without the white space at both ends.
std::string Trimmed(const std::string& text);

/// "3 characters", "1 character".
std::string Count(size_t nCount, const std::string& noun);

/// The end of a sentence that says that a word is not known: "; did you mean 'apply'?". Empty when no word is near.
std::string Suggestion(const std::string& word, const std::vector<std::string>& known);

/// Breaks a document that was written without white space into indented lines; what a CDATA section holds is unfolded
/// as a document of its own. Meant for reading, not for parsing: a text that is not XML comes out in one piece.
/// Everything is escaped as Shown() does.
std::string IndentXml(const std::string& xml, unsigned nIndent = 0);
