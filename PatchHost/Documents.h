// Documents as they come from files.
#pragma once

#include <string>

/// A file's bytes. @param file  UTF-8; "-" is standard input. @throw CCommandError when it cannot be read.
std::string ReadDocument(const std::string& file);
