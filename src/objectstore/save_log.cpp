// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/save_log.h"

#include <bit>

namespace objectstore {

namespace {
constexpr std::int64_t kept = 256; // saves that a context may lie behind before it has to compare every record
constexpr std::int64_t pruning = 64; // saves between two prunings, which dirty one page more
static_assert(std::endian::native == std::endian::little, "keys lie in the file with their lowest byte first");
} // namespace

void SaveLog::createTable()
{
    // the key is one number, so that to find a place never means to read the long lists of keys beside it
    m_connection.execute("CREATE TABLE IF NOT EXISTS _saves (place INTEGER PRIMARY KEY, entity TEXT, kind INTEGER, "
                         "token TEXT, keys BLOB)");
}

std::int64_t SaveLog::lastSave()
{
    Statement statement = m_connection.prepare("SELECT max(place) FROM _saves");
    return statement.step() ? statement.integer(0) / placesOfASave : 0;
}

void SaveLog::append(std::int64_t save, const std::string &token, const EntityDescription &entity, Kind kind,
    const std::vector<std::int64_t> &keys)
{
    const std::int64_t place = save * placesOfASave + entity.index() * 3 + static_cast<int>(kind);
    Statement statement
        = m_connection.prepare("INSERT INTO _saves (place, entity, kind, token, keys) VALUES (?, ?, ?, ?, ?)");
    statement.bind(place).bind(ValueView(std::string_view(entity.name()))).bind(static_cast<std::int64_t>(kind));
    statement.bind(ValueView(std::string_view(token))).bind(ValueView(std::as_bytes(std::span(keys)))).run();
    if (save % pruning == 0) {
        Statement prune = m_connection.prepare("DELETE FROM _saves WHERE place < ?");
        prune.bind((save - kept) * placesOfASave).run();
    }
}

bool SaveLog::holds(std::int64_t save, const std::string &token)
{
    Statement statement = m_connection.prepare("SELECT 1 FROM _saves WHERE place >= ? AND place < ? AND token = ?");
    statement.bind(save * placesOfASave).bind((save + 1) * placesOfASave).bind(ValueView(std::string_view(token)));
    return statement.step();
}

bool SaveLog::reachesBackTo(std::int64_t seen)
{
    Statement statement = m_connection.prepare("SELECT min(place) FROM _saves");
    return !statement.step() || statement.integer(0) / placesOfASave <= seen + 1;
}

} // namespace objectstore
