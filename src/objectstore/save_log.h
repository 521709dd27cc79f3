// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/connection.h"
#include "objectstore/object_context.h"

#include <cstring>
#include <optional>
#include <vector>

namespace objectstore {

/// The store's own record of its last saves: which records each wrote, in the table `_saves`. It numbers the saves,
/// tells a context what others have changed without a look at the records themselves, and tells a save whose commit
/// reported an error whether it was made all the same. Belongs to its connection's thread; throws SQLite::Exception.
class SaveLog
{
public:
    static constexpr std::int64_t placesOfASave = 1024; ///< three for each entity

    enum class Kind { Inserted, Updated, Deleted };

    explicit SaveLog(Connection &connection) : m_connection(connection) { }

    /// Creates the table; run inside a write transaction.
    void createTable();

    /// The number of the last save, 0 where there was none.
    [[nodiscard]] std::int64_t lastSave();
    /// Adds to the save `save` the records of one entity; run inside its transaction. `token` is the save's own.
    void append(std::int64_t save, const std::string &token, const EntityDescription &entity, Kind kind,
        const std::vector<std::int64_t> &keys);
    [[nodiscard]] bool holds(std::int64_t save, const std::string &token);

    /// What the saves after `seen` wrote, in their order, with the number of the save; nothing where the log no longer
    /// goes back so far. `visit(save, kind, id)`.
    template <typename Visit> [[nodiscard]] bool forEachAfter(std::int64_t seen, const ObjectModel &model, Visit visit);

private:
    [[nodiscard]] bool reachesBackTo(std::int64_t seen);

    Connection &m_connection;
};

template <typename Visit> bool SaveLog::forEachAfter(std::int64_t seen, const ObjectModel &model, Visit visit)
{
    if (!reachesBackTo(seen))
        return false;
    Statement statement
        = m_connection.prepare("SELECT place, entity, kind, keys FROM _saves WHERE place >= ? ORDER BY place");
    statement.bind((seen + 1) * placesOfASave);
    while (statement.step()) {
        const EntityDescription *entity = model.entity(statement.text(1));
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement.handle(), 3));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.handle(), 3));
        for (std::size_t place = 0; entity && place + sizeof(std::int64_t) <= size; place += sizeof(std::int64_t)) {
            std::int64_t key = 0;
            std::memcpy(&key, bytes + place, sizeof key);
            visit(statement.integer(0) / placesOfASave, static_cast<Kind>(statement.integer(2)), ObjectID{entity, key});
        }
    }
    return true;
}

} // namespace objectstore
