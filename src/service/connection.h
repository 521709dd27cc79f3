// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

namespace service {

/// What SQLite reported. It stays inside the room.
class DatabaseError : public std::runtime_error
{
public:
    DatabaseError(sqlite3 *database, int code) : std::runtime_error(sqlite3_errmsg(database)), m_code(code) { }
    explicit DatabaseError(int code) : std::runtime_error(sqlite3_errstr(code)), m_code(code) { }
    [[nodiscard]] int code() const { return m_code & 0xFF; }

private:
    int m_code;
};

/// What a column holds: a number or a text.
using Value = std::variant<std::int64_t, std::string>;

/// A prepared statement borrowed from its connection; it is reset, and its parameters let go, when it goes.
class Statement
{
public:
    explicit Statement(sqlite3_stmt *statement) : m_statement(statement) { }
    Statement(Statement &&other) noexcept
        : m_statement(std::exchange(other.m_statement, nullptr)), m_bound(other.m_bound)
    { }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement();

    // Each binds the next parameter. Text is not copied: it must hold until the statement goes.
    Statement &bind(std::int64_t value);
    Statement &bind(std::string_view text);
    Statement &bindValue(const Value &value);

    /// Moves to the next row; false after the last. Throws DatabaseError.
    bool step();
    void run() { (void)step(); }

    [[nodiscard]] std::int64_t integer(int column) const { return sqlite3_column_int64(m_statement, column); }
    /// The column's text, which holds until the next step.
    [[nodiscard]] std::string_view text(int column) const;

private:
    sqlite3_stmt *m_statement;
    int m_bound = 0;
};

/// One connection to the data file, with its prepared statements kept for the next use. One thread at a time.
/// Throws DatabaseError.
class Connection
{
public:
    explicit Connection(const std::string &file);

    [[nodiscard]] Statement prepare(const std::string &sql);
    void execute(const char *sql);
    [[nodiscard]] std::int64_t changes() const { return sqlite3_changes64(m_database.get()); }
    [[nodiscard]] std::int64_t lastId() const { return sqlite3_last_insert_rowid(m_database.get()); }
    [[nodiscard]] std::int64_t number(const char *sql);
    [[nodiscard]] sqlite3 *handle() const { return m_database.get(); }

private:
    struct Close {
        void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };

    std::unique_ptr<sqlite3, Close> m_database;
    std::unordered_map<std::string, std::unique_ptr<sqlite3_stmt, Close>> m_statements;
};

/// A transaction on a connection, which is rolled back when it goes without having been committed. It waits for other
/// writers, ten seconds at most.
class Transaction
{
public:
    enum class Kind { Read, Write };

    Transaction(Connection &connection, Kind kind);
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    ~Transaction();
    void commit();

private:
    Connection &m_connection;
    bool m_open = true;
};

} // namespace service
