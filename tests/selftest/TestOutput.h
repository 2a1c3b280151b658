// Reads what a test program prints.
#pragma once

#include "Row.h"

#include <iosfwd>

/// A row for each test that began. One that did not end has failed. Lines "[ WINDOWS  ] text" (see Wine.h) mark the
/// test that prints them and go into its detail.
CRows ReadTestOutput(const std::string& program, std::istream& output);
