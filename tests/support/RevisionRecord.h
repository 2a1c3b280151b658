// The adapter's registry record, read and written past the adapter.
#pragma once

#include <optional>
#include <string>

/// The text of "PolicyRevId" in the 64-bit view; nothing when the value or its key does not exist.
std::optional<std::wstring> StoredRevision();

/// Writes "PolicyRevId", with its key; nothing removes the value and leaves the key.
void StoreRevision(const std::optional<std::wstring>& wzRevId);

/// Removes the whole key, and checks nothing.
void RemoveRevisionKey();
