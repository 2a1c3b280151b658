// The library's failures as its trace tells them: evidence items.
#pragma once

#include "PatchHost/Output.h"

#include <string>
#include <vector>

struct CEvidenceItem
{
    std::string name;
    std::string value;
};

/// The items of a trace line. They stand one behind another, so they are told apart by the names that the library uses.
/// @param document  UTF-8; an item that holds it is not looked into.
std::vector<CEvidenceItem> SplitEvidence(const std::string& text, const std::string& document);

/// Items for people: one a line, indented, with a number in the place of the document's text.
std::string EvidenceText(const std::vector<CEvidenceItem>& items);
CJson EvidenceJson(const std::vector<CEvidenceItem>& items);
