// What the stand-in counts, so that a test can end by checking that nothing is left open.
#pragma once

#include <atomic>

namespace OvPlatform
{

/// Kernel handles and registry keys that are open.
std::atomic<unsigned>& HandleCounter();

/// COM objects of the stand-in that are alive: DOM objects, error objects, registered class objects.
std::atomic<unsigned>& ComObjectCounter();

/// BSTRs that are allocated.
std::atomic<unsigned>& BstrCounter();

/// Apartments in which a thread ended that had entered and not left them.
std::atomic<unsigned>& AbandonedApartmentCounter();

/// A member of each object that counts: adds one while it lives, copies included.
template <std::atomic<unsigned>& (*Counter)()>
class CCounted
{
public:
    CCounted() noexcept { ++Counter(); }
    CCounted(const CCounted&) noexcept { ++Counter(); }
    CCounted& operator=(const CCounted&) noexcept { return *this; }
    ~CCounted() { --Counter(); }
};

using CCountedHandle = CCounted<HandleCounter>;
using CCountedComObject = CCounted<ComObjectCounter>;

} // namespace OvPlatform
