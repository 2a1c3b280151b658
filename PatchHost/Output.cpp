#include "PatchHost/Output.h"

#include "PatchHost/Console.h"
#include "PatchHost/Text.h"

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

constexpr int s_nJsonVersion = 1; // another one when a member goes or means something else

bool WantsColours(const COptions& options)
{
    if (options.bJson || options.colour != ColourChoice::Auto)
        return !options.bJson && options.colour == ColourChoice::Always;
    const char* const szNoColour = std::getenv("NO_COLOR");
    return (szNoColour == nullptr || *szNoColour == '\0') && HasColours(Stream::Output);
}

} // namespace

COutput::COutput(const COptions& options)
    : m_command(options.command), m_bJson(options.bJson), m_bColours(WantsColours(options))
{
}

void COutput::Text(const std::string& text) const
{
    if (!m_bJson)
        Write(text);
}

void COutput::RawText(const std::string& document) const
{
    Text((IsTerminal(Stream::Output) ? Shown(document) : document) + "\n");
}

void COutput::Json(const CJson& object) const
{
    if (!m_bJson)
        return;
    CJson whole = { { "version", s_nJsonVersion }, { "command", m_command } };
    whole.update(object);
    Write(whole.dump(-1, ' ', false, CJson::error_handler_t::replace) + "\n");
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
