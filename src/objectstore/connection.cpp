// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/connection.h"

#include "objectstore/predicate.h"

#include <SQLiteCpp/Exception.h>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace objectstore {

namespace {
constexpr int busyTimeout = 10000; // milliseconds; a first pull of 100,000 tasks holds the lock for seconds at most
constexpr int longestValue = 64 * 1024 * 1024; // bytes; a longer one is no text that a person wrote

void check(int code, sqlite3 *database)
{
    if (code != SQLITE_OK)
        throw SQLite::Exception(database, code);
}

/// The name to open: the path, or a URI that says that nobody writes the file.
std::string nameFor(const std::filesystem::path &file, Connection::Mode mode)
{
    if (mode == Connection::Mode::Create)
        Connection::createPrivateFile(file);
    if (mode != Connection::Mode::Immutable)
        return file.string();
    std::string uri = "file:";
    for (const char letter : std::filesystem::absolute(file).string()) {
        if (letter == '%' || letter == '?' || letter == '#')
            uri += letter == '%' ? "%25" : letter == '?' ? "%3f" : "%23";
        else
            uri += letter;
    }
    return uri + "?immutable=1";
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

Statement &Statement::bind(const ValueView &value)
{
    const int place = ++m_bound;
    const int code = std::visit(
        [this, place](const auto &held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>)
                return sqlite3_bind_null(m_statement, place);
            else if constexpr (std::is_same_v<Held, bool> || std::is_same_v<Held, std::int64_t>)
                return sqlite3_bind_int64(m_statement, place, held);
            else if constexpr (std::is_same_v<Held, double>)
                return sqlite3_bind_double(m_statement, place, held);
            else if constexpr (std::is_same_v<Held, Instant>)
                return sqlite3_bind_double(m_statement, place, held.seconds);
            else if constexpr (std::is_same_v<Held, ObjectID>)
                return held ? sqlite3_bind_int64(m_statement, place, held.key) : sqlite3_bind_null(m_statement, place);
            else if constexpr (std::is_same_v<Held, std::string_view>)
                return sqlite3_bind_text64(
                    m_statement, place, held.data() ? held.data() : "", held.size(), SQLITE_STATIC, SQLITE_UTF8);
            else if (held.empty())
                return sqlite3_bind_zeroblob(m_statement, place, 0);
            else
                return sqlite3_bind_blob64(m_statement, place, held.data(), held.size(), SQLITE_STATIC);
        },
        value);
    check(code, sqlite3_db_handle(m_statement));
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    throw SQLite::Exception(sqlite3_db_handle(m_statement), code);
}

void Statement::again()
{
    sqlite3_reset(m_statement);
    m_bound = 0;
}

std::string Statement::text(int column) const
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    return bytes ? std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column)))
                 : std::string();
}

Connection::Connection(const std::filesystem::path &file, const std::string &vfs, Mode mode)
    : m_database(nameFor(file, mode),
        SQLite::OPEN_NOMUTEX
            | (mode == Mode::Immutable ? SQLite::OPEN_READONLY | SQLite::OPEN_URI : SQLite::OPEN_READWRITE),
        busyTimeout, vfs)
{
    keepFilesOnClose(true);
    sqlite3_extended_result_codes(handle(), 1);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_limit(handle(), SQLITE_LIMIT_LENGTH, longestValue);
    execute("PRAGMA synchronous=FULL; PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY; "
            "PRAGMA cache_size=-8000;"); // KiB; a large save would write and read its indexes again and again
    installPredicateFunctions(handle());
    keepFilesOnClose(mode == Mode::Create); // who opens to create has yet to see whether this is a store
}

Statement Connection::prepare(const std::string &sql)
{
    auto &kept = m_statements[sql];
    if (!kept) {
        sqlite3_stmt *made = nullptr;
        check(sqlite3_prepare_v3(
                  handle(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &made, nullptr),
            handle());
        kept.reset(made);
    } else if (sqlite3_stmt_busy(kept.get())) {
        throw SQLite::Exception("A statement was used while it was running: " + sql);
    }
    return Statement(kept.get());
}

void Connection::createPrivateFile(const std::filesystem::path &file)
{
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0)
        ::close(descriptor);
    else if (errno != EEXIST)
        throw SQLite::Exception(std::generic_category().message(errno), SQLITE_CANTOPEN);
}

bool Connection::hasMoved() const
{
    int moved = 0;
    return sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

std::int64_t Connection::dataVersion()
{
    Statement statement = prepare("PRAGMA data_version");
    return statement.step() ? statement.integer(0) : 0;
}

WriteTransaction::WriteTransaction(Connection &connection) : m_connection(connection)
{
    m_connection.prepare("BEGIN IMMEDIATE").run();
}

WriteTransaction::~WriteTransaction()
{
    if (m_open && !sqlite3_get_autocommit(m_connection.handle()))
        sqlite3_exec(m_connection.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void WriteTransaction::commit()
{
    m_connection.prepare("COMMIT").run();
    m_open = false;
}

foundation::Error storeError(StoreErrorCode code, std::string sentence, const SQLite::Exception &exception)
{
    return {"ObjectStoreErrorDomain", static_cast<int>(code), std::move(sentence),
        std::string(exception.what()) + " (SQLite " + std::to_string(exception.getExtendedErrorCode()) + ")"};
}

int primaryCode(const SQLite::Exception &exception)
{
    return exception.getErrorCode() & 0xff;
}

std::string identifier(std::string_view name)
{
    std::string text = "\"";
    text += name;
    return text + "\"";
}

} // namespace objectstore
