// The known word that a mistyped one was meant to be.
#pragma once

#include <string>
#include <vector>

/// The end of a sentence that says that a word is not known: "; did you mean 'apply'?". Empty when no word is near.
std::string Suggestion(const std::string& word, const std::vector<std::string>& known);
