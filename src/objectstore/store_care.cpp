// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/store_care.h"

#include "objectstore/connection.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <cstdio>
#include <sys/stat.h>

namespace objectstore {

using foundation::Failure;
using foundation::Result;
namespace fs = std::filesystem;

namespace {

std::string problemOf(Connection &connection)
{
    Statement statement = connection.prepare("PRAGMA quick_check(1)");
    const std::string answer = statement.step() ? statement.text(0) : std::string("no answer");
    return answer == "ok" ? std::string() : answer;
}

foundation::Error damaged(const fs::path &file, std::string detail)
{
    return {"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::Damaged),
        "The store \"" + file.filename().string() + "\" is damaged. Some of your tasks may be missing.",
        std::move(detail)};
}

std::string dayOf(foundation::Instant instant)
{
    const foundation::CivilTime local = foundation::toLocal(instant);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", local.year, local.month, local.day);
    return text.data();
}

/// "NAME-" and ".EXT", between which the day stands.
std::pair<std::string, std::string> namePattern(const fs::path &store)
{
    return {store.stem().string() + "-", store.extension().string()};
}

void removeOldest(const fs::path &folder, const fs::path &store)
{
    const auto [start, end] = namePattern(store);
    std::vector<fs::path> copies;
    for (const auto &entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.size() == start.size() + 10 + end.size() && name.starts_with(start) && name.ends_with(end))
            copies.push_back(entry.path());
    }
    std::sort(copies.begin(), copies.end()); // by day
    for (std::size_t i = 0; i + backupsKept < copies.size(); ++i)
        fs::remove(copies[i]);
}

} // namespace

void copyDatabase(Connection &source, const fs::path &copy)
{
    const fs::path part = copy.string() + ".part";
    fs::remove(part);
    Connection::createPrivateFile(part);
    {
        SQLite::Database target(part.string(), SQLite::OPEN_READWRITE);
        sqlite3_backup *backup = sqlite3_backup_init(target.getHandle(), "main", source.handle(), "main");
        int code = backup ? sqlite3_backup_step(backup, -1) : SQLITE_ERROR;
        if (backup)
            code = sqlite3_backup_finish(backup);
        if (code != SQLITE_OK)
            throw SQLite::Exception(target.getHandle(), code);
        target.exec("PRAGMA journal_mode=DELETE"); // a copy is one file
    }
    Connection written(part, {}, Connection::Mode::Existing);
    if (const std::string problem = problemOf(written); !problem.empty())
        throw SQLite::Exception(problem, SQLITE_CORRUPT);
    fs::rename(part, copy);
}

Result<bool> backUpDaily(const Store &store, const fs::path &folder)
{
    const auto [start, end] = namePattern(store.file());
    const fs::path copy = folder / (start + dayOf(store.clock().now()) + end);
    try {
        if (fs::exists(copy))
            return false;
        if (::mkdir(folder.c_str(), S_IRWXU) != 0 && !fs::is_directory(folder))
            throw fs::filesystem_error("mkdir", folder, std::error_code(errno, std::generic_category()));
        auto connection = store.connect();
        if (!connection)
            return Failure(connection.error());
        copyDatabase(**connection, copy);
        removeOldest(folder, store.file());
        return true;
    } catch (const SQLite::Exception &exception) {
        if (primaryCode(exception) == SQLITE_CORRUPT)
            return Failure(damaged(store.file(), exception.what()));
        return Failure(storeError(StoreErrorCode::NotSaved, "The daily backup could not be written.", exception));
    } catch (const fs::filesystem_error &error) {
        return Failure({"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::NotSaved),
            "The daily backup could not be written.", error.what()});
    }
}

Result<void> quickCheck(const Store &store)
{
    auto connection = store.connect();
    if (!connection)
        return Failure(connection.error());
    try {
        if (std::string problem = problemOf(**connection); !problem.empty())
            return Failure(damaged(store.file(), std::move(problem)));
    } catch (const SQLite::Exception &exception) {
        return Failure(damaged(store.file(), exception.what()));
    }
    return {};
}

} // namespace objectstore
