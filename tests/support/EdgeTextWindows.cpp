#include "EdgeText.h"

#include "OvPlatform.h"

#include <algorithm>

namespace
{

constexpr size_t PAGE = 4096;

/// The pages of a text with its zero.
size_t BytesFor(size_t nLength)
{
    return (nLength + PAGE) / PAGE * PAGE;
}

} // namespace

CEdgeText::CEdgeText(const std::string& text)
    : m_pBlock(static_cast<char*>(::VirtualAlloc(nullptr, BytesFor(text.size()) + PAGE, MEM_RESERVE, PAGE_NOACCESS))),
      m_pBehind(m_pBlock + BytesFor(text.size())),
      m_pText(m_pBehind - text.size() - 1)
{
    ::VirtualAlloc(m_pBlock, BytesFor(text.size()), MEM_COMMIT, PAGE_READWRITE);
    std::copy_n(text.c_str(), text.size() + 1, m_pText);
}

CEdgeText::~CEdgeText()
{
    ::VirtualFree(m_pBlock, 0, MEM_RELEASE);
}
