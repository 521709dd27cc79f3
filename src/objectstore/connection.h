// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "objectstore/store.h"

#include <SQLiteCpp/Database.h>
#include <chrono>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <unordered_map>

namespace objectstore {

/// A prepared statement borrowed from its connection; it is reset, and its parameters let go, when it goes.
class Statement
{
public:
    explicit Statement(sqlite3_stmt *statement) : m_statement(statement) { }
    Statement(Statement &&other) noexcept : m_statement(std::exchange(other.m_statement, nullptr)) { }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement();

    /// Binds the next parameter. Text and bytes are not copied: they must hold until the statement goes.
    Statement &bind(const ValueView &value);
    Statement &bind(std::int64_t value);
    /// Moves to the next row; false after the last. Throws SQLite::Exception.
    bool step();
    void run() { (void)step(); }
    /// Makes the statement ready to be bound and run again.
    void again();

    [[nodiscard]] std::int64_t integer(int column) const { return sqlite3_column_int64(m_statement, column); }
    [[nodiscard]] std::string text(int column) const;
    [[nodiscard]] sqlite3_stmt *handle() const { return m_statement; }

private:
    sqlite3_stmt *m_statement;
    int m_bound = 0;
};

/// One connection to a store file, with its prepared statements kept for the next use. Belongs to one thread.
/// Failures are SQLite::Exception; they stay inside the object store.
class Connection
{
public:
    enum class Mode {
        Create, ///< a missing file is made, readable by nobody else
        Existing, ///< for writing where the file allows it, else for reading
        Immutable, ///< for reading a file beside which SQLite can put nothing
    };

    /// Opens the file with the care that every connection takes.
    Connection(const std::filesystem::path &file, const std::string &vfs, Mode mode);

    /// Makes an empty file that nobody else can read, where there is none. SQLite gives its side files the same rights.
    static void createPrivateFile(const std::filesystem::path &file);

    [[nodiscard]] Statement prepare(const std::string &sql);
    void execute(const std::string &sql) { m_database.exec(sql); }
    [[nodiscard]] int changes() const { return sqlite3_changes(m_database.getHandle()); }
    [[nodiscard]] sqlite3 *handle() const { return m_database.getHandle(); }

    [[nodiscard]] bool isReadOnly() const { return sqlite3_db_readonly(handle(), "main") == 1; }
    /// Whether the file was moved, replaced or deleted since it was opened.
    [[nodiscard]] bool hasMoved() const;

    /// Whether closing leaves the files as they are, instead of moving what the write-ahead log holds into the store.
    void keepFilesOnClose(bool keep)
    {
        sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keep ? 1 : 0, nullptr);
    }

    /// How long a write waits for the writer before it.
    void setBusyTimeout(std::chrono::milliseconds timeout)
    {
        sqlite3_busy_timeout(handle(), static_cast<int>(timeout.count()));
    }

    /// A number that changes whenever another connection has committed.
    [[nodiscard]] std::int64_t dataVersion();

private:
    struct Finalize {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };

    SQLite::Database m_database;
    std::unordered_map<std::string, std::unique_ptr<sqlite3_stmt, Finalize>> m_statements;
};

/// A transaction that can write: rolled back when it goes without having been committed.
class WriteTransaction
{
public:
    explicit WriteTransaction(Connection &connection);
    WriteTransaction(const WriteTransaction &) = delete;
    WriteTransaction &operator=(const WriteTransaction &) = delete;
    ~WriteTransaction();
    void commit();

private:
    Connection &m_connection;
    bool m_open = true;
};

/// The error value for what SQLite reported while doing what `sentence` says.
[[nodiscard]] foundation::Error storeError(
    StoreErrorCode code, std::string sentence, const SQLite::Exception &exception);

/// The kind of failure without SQLite's finer distinctions, such as SQLITE_BUSY.
[[nodiscard]] int primaryCode(const SQLite::Exception &exception);

/// `name` as an SQL identifier.
[[nodiscard]] std::string identifier(std::string_view name);

} // namespace objectstore
