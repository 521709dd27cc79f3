// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/invariants.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <algorithm>
#include <set>

namespace faults {

using objectstore::EntityDescription;
using objectstore::ObjectModel;
using objectstore::Property;

namespace {

SQLite::Database open(const std::filesystem::path &file)
{
    return {file.string(), SQLite::OPEN_READWRITE, 5000};
}

std::string quoted(const std::string &name)
{
    return "\"" + name + "\"";
}

std::vector<std::string> rows(SQLite::Database &database, const std::string &select)
{
    std::vector<std::string> texts;
    SQLite::Statement statement(database, select);
    while (statement.executeStep())
        texts.push_back(statement.getColumn(0).getString());
    return texts;
}

void expectNone(
    std::vector<std::string> &problems, SQLite::Database &database, const std::string &select, const std::string &what)
{
    const auto found = rows(database, select);
    if (!found.empty())
        problems.push_back(what + ": " + std::to_string(found.size()) + ", the first is " + found.front());
}

std::set<std::string> knownTables(const ObjectModel &model)
{
    std::set<std::string> names{"_store", "_saves"};
    for (const auto &entity : model.entities()) {
        names.insert(entity->name());
        for (const Property *relationship : entity->toManyRelationships())
            names.insert(relationship->joinTable);
    }
    return names;
}

void checkReferences(std::vector<std::string> &problems, SQLite::Database &database, const EntityDescription &entity)
{
    for (const Property *column : entity.columns()) {
        if (!column->isToOne())
            continue;
        expectNone(problems, database,
            "SELECT _key FROM " + quoted(entity.name()) + " WHERE " + quoted(column->name) + " IS NOT NULL AND "
                + quoted(column->name) + " NOT IN (SELECT _key FROM " + quoted(column->destination->name()) + ")",
            entity.name() + "." + column->name + " points at nothing");
    }
    for (const Property *relationship : entity.toManyRelationships()) {
        if (relationship->joinTable.empty())
            continue;
        const auto end = [&](const std::string &side, const EntityDescription &there) {
            expectNone(problems, database,
                "SELECT " + side + " FROM " + quoted(relationship->joinTable) + " WHERE " + side
                    + " NOT IN (SELECT _key FROM " + quoted(there.name()) + ")",
                relationship->joinTable + "." + side + " points at nothing");
        };
        end(relationship->joinOwner, entity);
        end(relationship->joinMember, *relationship->destination);
    }
}

} // namespace

std::vector<std::string> storeProblems(const std::filesystem::path &file, const ObjectModel &model)
{
    std::vector<std::string> problems;
    try {
        SQLite::Database database = open(file);
        const auto integrity = rows(database, "PRAGMA integrity_check");
        if (integrity != std::vector<std::string>{"ok"})
            problems.push_back("integrity_check: " + (integrity.empty() ? "nothing" : integrity.front()));
        expectNone(problems, database, "SELECT \"table\" FROM pragma_foreign_key_check", "foreign keys");
        expectNone(problems, database, "SELECT name FROM sqlite_schema WHERE type NOT IN ('table', 'index')",
            "schema objects of unknown kind");
        const auto known = knownTables(model);
        for (const std::string &table : rows(database, "SELECT name FROM sqlite_schema WHERE type = 'table'")) {
            if (!known.contains(table))
                problems.push_back("unknown table " + table);
        }
        for (const auto &entity : model.entities())
            checkReferences(problems, database, *entity);
    } catch (const SQLite::Exception &exception) {
        problems.push_back(std::string("SQLite: ") + exception.what());
    }
    return problems;
}

std::vector<std::string> defaultRecordProblems(const std::filesystem::path &file)
{
    struct Once {
        const char *select;
        std::vector<std::string> expected;
    };
    static const std::vector<Once> all{
        {"SELECT title FROM Folders WHERE folderID = 0 AND title = 'Inbox'", {"Inbox"}},
        {"SELECT title FROM Contexts WHERE title = 'None'", {"None"}},
        {"SELECT stateID FROM States ORDER BY stateID", {"0", "1", "10", "2", "3", "4", "5", "6", "7", "8", "9"}},
        {"SELECT priority FROM Priorities", {"-1", "0", "1", "2", "3", "4", "5"}},
    };
    std::vector<std::string> problems;
    try {
        for (const auto &[select, expected] : all) {
            const auto found = column(file, select);
            if (found != expected)
                problems.push_back(std::string(select) + " gives " + std::to_string(found.size()) + " rows");
        }
    } catch (const SQLite::Exception &exception) {
        problems.push_back(std::string("SQLite: ") + exception.what());
    }
    return problems;
}

std::vector<std::string> column(const std::filesystem::path &file, const std::string &select)
{
    SQLite::Database database = open(file);
    auto texts = rows(database, select);
    std::sort(texts.begin(), texts.end());
    return texts;
}

} // namespace faults
