// The keys and values of one registry, in a database.
#pragma once

#include "Platform/Registry/Database.h"
#include "Platform/Registry/Path.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace OvPlatform
{

/// Tells keys apart; a key that is made again after it was deleted has another one.
using KeyId = int64_t;

constexpr KeyId NoKey = 0;

struct CRegistryValue
{
    DWORD dwType;
    std::vector<BYTE> data;
};

/// May be used from several threads at once, and its file from several processes. Each operation is done as a whole or
/// not at all; one that names a key by id throws ERROR_KEY_DELETED when there is no such key. Failures throw
/// CRegistryError.
class CRegistryStore
{
public:
    static constexpr char InMemory[] = ":memory:";

    /// @param path  a file, made with its folders when a key is created, for their owner alone; or InMemory.
    explicit CRegistryStore(std::string path) : m_path(std::move(path)) {}

    /// NoKey when there is no such key.
    KeyId FindKey(const CKeyPath& path);

    /// Makes the key, and what is missing on the way to it, unless it exists.
    /// @param bVolatile  it shall live no longer than this object.
    KeyId CreateKey(const CKeyPath& path, bool bVolatile, bool* pbCreated);

    void CheckKey(KeyId key);

    /// Throws ERROR_ACCESS_DENIED when the file, or the folder that its journal lies in, cannot be written.
    void CheckWritable();

    std::optional<CRegistryValue> GetValue(KeyId key, const std::wstring& name);
    void SetValue(KeyId key, const std::wstring& name, DWORD dwType, const BYTE* pData, size_t nSize);

    /// @return whether there was one.
    bool DeleteValue(KeyId key, const std::wstring& name);

    /// Throws ERROR_ACCESS_DENIED when there are keys below it.
    void DeleteKey(KeyId key);

    /// Deletes the key with all keys below it.
    void DeleteTree(KeyId key);

    /// Deletes all keys below and all values of it.
    void EmptyKey(KeyId key);

private:
    bool IsMissing() const;
    CDatabase& Open();
    void PrepareTables();
    void CreateTables();

    KeyId Find(const CKeyPath& path);
    KeyId FindChild(KeyId parent, const std::wstring& name);
    KeyId Create(const CKeyPath& path, bool bVolatile, bool* pbCreated);
    KeyId AddChild(KeyId parent, const std::wstring& name, bool bVolatile);
    std::vector<KeyId> Children(KeyId key);
    bool Exists(KeyId key);
    void Check(KeyId key);
    void Empty(KeyId key);
    void Delete(KeyId key);

    const std::string m_path;
    std::mutex m_lock;
    std::unique_ptr<CDatabase> m_pDatabase; // null until first needed; guarded by m_lock
};

} // namespace OvPlatform
