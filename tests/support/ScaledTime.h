// Time that runs faster while an object of this class lives: the ten-second pauses of the adapter take milliseconds.
#pragma once

/// For a test program that links the adapter's objects; a built library that is loaded is reached on the native target
/// alone. One at a time. Make it before, and destroy it after, the adapter whose pauses it shortens.
class CScaledTime
{
public:
    explicit CScaledTime(unsigned nDivisor);
    ~CScaledTime();
    CScaledTime(const CScaledTime&) = delete;
    CScaledTime& operator=(const CScaledTime&) = delete;
};
