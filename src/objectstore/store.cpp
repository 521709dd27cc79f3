// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/store.h"

#include "objectstore/connection.h"
#include "objectstore/schema.h"

#include <SQLiteCpp/Exception.h>
#include <charconv>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <system_error>
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

bool isEmptyFile(Connection &connection)
{
    Statement statement = connection.prepare("SELECT count(*) FROM sqlite_schema");
    return statement.step() && statement.integer(0) == 0;
}

/// Triggers, views, virtual tables and generated columns do not come from this program; a store that has some is not
/// believed.
bool hasForeignSchema(Connection &connection)
{
    Statement statement = connection.prepare(
        "SELECT EXISTS (SELECT 1 FROM sqlite_schema WHERE type NOT IN ('table', 'index') OR sql LIKE 'CREATE VIRTUAL%')"
        " OR EXISTS (SELECT 1 FROM sqlite_schema s, pragma_table_xinfo(s.name) c WHERE s.type = 'table' AND c.hidden "
        "<> 0)");
    return statement.step() && statement.integer(0) != 0;
}

/// SQLite makes files that everybody may read unless the umask forbids it. The files beside the store take its mode.
void makePrivateFile(const std::filesystem::path &file)
{
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0)
        ::close(descriptor);
}

/// Keeps the store beside itself as it is before a migration: whole, or not at all under that name. What an earlier
/// attempt left is replaced.
void keepCopy(Connection &connection, const std::filesystem::path &file, int version)
{
    const std::string copy = file.string() + ".before-" + std::to_string(version);
    const std::string fresh = copy + ".new";
    std::error_code error;
    std::filesystem::remove(fresh, error);
    makePrivateFile(fresh);
    {
        Statement statement = connection.prepare("VACUUM INTO ?");
        statement.bind(ValueView(std::string_view(fresh))).run();
    }
    std::filesystem::rename(fresh, copy, error);
    if (error)
        throw SQLite::Exception("The copy before the migration could not be kept: " + error.message(), SQLITE_CANTOPEN);
}

foundation::Error refusal(StoreErrorCode code, std::string sentence)
{
    return {"ObjectStoreErrorDomain", static_cast<int>(code), std::move(sentence), {}};
}

} // namespace

Store::Store(const ObjectModel &model, std::filesystem::path file, const foundation::Clock &clock, std::string vfs)
    : m_model(model), m_file(std::move(file)), m_clock(clock), m_vfs(std::move(vfs))
{ }

Store::~Store() = default;

Result<std::unique_ptr<Store>> Store::open(
    const ObjectModel &model, const std::filesystem::path &file, const foundation::Clock &clock, std::string vfs)
{
    std::unique_ptr<Store> store(new Store(model, file, clock, std::move(vfs)));
    if (store->m_vfs.empty())
        makePrivateFile(file);
    for (const Access access : {Access::Create, Access::Read}) {
        try {
            if (auto prepared = store->prepare(access); !prepared)
                return Failure(std::move(prepared.error()));
            break;
        } catch (const SQLite::Exception &exception) {
            if (access == Access::Read || !store->canOnlyBeRead(exception))
                return Failure(store->whyNotOpened(exception));
        }
    }
    return store;
}

/// Looks whether the file is a store that can be used, and makes it one where it is new or older.
Result<void> Store::prepare(Access access)
{
    const std::string name = m_file.filename().string();
    auto first = std::make_unique<Connection>(m_file, m_vfs, access);
    Connection &connection = *first;
    const bool fresh = isEmptyFile(connection);
    if (!fresh && (pragma(connection, "application_id") != applicationId || hasForeignSchema(connection)))
        return Failure(refusal(StoreErrorCode::Damaged, "The file \"" + name + "\" is not a task store."));
    const std::int64_t version = pragma(connection, "user_version");
    if (version > m_model.version())
        return Failure(refusal(StoreErrorCode::NewerSchema,
            "The store \"" + name + "\" was written by a newer version of the program. It was left as it is."));
    m_readOnly = access == Access::Read;
    if (m_readOnly && (fresh || version < m_model.version()))
        return Failure(refusal(StoreErrorCode::CannotOpen,
            "The store \"" + name
                + "\" is of an older version and cannot be written, so it cannot be brought up to date."));
    if (fresh || version < m_model.version())
        makeOrMigrate(connection, fresh);
    m_uuid = storeValue(connection, "uuid");
    connection.keepFilesOnClose(false);
    m_first = std::move(first);
    return {};
}

void Store::makeOrMigrate(Connection &connection, bool fresh) const
{
    if (fresh)
        switchToWriteAheadLog(connection);
    else // an older store is migrated in place; its last state stays beside it
        keepCopy(connection, m_file, m_model.version());
    WriteTransaction transaction(connection);
    createSchema(connection, m_model);
    if (storeValue(connection, "uuid").empty()) {
        connection.execute("PRAGMA application_id=" + std::to_string(applicationId));
        setStoreValue(connection, "uuid", newUuid());
        setStoreValue(connection, "save", "0");
    }
    transaction.commit();
}

/// Whether what failed was writing, where reading can be had: in a folder or on a disk that is read-only. Changes that
/// lie in a log beside the store could not be read so, and half of the tasks are worse than none.
bool Store::canOnlyBeRead(const SQLite::Exception &exception) const
{
    if (primaryCode(exception) != SQLITE_CANTOPEN && primaryCode(exception) != SQLITE_READONLY)
        return false;
    const std::string file = m_file.string();
    const std::string folder = m_file.has_parent_path() ? m_file.parent_path().string() : ".";
    std::error_code none;
    const auto logged = std::filesystem::file_size(file + "-wal", none);
    return m_vfs.empty() && ::access(file.c_str(), R_OK) == 0
        && (::access(file.c_str(), W_OK) != 0 || ::access(folder.c_str(), W_OK) != 0) && (none || logged == 0);
}

foundation::Error Store::whyNotOpened(const SQLite::Exception &exception) const
{
    const std::string name = m_file.filename().string();
    const bool damaged = primaryCode(exception) == SQLITE_NOTADB || primaryCode(exception) == SQLITE_CORRUPT;
    return storeError(damaged ? StoreErrorCode::Damaged : StoreErrorCode::CannotOpen,
        damaged ? "The store \"" + name + "\" is damaged. It was left as it is."
                : "The store \"" + name + "\" could not be opened.",
        exception);
}

Result<void> Store::check() const
{
    try {
        Connection connection(m_file, m_vfs, m_readOnly ? Access::Read : Access::Write);
        Statement statement = connection.prepare("PRAGMA quick_check(1)");
        const std::string found = statement.step() ? statement.text(0) : std::string();
        if (found == "ok")
            return {};
        foundation::Error error = refusal(StoreErrorCode::Damaged,
            "The store \"" + m_file.filename().string() + "\" is damaged. Some of your tasks may be lost or wrong.");
        error.detail = found;
        return Failure(std::move(error));
    } catch (const SQLite::Exception &exception) {
        return Failure(whyNotOpened(exception));
    }
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
        auto connection = std::make_unique<Connection>(m_file, m_vfs, m_readOnly ? Access::Read : Access::Write);
        if (storeValue(*connection, "uuid") != m_uuid)
            return Failure(refusal(
                StoreErrorCode::Moved, "Another store lies in the place of \"" + m_file.filename().string() + "\"."));
        return connection;
    } catch (const SQLite::Exception &exception) {
        return Failure(whyNotOpened(exception));
    }
}

} // namespace objectstore
