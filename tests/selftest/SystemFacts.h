// What the self-test finds the machine to be.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Name and value, in the order of the report.
using CFacts = std::vector<std::pair<std::string, std::string>>;

CFacts ReadSystemFacts();

/// Whether a patch service runs here, as its event tells: tests that simulate one would meet it.
bool IsServiceThere();

/// Everything below the vendor's key of the machine, in both views, as one text that changes when any of it does.
std::string DescribeMachineKeys();
