// The known word that a mistyped one was meant to be.
#pragma once

#include <string>
#include <vector>

/// The nearest known word; empty when none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& known);
