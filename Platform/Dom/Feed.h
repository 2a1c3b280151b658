// Hands a text to the parser, piece by piece.
#pragma once

#include "Platform/Dom/Limits.h"

#include <string_view>

namespace OvPlatform::Dom
{

/// A text as UTF-8. Ends early, for good, when Stop was called or a tag has too many attributes: the parser then sees
/// an end of text instead of more work.
class CFeed
{
public:
    explicit CFeed(std::wstring_view text) : m_text(text) {}

    /// @param nRoom  bytes at pBuffer, at least 4. @return the bytes written; 0 at the end.
    int Read(char* pBuffer, int nRoom);

    void Stop() { m_bStopped = true; }
    bool HasTooManyAttributes() const { return m_bTooManyAttributes; }

    /// Where in the text Read has come to.
    size_t Position() const { return m_nNext; }

    /// The unit of the text that the byte nBytes of its UTF-8 form belongs to.
    size_t PositionOfByte(unsigned long nBytes) const;

private:
    std::wstring_view m_text;
    size_t m_nNext = 0;
    CAttributeMeter m_meter;
    bool m_bTooManyAttributes = false;
    bool m_bStopped = false;
};

} // namespace OvPlatform::Dom
