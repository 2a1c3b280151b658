// Takes out of a text what differs from run to run or from build to build.
#pragma once

#include <string>

/// The text with "#" in place of: the source lines of exceptions and of stack dumps, the addresses in evidence items
/// (pIn, pOut, pDoc, m_spNode), the id of a settings document and the time stamp of a status document. An id or a time
/// stamp that does not have its exact form stays as it is. Meant for transcripts and documents of ordinary size.
std::string Masked(const std::string& text);
std::wstring Masked(std::wstring text);
