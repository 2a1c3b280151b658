// Where the adapter stores the revision while this program drives it.
#pragma once

#include "PatchHost/Interrupt.h"

#include <optional>
#include <string>

enum class StateKind
{
    Machine,  ///< the machine's own registry
    Kept,     ///< a store of this program's own, kept from one run to the next
    Throwaway ///< an empty store that is gone at the end
};

/// While it lives, what the adapter stores goes to one place, and an interrupt waits. One at a time in a process; to be
/// made before the library is loaded, and destroyed after it is unloaded.
class CStatePlace
{
public:
    /// @param folder  UTF-8, for a store that is kept; made when it does not exist. Empty: the user's own.
    /// @throw std::exception when the store cannot be kept there.
    CStatePlace(StateKind kind, const std::string& folder);
    ~CStatePlace();

    CStatePlace(const CStatePlace&) = delete;
    CStatePlace& operator=(const CStatePlace&) = delete;

    /// Where the revision is stored, for people.
    const std::string& Describe() const { return m_description; }

private:
    const StateKind m_kind;
    const CInterruptHold m_interrupts;
    std::string m_description;
    std::string m_file;                ///< the store of this program's own that is kept; empty otherwise
    std::optional<std::string> m_kept; ///< the revision in that file at the start
};
