// Why the library refused a document, as its trace tells it.
#pragma once

#include "PatchHost/Evidence.h"
#include "PatchHost/TraceSink.h"

#include <optional>

/// Why the library refused a document.
struct CRefusal
{
    std::string code;    ///< eight hexadecimal digits
    std::string message; ///< a sentence
    std::string reason;  ///< the parser's own; empty when the document parses
    long nLine = 0;      ///< from 1; 0 where the parser does not tell
    long nColumn = 0;
    std::string source;   ///< the line with the fault
    std::string nodePath; ///< the node that was looked at; empty when the document does not parse
    std::string outline;  ///< that node without its content
    std::vector<CEvidenceItem> evidence;
};

/// @param lines  of one SetConfiguration, of its own thread.
/// @param document  the narrow text that was handed in.
/// @return nothing when the document was accepted.
std::optional<CRefusal> FindRefusal(const std::vector<CTraceLine>& lines, const std::string& document);

/// The refusal for people, indented, with a caret under the column; a long line is cut around it.
std::string RefusalText(const CRefusal& refusal);
CJson RefusalJson(const CRefusal& refusal);
