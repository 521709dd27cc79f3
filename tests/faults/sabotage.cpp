// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/sabotage.h"

#include <algorithm>
#include <array>
#include <sqlite3.h>

namespace faults {

namespace {

struct Bug {
    std::string_view name;
    std::string_view sql; ///< what is replaced wherever it occurs; empty for a bug that a harness plants by itself
    std::string_view by;
};

constexpr std::array bugs{
    Bug{"journal-off", "journal_mode=WAL", "journal_mode=OFF"},
    Bug{"journal-off", "synchronous=FULL", "journal_mode=OFF"},
    Bug{"synchronous-normal", "synchronous=FULL", "synchronous=NORMAL"},
    Bug{"synchronous-off", "synchronous=FULL", "synchronous=OFF"},
    Bug{"no-transaction", "BEGIN IMMEDIATE", "SELECT 1"},
    Bug{"no-transaction", "COMMIT", "SELECT 1"},
    Bug{"versions-ignored", " AND _save = ?", " AND ? IS NOT NULL"},
    Bug{"links-lost", "(owner, member) VALUES (?, ?)", "(owner, member) SELECT ?, ? WHERE 0"},
    Bug{"links-kept", "= NULL WHERE", "= ifnull(NULL, 1) WHERE"},
    Bug{"everything-is-new", "SELECT count(*) FROM sqlite_schema", "SELECT 0"},
    Bug{"early-checkpoints", "temp_store=MEMORY;", "temp_store=MEMORY; PRAGMA wal_autocheckpoint=50;"}, // no bug
    Bug{"failed-saves-acknowledged", {}, {}},
    Bug{"settings-in-place", {}, {}},
    Bug{"damaged-settings-dropped", {}, {}},
    Bug{"idle-save-off", {}, {}},
    Bug{"typing-kept-back", {}, {}},
    Bug{"window-blocked", {}, {}},
    Bug{"ids-forgotten", {}, {}},
    Bug{"sends-forgotten", {}, {}},
    Bug{"failed-runs-kept-quiet", {}, {}},
    Bug{"memory-leaked", {}, {}},
    Bug{"descriptor-leaked", {}, {}},
    Bug{"answered-before-written", {}, {}},
    Bug{"adds-sent-twice", {}, {}},
    Bug{"cut-reply-believed", {}, {}},
    Bug{"truncation-believed", {}, {}},
    Bug{"any-certificate-accepted", {}, {}},
};

std::vector<std::string_view> &planted()
{
    static std::vector<std::string_view> names;
    return names;
}

thread_local int spared = 0;

/// The text with the planted bugs in it; empty when none is.
std::string rewritten(std::string_view sql)
{
    if (planted().empty() || spared > 0)
        return {};
    std::string text(sql);
    for (const Bug &bug : bugs) {
        if (bug.sql.empty() || !isPlanted(bug.name))
            continue;
        for (auto place = text.find(bug.sql); place != std::string::npos;
             place = text.find(bug.sql, place + bug.by.size()))
            text.replace(place, bug.sql.size(), bug.by);
    }
    return text == sql ? std::string() : text;
}

} // namespace

Spared::Spared()
{
    ++spared;
}

Spared::~Spared()
{
    --spared;
}

bool plant(std::string_view name)
{
    const auto bug = std::find_if(bugs.begin(), bugs.end(), [name](const Bug &each) { return each.name == name; });
    if (bug == bugs.end())
        return false;
    planted().push_back(bug->name);
    return true;
}

bool isPlanted(std::string_view name)
{
    return std::find(planted().begin(), planted().end(), name) != planted().end();
}

std::vector<std::string> plantableBugs()
{
    std::vector<std::string> names;
    for (const Bug &bug : bugs) {
        if (names.empty() || names.back() != bug.name)
            names.emplace_back(bug.name);
    }
    return names;
}

// The linker sends the calls that the program's own code makes here first (--wrap).
extern "C" {

using RowHandler = int (*)(void *, int, char **, char **);
int __real_sqlite3_exec(sqlite3 *database, const char *sql, RowHandler handler, void *data, char **error);
int __wrap_sqlite3_exec(sqlite3 *database, const char *sql, RowHandler handler, void *data, char **error);
int __real_sqlite3_prepare_v3(
    sqlite3 *database, const char *sql, int size, unsigned int flags, sqlite3_stmt **statement, const char **tail);
int __wrap_sqlite3_prepare_v3(
    sqlite3 *database, const char *sql, int size, unsigned int flags, sqlite3_stmt **statement, const char **tail);

int __wrap_sqlite3_exec(sqlite3 *database, const char *sql, RowHandler handler, void *data, char **error)
{
    if (isPlanted("journal-off")) // the store's care would refuse it
        sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    const std::string changed = rewritten(sql);
    return __real_sqlite3_exec(database, changed.empty() ? sql : changed.c_str(), handler, data, error);
}

int __wrap_sqlite3_prepare_v3(
    sqlite3 *database, const char *sql, int size, unsigned int flags, sqlite3_stmt **statement, const char **tail)
{
    const std::string changed
        = rewritten(size < 0 ? std::string_view(sql) : std::string_view(sql, static_cast<std::size_t>(size)));
    if (changed.empty())
        return __real_sqlite3_prepare_v3(database, sql, size, flags, statement, tail);
    return __real_sqlite3_prepare_v3(
        database, changed.data(), static_cast<int>(changed.size()), flags, statement, nullptr);
}
}

} // namespace faults
