// Runs a program and keeps what it prints.
#pragma once

#include <cstdint>
#include <string>

/// Both outputs go to the file. A program that takes longer than the time is ended.
/// @return its exit code; CHILD_NOT_STARTED, CHILD_TOOK_TOO_LONG.
uint32_t RunChild(const std::wstring& wzProgram, const std::wstring& wzArguments, const std::wstring& wzOutput,
                  unsigned nMinutes);

constexpr uint32_t CHILD_NOT_STARTED = 0xFFFFFFFE;
constexpr uint32_t CHILD_TOOK_TOO_LONG = 0xFFFFFFFD;
