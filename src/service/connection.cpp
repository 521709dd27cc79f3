// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/connection.h"

#include <chrono>
#include <thread>

namespace service {

namespace {

using namespace std::chrono_literals;
constexpr auto longestWait = 10s;
constexpr std::size_t mostStatements = 200;

void check(int code, sqlite3 *database)
{
    if (code != SQLITE_OK)
        throw DatabaseError(database, code);
}

} // namespace

Statement::~Statement()
{
    if (m_statement) {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
}

Statement &Statement::bind(std::int64_t value)
{
    check(sqlite3_bind_int64(m_statement, ++m_bound, value), sqlite3_db_handle(m_statement));
    return *this;
}

Statement &Statement::bind(std::string_view text)
{
    const char *bytes = text.data() ? text.data() : "";
    check(sqlite3_bind_text64(m_statement, ++m_bound, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8),
        sqlite3_db_handle(m_statement));
    return *this;
}

Statement &Statement::bindValue(const Value &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return bind(*number);
    return bind(std::string_view(std::get<std::string>(value)));
}

bool Statement::step()
{
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    throw DatabaseError(sqlite3_db_handle(m_statement), code);
}

std::string_view Statement::text(int column) const
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column)))
                 : std::string_view();
}

Connection::Connection(const std::string &file)
{
    sqlite3 *opened = nullptr;
    const int code = sqlite3_open_v2(
        file.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    m_database.reset(opened);
    if (code != SQLITE_OK)
        throw DatabaseError(code);
    sqlite3_busy_timeout(opened, 1000);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    execute("PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY;"
            "PRAGMA case_sensitive_like=OFF; PRAGMA cache_size=-16000;");
}

Statement Connection::prepare(const std::string &sql)
{
    auto found = m_statements.find(sql);
    if (found == m_statements.end()) {
        if (m_statements.size() >= mostStatements) // clients combine filters and fields as they like
            std::erase_if(m_statements, [](const auto &kept) { return !sqlite3_stmt_busy(kept.second.get()); });
        sqlite3_stmt *made = nullptr;
        check(sqlite3_prepare_v3(
                  handle(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &made, nullptr),
            handle());
        found = m_statements.emplace(sql, made).first;
    }
    return Statement(found->second.get());
}

void Connection::execute(const char *sql)
{
    check(sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr), handle());
}

std::int64_t Connection::number(const char *sql)
{
    Statement statement = prepare(sql);
    return statement.step() ? statement.integer(0) : 0;
}

Transaction::Transaction(Connection &connection, Kind kind) : m_connection(connection)
{
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    for (;;) {
        try {
            m_connection.prepare(kind == Kind::Write ? "BEGIN IMMEDIATE" : "BEGIN").run();
            return;
        } catch (const DatabaseError &error) {
            if (error.code() != SQLITE_BUSY || std::chrono::steady_clock::now() > deadline)
                throw;
            std::this_thread::sleep_for(5ms);
        }
    }
}

Transaction::~Transaction()
{
    if (m_open && !sqlite3_get_autocommit(m_connection.handle()))
        sqlite3_exec(m_connection.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit()
{
    m_connection.prepare("COMMIT").run();
    m_open = false;
}

} // namespace service
