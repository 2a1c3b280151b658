// How much memory a piece of work takes.
#pragma once

/// Counts from its making on. One at a time.
class CMemoryPeak
{
public:
    CMemoryPeak();

    /// By how much the most memory that the process has held at once exceeds what it held at the start, in MB. Where
    /// the system cannot forget an earlier peak (Windows), by how much it exceeds that one.
    unsigned RiseMb() const;

private:
    unsigned long m_nStartKb;
};
