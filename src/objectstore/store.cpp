// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/store.h"

#include "objectstore/connection.h"
#include "objectstore/random_number.h"
#include "objectstore/schema.h"
#include "objectstore/store_care.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <random>
#include <set>
#include <unistd.h>

namespace objectstore {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int applicationId = 0x51564c31; // "QVL1": tells a store from any other SQLite file
constexpr std::string_view uriScheme = "x-objectstore://";

std::int64_t pragma(Connection &connection, const std::string &name)
{
    Statement statement = connection.prepare("PRAGMA " + name);
    return statement.step() ? statement.integer(0) : 0;
}

std::string newUuid()
{
    std::random_device random;
    std::uniform_int_distribution<int> digit(0, 15);
    std::string text = "xxxxxxxx-xxxx-4xxx-axxx-xxxxxxxxxxxx";
    for (char &letter : text) {
        if (letter == 'x')
            letter = "0123456789ABCDEF"[digit(random)];
    }
    return text;
}

/// Some SQLite calls report a lock at once, whatever the busy timeout; a change of the journal mode is one.
void switchToWriteAheadLog(Connection &connection)
{
    for (int attempt = 0;; ++attempt) {
        try {
            connection.execute("PRAGMA journal_mode=WAL");
            return;
        } catch (const SQLite::Exception &exception) {
            if (primaryCode(exception) != SQLITE_BUSY || attempt == 50)
                throw;
            sqlite3_sleep(20);
        }
    }
}

/// SQLite counts the memory that it takes under a lock of all connections, and nobody asks for the count. It can be
/// told so once, before its first use.
void leaveMemoryUncounted()
{
    [[maybe_unused]] static const int told = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

bool isEmptyFile(Connection &connection)
{
    Statement statement = connection.prepare("SELECT count(*) FROM sqlite_schema");
    return statement.step() && statement.integer(0) == 0;
}

/// Triggers, views, tables and indexes of unknown make and computed columns do not come from this program; a store that
/// has some is not believed. Tables of an older model may since have gone from it.
bool hasForeignSchema(Connection &connection, const ObjectModel &model)
{
    const std::set<std::string> known = schemaNames(model);
    const bool older = pragma(connection, "user_version") < model.version();
    Statement statement
        = connection.prepare("SELECT name, type FROM sqlite_schema WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
    while (statement.step()) {
        const std::string type = statement.text(1);
        const bool data = type == "table" || type == "index";
        if (!data || (!older && !known.contains(statement.text(0))))
            return true;
    }
    Statement computed = connection.prepare(
        "SELECT EXISTS (SELECT 1 FROM sqlite_schema WHERE sql LIKE 'CREATE VIRTUAL%') OR EXISTS (SELECT 1 FROM "
        "sqlite_schema s, pragma_table_xinfo(s.name) c WHERE s.type = 'table' AND c.hidden <> 0)");
    return computed.step() && computed.integer(0) != 0;
}

foundation::Error refusal(StoreErrorCode code, std::string sentence, std::string detail = {})
{
    return {"ObjectStoreErrorDomain", static_cast<int>(code), std::move(sentence), std::move(detail)};
}

} // namespace

Store::Store(const ObjectModel &model, std::filesystem::path file, const foundation::Clock &clock, std::string vfs)
    : m_model(model), m_file(std::move(file)), m_clock(clock), m_vfs(std::move(vfs))
{ }

Store::~Store() = default;

/// Opens the file for the first time. A file that may be read only, in a folder where SQLite can make none of its side
/// files, is read as it lies there, unless one of them holds what was saved last.
std::unique_ptr<Connection> Store::openFile()
{
    std::unique_ptr<Connection> connection;
    try {
        connection = std::make_unique<Connection>(m_file, m_vfs, Connection::Mode::Create);
        (void)pragma(*connection, "schema_version"); // reads the file for the first time
    } catch (const SQLite::Exception &exception) {
        std::error_code none;
        const auto log = std::filesystem::file_size(m_file.string() + "-wal", none);
        const bool nothingLogged = static_cast<bool>(none) || log == 0;
        const int code = primaryCode(exception);
        // a full disk gives the same error, and it will have room again
        const auto allowed = [](const std::string &path, int how) {
            return ::faccessat(AT_FDCWD, path.c_str(), how, AT_EACCESS) == 0;
        };
        const std::string folder = m_file.has_parent_path() ? m_file.parent_path().string() : ".";
        const bool forbidden = !allowed(m_file.string(), W_OK) || !allowed(folder, W_OK);
        if ((code != SQLITE_CANTOPEN && code != SQLITE_READONLY) || !forbidden || !nothingLogged
            || !allowed(m_file.string(), R_OK))
            throw;
        m_immutable = true;
        connection = std::make_unique<Connection>(m_file, m_vfs, Connection::Mode::Immutable);
    }
    if (connection->isReadOnly())
        m_notice = "The store \"" + m_file.filename().string()
            + "\" can be read but not changed. To change tasks, make the file and its folder writable and start again.";
    return connection;
}

Result<std::unique_ptr<Store>> Store::open(
    const ObjectModel &model, const std::filesystem::path &file, const foundation::Clock &clock, std::string vfs)
{
    leaveMemoryUncounted();
    std::unique_ptr<Store> store(new Store(model, file, clock, std::move(vfs)));
    const std::string name = file.filename().string();
    try {
        auto first = store->openFile();
        Connection &connection = *first;
        const bool fresh = isEmptyFile(connection);
        if (!fresh && (pragma(connection, "application_id") != applicationId || hasForeignSchema(connection, model)))
            return Failure(refusal(StoreErrorCode::Damaged, "The file \"" + name + "\" is not a task store."));
        if (pragma(connection, "user_version") > model.version())
            return Failure(refusal(StoreErrorCode::NewerSchema,
                "The store \"" + name + "\" was written by a newer version of the program. It was left as it is."));
        if (fresh)
            switchToWriteAheadLog(connection);
        if (fresh || pragma(connection, "user_version") < model.version()) {
            if (!fresh) // an older store is migrated in place; its last state stays beside it
                copyDatabase(connection, file.string() + ".before-" + std::to_string(model.version()));
            WriteTransaction transaction(connection);
            createSchema(connection, model);
            if (storeValue(connection, "uuid").empty()) {
                connection.execute("PRAGMA application_id=" + std::to_string(applicationId));
                setStoreValue(connection, "uuid", newUuid());
            }
            transaction.commit();
        }
        store->m_uuid = storeValue(connection, "uuid");
        connection.keepFilesOnClose(false);
        store->m_first = std::move(first);
    } catch (const std::filesystem::filesystem_error &error) {
        return Failure(
            refusal(StoreErrorCode::CannotOpen, "The store \"" + name + "\" could not be opened.", error.what()));
    } catch (const SQLite::Exception &exception) {
        const bool damaged = primaryCode(exception) == SQLITE_NOTADB || primaryCode(exception) == SQLITE_CORRUPT;
        return Failure(storeError(damaged ? StoreErrorCode::Damaged : StoreErrorCode::CannotOpen,
            damaged ? "The store \"" + name + "\" is damaged. It was left as it is."
                    : "The store \"" + name + "\" could not be opened.",
            exception));
    }
    return store;
}

/// Keys grow with time: the seconds, and below them 32 bits that start at random in each second and count on from
/// there, so that two processes that insert at the same moment do not meet.
std::int64_t Store::nextKey()
{
    constexpr double epoch = 1577836800; // 2020-01-01
    const auto seconds = std::max<std::int64_t>(static_cast<std::int64_t>(m_clock.now().seconds - epoch), 1);
    std::int64_t last = m_lastKey;
    std::int64_t next = 0;
    do {
        next = last >> 32 >= seconds ? last + 1
                                     : (seconds << 32) | static_cast<std::int64_t>(randomNumber() & 0x7fffffffU);
    } while (!m_lastKey.compare_exchange_weak(last, next));
    return next;
}

std::string Store::uri(const ObjectID &id) const
{
    return id ? std::string(uriScheme) + m_uuid + "/" + id.entity->name() + "/" + std::to_string(id.key)
              : std::string();
}

ObjectID Store::objectID(std::string_view uri) const
{
    const std::string prefix = std::string(uriScheme) + m_uuid + "/";
    if (!uri.starts_with(prefix))
        return {};
    uri.remove_prefix(prefix.size());
    const std::size_t slash = uri.find('/');
    if (slash == std::string_view::npos)
        return {};
    ObjectID id{m_model.entity(uri.substr(0, slash)), 0};
    const std::string_view digits = uri.substr(slash + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id.key);
    const bool whole = error == std::errc() && end == digits.data() + digits.size() && id.key > 0;
    return id.entity && whole ? id : ObjectID{};
}

Result<std::unique_ptr<Connection>> Store::connect() const
{
    if (const std::scoped_lock lock(m_mutex); m_first)
        return std::move(m_first);
    try {
        auto connection = std::make_unique<Connection>(
            m_file, m_vfs, m_immutable ? Connection::Mode::Immutable : Connection::Mode::Existing);
        if (storeValue(*connection, "uuid") != m_uuid)
            return Failure(refusal(StoreErrorCode::Moved,
                "Another store lies in the place of \"" + m_file.filename().string() + "\".", m_file.string()));
        return connection;
    } catch (const SQLite::Exception &exception) {
        return Failure(storeError(StoreErrorCode::CannotOpen,
            "The store \"" + m_file.filename().string() + "\" could not be opened.", exception));
    }
}

} // namespace objectstore
