// Where the adapter's recorded revision goes while this program drives it.
#pragma once

#include "PatchHost/Interrupt.h"

#include <optional>
#include <string>

enum class RecordKind
{
    Machine,  ///< the machine's own record
    Kept,     ///< a record of this program's own, kept from one run to the next
    Throwaway ///< an empty record that is gone at the end
};

/// While it lives, what the adapter records goes to one place, and an interrupt waits. One at a time in a process; to
/// be made before the library is loaded, and destroyed after it is unloaded.
class CRecordPlace
{
public:
    /// @param folder  UTF-8, for a record that is kept; made when it does not exist. Empty: the user's own.
    /// @throw std::exception when the record cannot be kept there.
    CRecordPlace(RecordKind kind, const std::string& folder);
    ~CRecordPlace();

    CRecordPlace(const CRecordPlace&) = delete;
    CRecordPlace& operator=(const CRecordPlace&) = delete;

    /// Where the revision is stored, for people.
    const std::string& Describe() const { return m_description; }

private:
    const CInterruptHold m_interrupts;
    std::string m_description;
    std::string m_file;                ///< what the record is kept in; empty for none of this program's own
    std::optional<std::string> m_kept; ///< the revision in that file at the start
};
