#include "PatchHost/Output.h"

#include "PatchHost/Console.h"
#include "PatchHost/Options.h"

#include <cstdio>
#include <cstdlib>

namespace
{

void Write(const std::string& text)
{
    const bool bWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) != 0 || !bWritten) // what was said must be seen while the adapter still works
        throw CCommandError(ExitFailed, "cannot write to standard output");
}

bool WantsColours()
{
    const char* const szNoColour = std::getenv("NO_COLOR");
    return (szNoColour == nullptr || *szNoColour == '\0') && HasColours(Stream::Output);
}

} // namespace

COutput::COutput(bool bJson) : m_bJson(bJson), m_bColours(!bJson && WantsColours()) {}

void COutput::Text(const std::string& text) const
{
    if (!m_bJson)
        Write(text);
}

void COutput::Json(const CJson& object) const
{
    if (m_bJson)
        Write(object.dump(-1, ' ', false, CJson::error_handler_t::replace) + "\n");
}

std::string COutput::Coloured(const char* code, const std::string& word) const
{
    return m_bColours ? std::string("\x1b[") + code + "m" + word + "\x1b[0m" : word;
}

void Note(const std::string& sentence)
{
    const bool bEnded = !sentence.empty() && sentence.back() == '\n';
    std::fputs(("patchhost: " + sentence + (bEnded ? "" : "\n")).c_str(), stderr);
}
