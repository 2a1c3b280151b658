// Windows only, where the library holds the C++ run-time library within itself: gives back what that one keeps for
// exceptions without memory, and would leave behind each time the library is unloaded.

#include <cstdlib>

namespace __gnu_cxx
{
void __freeres();
}

namespace
{

// Registered before any other, so that it runs last: when no destructor that may throw is left.
__attribute__((constructor(101))) void RegisterRelease()
{
    std::atexit(&__gnu_cxx::__freeres);
}

} // namespace
