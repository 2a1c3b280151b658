// A connection to an SQLite database and what it runs, each a small owner. Failures throw CRegistryError. One thread
// at a time.
#pragma once

#include "Platform/Types.h"

#include <sqlite3.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace OvPlatform
{

/// A failure of the registry as its Win32 code.
struct CRegistryError
{
    LONG lCode;
};

struct CDatabaseCloser
{
    void operator()(sqlite3* p) const noexcept { sqlite3_close(p); }
};

struct CStatementCloser
{
    void operator()(sqlite3_stmt* p) const noexcept { sqlite3_finalize(p); }
};

using CStatementOwner = std::unique_ptr<sqlite3_stmt, CStatementCloser>;

class CDatabase
{
public:
    /// Opens the file, making an empty one when there is none; ":memory:" for none at all.
    explicit CDatabase(const std::string& path);

    sqlite3* Get() const { return m_p.get(); }

    /// Runs statements that have no result and no parameter.
    void Execute(const std::string& sql);

    /// Rows that the last statement has changed.
    int Changes() const { return sqlite3_changes(m_p.get()); }

    bool IsReadOnly() const { return sqlite3_db_readonly(m_p.get(), "main") == 1; }

    int64_t LastInsertedId() const { return sqlite3_last_insert_rowid(m_p.get()); }

private:
    friend class CStatement;

    std::unique_ptr<sqlite3, CDatabaseCloser> m_p;
    std::unordered_map<std::string, CStatementOwner> m_compiled; // by their text; null while in use
};

/// One statement with its parameters, numbered from 1 in the order in which they are bound. What is bound is not
/// copied. The database keeps what it compiled for the next statement of the same text.
class CStatement
{
public:
    CStatement(CDatabase& database, const std::string& sql);
    ~CStatement();
    CStatement(const CStatement&) = delete;
    CStatement& operator=(const CStatement&) = delete;

    CStatement& Bind(int64_t nValue);
    CStatement& Bind(const std::string& text); ///< UTF-8
    CStatement& Bind(const BYTE* pData, size_t nSize);

    /// Goes to the next row of the result. @return false behind the last one.
    bool Step();

    int64_t Integer(int nColumn) const { return sqlite3_column_int64(m_p.get(), nColumn); }
    std::vector<BYTE> Blob(int nColumn) const;

private:
    CStatementOwner& m_home;
    CStatementOwner m_p;
    int m_nBound = 0;
};

/// Holds the write lock from the start; undone unless committed.
class CTransaction
{
public:
    explicit CTransaction(CDatabase& database);
    ~CTransaction();
    CTransaction(const CTransaction&) = delete;
    CTransaction& operator=(const CTransaction&) = delete;

    void Commit();

private:
    CDatabase& m_database;
    bool m_bOpen = true;
};

} // namespace OvPlatform
