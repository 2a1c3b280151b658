#include "Platform/Registry/Store.h"

#include "Platform/Text/Text.h"
#include "Platform/Text/Utf8.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

// Volatile keys and their values live in a second database in memory, in tables of the same form, whose ids start
// higher.
constexpr KeyId FirstVolatileKey = KeyId{ 1 } << 62;

constexpr int64_t SchemaVersion = 1;

// Ids are never used twice, so that an open key notices when its key was deleted and made again.
constexpr char Tables[] = R"sql(
    CREATE TABLE %.keys(
        id     INTEGER PRIMARY KEY AUTOINCREMENT,
        parent INTEGER NOT NULL,
        folded TEXT NOT NULL,
        name   TEXT NOT NULL,
        UNIQUE(parent, folded));
    CREATE TABLE %.data(
        key    INTEGER NOT NULL,
        folded TEXT NOT NULL,
        name   TEXT NOT NULL,
        type   INTEGER NOT NULL,
        bytes  BLOB NOT NULL,
        PRIMARY KEY(key, folded)) WITHOUT ROWID;
)sql";

constexpr char VolatileSetup[] = R"sql(
    INSERT INTO mem.sqlite_sequence(name, seq) VALUES('keys', 4611686018427387904);
    CREATE TEMP VIEW allKeys AS
        SELECT id, parent, folded FROM main.keys UNION ALL SELECT id, parent, folded FROM mem.keys;
)sql";

/// The statements with the name of the database in the place of "%".
std::string In(const char* szDatabase, std::string sql)
{
    for (size_t n = sql.find('%'); n != std::string::npos; n = sql.find('%', n))
        sql.replace(n, 1, szDatabase);
    return sql;
}

bool IsVolatile(KeyId key)
{
    return key >= FirstVolatileKey;
}

std::string InDatabaseOf(KeyId key, const char* szSql)
{
    return In(IsVolatile(key) ? "mem" : "main", szSql);
}

/// What a name is found by. The bytes of the units follow where UTF-8 cannot tell one lone surrogate from another.
std::string Folded(const std::wstring& name)
{
    const std::wstring folded = FoldName(name);
    std::string bytes;
    if (!EncodeUtf8(folded, [&](char c) { bytes += c; }))
        bytes.append(reinterpret_cast<const char*>(folded.data()), folded.size() * sizeof(wchar_t));
    return bytes;
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

/// Makes the folders that are missing, for their owner alone. A failure shows when the file is opened.
void MakeFolders(const std::string& folder)
{
    if (mkdir(folder.c_str(), S_IRWXU) == 0 || errno != ENOENT)
        return;
    const std::string parent = FolderOf(folder);
    if (parent == folder || parent == ".")
        return;
    MakeFolders(parent);
    mkdir(folder.c_str(), S_IRWXU);
}

/// Makes the file, for its owner alone, when there is none. A file that exists is not opened: closing it would end the
/// locks that other connections of this process have on it.
void MakeFile(const std::string& path)
{
    const int nFile = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (nFile >= 0)
        close(nFile);
}

int64_t GetSchemaVersion(CDatabase& database)
{
    CStatement statement(database, "PRAGMA main.user_version");
    return statement.Step() ? statement.Integer(0) : 0;
}

} // namespace

KeyId CRegistryStore::FindKey(const CKeyPath& path)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    if (IsMissing() && !IsFixedKey(path)) // a look alone makes no file
        return NoKey;
    Open();
    return Find(path);
}

KeyId CRegistryStore::CreateKey(const CKeyPath& path, bool bVolatile, bool* pbCreated)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CDatabase& database = Open();
    const KeyId existing = Find(path);
    *pbCreated = false;
    if (existing != NoKey)
        return existing;
    CTransaction transaction(database);
    const KeyId key = Create(path, bVolatile, pbCreated);
    transaction.Commit();
    return key;
}

void CRegistryStore::CheckKey(KeyId key)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    Open();
    Check(key);
}

void CRegistryStore::CheckWritable()
{
    const std::lock_guard<std::mutex> lock(m_lock);
    const bool bFolder = m_path == InMemory || faccessat(AT_FDCWD, FolderOf(m_path).c_str(), W_OK, AT_EACCESS) == 0;
    if (!bFolder || Open().IsReadOnly())
        throw CRegistryError{ ERROR_ACCESS_DENIED };
}

std::optional<CRegistryValue> CRegistryStore::GetValue(KeyId key, const std::wstring& name)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CDatabase& database = Open();
    const std::string folded = Folded(name);
    CStatement select(database, InDatabaseOf(key, "SELECT type, bytes FROM %.data WHERE key = ? AND folded = ?"));
    if (select.Bind(key).Bind(folded).Step())
        return CRegistryValue{ static_cast<DWORD>(select.Integer(0)), select.Blob(1) };
    Check(key);
    return std::nullopt;
}

void CRegistryStore::SetValue(KeyId key, const std::wstring& name, DWORD dwType, const BYTE* pData, size_t nSize)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CDatabase& database = Open();
    CTransaction transaction(database);
    Check(key);
    const std::string folded = Folded(name);
    const std::string written = Utf8FromWide(name);
    CStatement insert(database,
                      InDatabaseOf(key, "INSERT INTO %.data(key, folded, name, type, bytes) VALUES(?, ?, ?, ?, ?) "
                                        "ON CONFLICT DO UPDATE SET type = excluded.type, bytes = excluded.bytes"));
    insert.Bind(key).Bind(folded).Bind(written).Bind(int64_t{ dwType }).Bind(pData, nSize).Step();
    transaction.Commit();
}

bool CRegistryStore::DeleteValue(KeyId key, const std::wstring& name)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CDatabase& database = Open();
    CTransaction transaction(database);
    Check(key);
    const std::string folded = Folded(name);
    CStatement(database, InDatabaseOf(key, "DELETE FROM %.data WHERE key = ? AND folded = ?"))
        .Bind(key)
        .Bind(folded)
        .Step();
    const bool bDeleted = database.Changes() != 0;
    transaction.Commit();
    return bDeleted;
}

void CRegistryStore::DeleteKey(KeyId key)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CTransaction transaction(Open());
    Check(key);
    if (!Children(key).empty())
        throw CRegistryError{ ERROR_ACCESS_DENIED };
    Delete(key);
    transaction.Commit();
}

void CRegistryStore::DeleteTree(KeyId key)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CTransaction transaction(Open());
    Check(key);
    Delete(key);
    transaction.Commit();
}

void CRegistryStore::EmptyKey(KeyId key)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    CTransaction transaction(Open());
    Check(key);
    Empty(key);
    transaction.Commit();
}

bool CRegistryStore::IsMissing() const
{
    return !m_pDatabase && m_path != InMemory && access(m_path.c_str(), F_OK) != 0 && errno == ENOENT;
}

CDatabase& CRegistryStore::Open()
{
    if (m_pDatabase)
        return *m_pDatabase;
    if (m_path != InMemory)
    {
        MakeFolders(FolderOf(m_path));
        MakeFile(m_path);
    }
    m_pDatabase = std::make_unique<CDatabase>(m_path);
    try
    {
        PrepareTables();
    }
    catch (...)
    {
        m_pDatabase.reset();
        throw;
    }
    return *m_pDatabase;
}

void CRegistryStore::PrepareTables()
{
    // Extra: the folder is written through too, so that a commit outlives a power failure that follows at once.
    m_pDatabase->Execute("PRAGMA synchronous = EXTRA; ATTACH ':memory:' AS mem");
    m_pDatabase->Execute(In("mem", Tables) + VolatileSetup);
    if (GetSchemaVersion(*m_pDatabase) == 0)
        CreateTables();
    if (GetSchemaVersion(*m_pDatabase) != SchemaVersion)
        throw CRegistryError{ ERROR_REGISTRY_CORRUPT };
}

void CRegistryStore::CreateTables()
{
    CTransaction transaction(*m_pDatabase);
    if (GetSchemaVersion(*m_pDatabase) != 0) // another process was faster
        return;
    m_pDatabase->Execute(In("main", Tables) + "PRAGMA main.user_version = " + std::to_string(SchemaVersion));
    bool bCreated = false;
    for (const CKeyPath& path : FixedKeys())
        Create(path, false, &bCreated);
    transaction.Commit();
}

KeyId CRegistryStore::Find(const CKeyPath& path)
{
    KeyId key = NoKey;
    for (const std::wstring& name : path)
    {
        key = FindChild(key, name);
        if (key == NoKey)
            return NoKey;
    }
    return key;
}

KeyId CRegistryStore::FindChild(KeyId parent, const std::wstring& name)
{
    const std::string folded = Folded(name);
    CStatement select(*m_pDatabase, "SELECT id FROM allKeys WHERE parent = ? AND folded = ?");
    return select.Bind(parent).Bind(folded).Step() ? select.Integer(0) : NoKey;
}

/// Within a transaction.
KeyId CRegistryStore::Create(const CKeyPath& path, bool bVolatile, bool* pbCreated)
{
    KeyId key = NoKey;
    for (const std::wstring& name : path)
    {
        const KeyId child = FindChild(key, name);
        key = child != NoKey ? child : AddChild(key, name, bVolatile);
        *pbCreated = key != child;
    }
    return key;
}

KeyId CRegistryStore::AddChild(KeyId parent, const std::wstring& name, bool bVolatile)
{
    if (IsVolatile(parent) && !bVolatile)
        throw CRegistryError{ ERROR_CHILD_MUST_BE_VOLATILE };
    const std::string folded = Folded(name);
    const std::string written = Utf8FromWide(name);
    CStatement insert(*m_pDatabase,
                      In(bVolatile ? "mem" : "main", "INSERT INTO %.keys(parent, folded, name) VALUES(?, ?, ?)"));
    insert.Bind(parent).Bind(folded).Bind(written).Step();
    return m_pDatabase->LastInsertedId();
}

std::vector<KeyId> CRegistryStore::Children(KeyId key)
{
    std::vector<KeyId> children;
    CStatement select(*m_pDatabase, "SELECT id FROM allKeys WHERE parent = ?");
    select.Bind(key);
    while (select.Step())
        children.push_back(select.Integer(0));
    return children;
}

bool CRegistryStore::Exists(KeyId key)
{
    CStatement select(*m_pDatabase, InDatabaseOf(key, "SELECT 1 FROM %.keys WHERE id = ?"));
    return select.Bind(key).Step();
}

void CRegistryStore::Check(KeyId key)
{
    if (!Exists(key))
        throw CRegistryError{ ERROR_KEY_DELETED };
}

void CRegistryStore::Empty(KeyId key)
{
    for (const KeyId child : Children(key))
        Delete(child);
    CStatement(*m_pDatabase, InDatabaseOf(key, "DELETE FROM %.data WHERE key = ?")).Bind(key).Step();
}

void CRegistryStore::Delete(KeyId key)
{
    Empty(key);
    CStatement(*m_pDatabase, InDatabaseOf(key, "DELETE FROM %.keys WHERE id = ?")).Bind(key).Step();
}

} // namespace OvPlatform
