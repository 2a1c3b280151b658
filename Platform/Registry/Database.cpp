#include "Platform/Registry/Database.h"

#include "Platform/Errors.h"

namespace OvPlatform
{

namespace
{

constexpr int BusyTimeoutMs = 10000;

LONG Win32FromSqlite(int nCode)
{
    constexpr int PrimaryCode = 0xFF;
    switch (nCode & PrimaryCode)
    {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return ERROR_BUSY;
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
        return ERROR_ACCESS_DENIED;
    case SQLITE_ERROR: // a table that is not there: some other database
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_SCHEMA:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
        return ERROR_REGISTRY_CORRUPT;
    case SQLITE_NOMEM:
        return ERROR_OUTOFMEMORY;
    case SQLITE_FULL:
        return ERROR_DISK_FULL;
    default:
        return ERROR_REGISTRY_IO_FAILED;
    }
}

void Check(int nCode)
{
    if (nCode != SQLITE_OK)
        throw CRegistryError{ Win32FromSqlite(nCode) };
}

} // namespace

CDatabase::CDatabase(const std::string& path)
{
    sqlite3* p = nullptr;
    const int nFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int nCode = sqlite3_open_v2(path.c_str(), &p, nFlags, nullptr);
    m_p.reset(p); // also after a failure
    Check(nCode);
    Check(sqlite3_busy_timeout(p, BusyTimeoutMs));
}

void CDatabase::Execute(const std::string& sql)
{
    Check(sqlite3_exec(m_p.get(), sql.c_str(), nullptr, nullptr, nullptr));
}

CStatement::CStatement(CDatabase& database, const std::string& sql)
    : m_home(database.m_compiled[sql]), m_p(std::move(m_home))
{
    if (m_p)
        return;
    sqlite3_stmt* p = nullptr;
    Check(sqlite3_prepare_v3(database.Get(), sql.c_str(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &p,
                             nullptr));
    m_p.reset(p);
}

CStatement::~CStatement()
{
    sqlite3_reset(m_p.get()); // its failure has been reported
    sqlite3_clear_bindings(m_p.get());
    m_home = std::move(m_p);
}

CStatement& CStatement::Bind(int64_t nValue)
{
    Check(sqlite3_bind_int64(m_p.get(), ++m_nBound, nValue));
    return *this;
}

CStatement& CStatement::Bind(const std::string& text)
{
    Check(sqlite3_bind_text64(m_p.get(), ++m_nBound, text.data(), text.size(), nullptr, SQLITE_UTF8));
    return *this;
}

CStatement& CStatement::Bind(const BYTE* pData, size_t nSize)
{
    static const BYTE s_empty = 0; // a null pointer would bind NULL
    Check(sqlite3_bind_blob64(m_p.get(), ++m_nBound, nSize != 0 ? pData : &s_empty, nSize, nullptr));
    return *this;
}

bool CStatement::Step()
{
    const int nCode = sqlite3_step(m_p.get());
    if (nCode != SQLITE_ROW && nCode != SQLITE_DONE)
        Check(nCode);
    return nCode == SQLITE_ROW;
}

std::vector<BYTE> CStatement::Blob(int nColumn) const
{
    const auto* pData = static_cast<const BYTE*>(sqlite3_column_blob(m_p.get(), nColumn));
    const int nSize = sqlite3_column_bytes(m_p.get(), nColumn);
    if (!pData && nSize != 0)
        throw CRegistryError{ ERROR_OUTOFMEMORY };
    return { pData, pData + nSize };
}

CTransaction::CTransaction(CDatabase& database) : m_database(database)
{
    CStatement(m_database, "BEGIN IMMEDIATE").Step();
}

CTransaction::~CTransaction()
{
    if (m_bOpen)
        sqlite3_exec(m_database.Get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void CTransaction::Commit()
{
    CStatement(m_database, "COMMIT").Step();
    m_bOpen = false;
}

} // namespace OvPlatform
