// Texts that a reader must not read past.
#pragma once

#include <string>

/// A copy of a text whose terminating zero is the last byte before a page that nobody may read.
class CEdgeText
{
public:
    explicit CEdgeText(const std::string& text);
    ~CEdgeText();
    CEdgeText(const CEdgeText&) = delete;
    CEdgeText& operator=(const CEdgeText&) = delete;

    const char* Get() const { return m_pText; }

    /// The first byte that nobody may read.
    void* Behind() const { return m_pBehind; }

private:
    char* m_pBlock;
    char* m_pBehind;
    char* m_pText;
};
