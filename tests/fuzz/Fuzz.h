// What the fuzz targets share: the input taken apart, and what ends a run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// The entry that the fuzzer, or Replay.cpp, calls once an input. @return always 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize);

/// The input, taken from its front; zeros once it is used up.
class CFuzzInput
{
public:
    CFuzzInput(const uint8_t* pData, size_t nSize) : m_pData(pData), m_pEnd(pData + nSize) {}

    bool IsEmpty() const { return m_pData == m_pEnd; }
    unsigned Byte() { return IsEmpty() ? 0u : *m_pData++; }
    unsigned Below(unsigned nBound) { return Byte() % nBound; }

    /// All that is left as UTF-16 units, each with its low byte first.
    std::wstring Units()
    {
        std::wstring units;
        while (!IsEmpty())
        {
            const unsigned nLow = Byte();
            units += static_cast<wchar_t>(nLow | Byte() << 8);
        }
        return units;
    }

private:
    const uint8_t* m_pData;
    const uint8_t* m_pEnd;
};

/// Ends the process, with words that say what does not hold, unless it does.
inline void Demand(bool bHolds, const char* szWhat)
{
    if (bHolds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", szWhat);
    std::abort();
}
