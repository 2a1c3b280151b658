#include "EdgeText.h"

#include <algorithm>
#include <sys/mman.h>

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
    : m_pBlock(static_cast<char*>(
          ::mmap(nullptr, BytesFor(text.size()) + PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
      m_pBehind(m_pBlock + BytesFor(text.size())),
      m_pText(m_pBehind - text.size() - 1)
{
    std::copy_n(text.c_str(), text.size() + 1, m_pText);
    ::mprotect(m_pBehind, PAGE, PROT_NONE);
}

CEdgeText::~CEdgeText()
{
    ::munmap(m_pBlock, static_cast<size_t>(m_pBehind - m_pBlock) + PAGE);
}
