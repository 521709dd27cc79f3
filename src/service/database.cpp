// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/database.h"

#include "service/schema.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace service {

namespace {

constexpr std::string_view memoryFile = ":memory:";

std::string quoted(const std::filesystem::path &path)
{
    return "\"" + path.string() + "\"";
}

Failure systemFailure(const std::string &sentence)
{
    return Failure(sentence + ": " + std::strerror(errno) + ".");
}

/// Makes the folder and an empty file for their owner alone; what is there already stays as it is.
Result<void> makePlace(const std::filesystem::path &folder, const std::filesystem::path &file)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        if (folder.has_parent_path())
            std::filesystem::create_directories(folder.parent_path(), error);
        if (::mkdir(folder.c_str(), 0700) != 0)
            return systemFailure("The folder " + quoted(folder) + " cannot be made");
        ::chmod(folder.c_str(), 0700); // whatever the umask took away
    }
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return systemFailure("The data file " + quoted(file) + " cannot be opened");
    const bool isClosed = ::fchmod(descriptor, 0600) == 0; // SQLite gives its side files the same mode
    ::close(descriptor);
    if (!isClosed)
        return systemFailure("The data file " + quoted(file) + " cannot be made private");
    return {};
}

int bigEndian(const char *bytes)
{
    unsigned number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return static_cast<int>(number);
}

Failure newerFile(const std::filesystem::path &file)
{
    return Failure("The data file " + quoted(file) + " was written by a newer version of this program.");
}

/// Looks at the file's header without SQLite, which may write beside a file that it opens.
Result<void> checkHeader(const std::filesystem::path &file)
{
    std::array<char, 100> header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(header.data(), header.size());
    if (stream.gcount() == 0)
        return {};
    if (stream.gcount() < 100 || std::memcmp(header.data(), "SQLite format 3", 16) != 0
        || bigEndian(&header[68]) != applicationId)
        return Failure("The file " + quoted(file) + " is damaged, or not a data file of this program.");
    if (bigEndian(&header[60]) > schemaVersion)
        return newerFile(file);
    return {};
}

} // namespace

Result<std::unique_ptr<Database>> Database::open(const std::filesystem::path &folder)
{
    const std::filesystem::path file = folder / "service.db";
    if (auto made = makePlace(folder, file); !made)
        return Failure(made.error());
    if (auto checked = checkHeader(file); !checked)
        return Failure(checked.error());
    try {
        std::unique_ptr<Database> database(new Database(file.string()));
        database->prepareFile();
        return database;
    } catch (const DatabaseError &error) {
        return Failure("The data file " + quoted(file) + " cannot be used: " + error.what() + ".");
    }
}

std::unique_ptr<Database> Database::inMemory()
{
    std::unique_ptr<Database> database(new Database(std::string(memoryFile)));
    database->m_writer.execute(schema);
    database->m_writer.execute(markSchema);
    return database;
}

/// Checks the file, and makes the tables of a new one.
void Database::prepareFile()
{
    sqlite3_db_config(m_writer.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); // no writing if it is damaged
    Statement check = m_writer.prepare("PRAGMA quick_check(1)");
    if (!check.step() || check.text(0) != "ok")
        throw DatabaseError(SQLITE_CORRUPT);
    check.run();
    sqlite3_db_config(m_writer.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);

    // In one transaction before the change to WAL, so that the file itself says what it is from the first moment.
    Transaction transaction(m_writer, Transaction::Kind::Write);
    if (m_writer.number("PRAGMA user_version") == 0) {
        m_writer.execute(schema);
        m_writer.execute(("PRAGMA application_id=" + std::to_string(applicationId)
            + "; PRAGMA user_version=" + std::to_string(schemaVersion))
                             .c_str());
    }
    m_writer.execute(markSchema);
    transaction.commit();
    m_writer.execute("PRAGMA journal_mode=WAL");
}

std::unique_ptr<Connection> Database::takeReader()
{
    {
        const std::scoped_lock lock(m_idleMutex);
        if (!m_idleReaders.empty()) {
            auto reader = std::move(m_idleReaders.back());
            m_idleReaders.pop_back();
            return reader;
        }
    }
    return std::make_unique<Connection>(m_file);
}

void Database::read(const Work &work)
{
    if (m_file == memoryFile) { // what is in memory belongs to its one connection
        write(work);
        return;
    }
    // A reader goes back even when `work` throws: a wrong key must not cost the opening of a file.
    const auto giveBack = [this](Connection *reader) {
        const std::scoped_lock lock(m_idleMutex);
        m_idleReaders.emplace_back(reader);
    };
    const std::unique_ptr<Connection, decltype(giveBack)> reader(takeReader().release(), giveBack);
    Transaction transaction(*reader, Transaction::Kind::Read);
    work(*reader);
    transaction.commit();
}

void Database::write(const Work &work)
{
    const std::scoped_lock lock(m_writing);
    Transaction transaction(m_writer, Transaction::Kind::Write);
    work(m_writer);
    transaction.commit();
}

} // namespace service
