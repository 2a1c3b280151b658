// The adapter's registry record, read and written past the adapter.
#pragma once

#include "OvPlatform.h"

#include <optional>
#include <string>

/// Whether the 64-bit view has the key.
bool RevisionKeyExists();

/// The text of "PolicyRevId" in the 64-bit view; nothing when there is no such value or no key.
std::optional<std::wstring> StoredRevision();

/// Writes "PolicyRevId", with its key. @param dwType  the type that the value says it has.
void StoreRevision(const std::wstring& wzRevId, DWORD dwType = REG_SZ);
