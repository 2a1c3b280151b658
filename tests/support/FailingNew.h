// Makes one allocation fail. Linked by the tests that walk the paths without memory (the library failingNew).
#pragma once

/// While it lives, the n-th operator new of the thread that made it throws std::bad_alloc; the others succeed, or those
/// before it alone.
/// One at a time in a thread.
class CFailingNew
{
public:
    /// @param nFail  1 for the next allocation.
    /// @param bOnwards  the following ones fail too.
    explicit CFailingNew(unsigned nFail, bool bOnwards = false);
    ~CFailingNew();
    CFailingNew(const CFailingNew&) = delete;
    CFailingNew& operator=(const CFailingNew&) = delete;

    /// Counts an allocation that is made elsewhere than by operator new. @return whether it is to fail.
    static bool Fails();

    /// Whether the allocation that was to fail has been asked for.
    bool Reached() const;
};
