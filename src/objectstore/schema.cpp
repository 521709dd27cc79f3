// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/schema.h"

#include "objectstore/save_log.h"

#include <set>

namespace objectstore {

namespace {

void createTable(Connection &connection, const EntityDescription &entity)
{
    std::string sql = "CREATE TABLE IF NOT EXISTS " + identifier(entity.name()) + " (_key INTEGER PRIMARY KEY, _save";
    for (const Property *column : entity.columns())
        sql += ", " + identifier(column->name);
    connection.execute(sql + ")");

    std::set<std::string, std::less<>> present;
    Statement columns = connection.prepare("SELECT name FROM pragma_table_info(?)");
    columns.bind(ValueView(std::string_view(entity.name())));
    while (columns.step())
        present.insert(columns.text(0));
    for (const Property *column : entity.columns()) {
        if (present.contains(column->name))
            continue;
        connection.execute("ALTER TABLE " + identifier(entity.name()) + " ADD COLUMN " + identifier(column->name));
        // what was made before the column has its default, as what is made from now on
        Statement fill
            = connection.prepare("UPDATE " + identifier(entity.name()) + " SET " + identifier(column->name) + " = ?");
        fill.bind(view(column->defaultValue)).run();
    }
}

std::string indexName(const EntityDescription &entity, const std::vector<std::string> &columns)
{
    std::string name = entity.name();
    for (const std::string &column : columns)
        name += "_" + column;
    return name;
}

void createIndexes(Connection &connection, const EntityDescription &entity)
{
    for (const auto &names : entity.indexes()) {
        std::string columns;
        for (const std::string &name : names)
            columns += (columns.empty() ? "" : ", ") + identifier(name);
        connection.execute("CREATE INDEX IF NOT EXISTS " + identifier(indexName(entity, names)) + " ON "
            + identifier(entity.name()) + " (" + columns + ")");
    }
}

void createJoins(Connection &connection, const EntityDescription &entity)
{
    for (const Property *relationship : entity.toManyRelationships()) {
        if (relationship->joinTable.empty() || relationship->joinOwner != "owner")
            continue;
        connection.execute("CREATE TABLE IF NOT EXISTS " + identifier(relationship->joinTable)
            + " (owner, member, PRIMARY KEY (owner, member)) WITHOUT ROWID");
        connection.execute("CREATE INDEX IF NOT EXISTS " + identifier(relationship->joinTable + "_member") + " ON "
            + identifier(relationship->joinTable) + " (member, owner)");
    }
}

} // namespace

void createSchema(Connection &connection, const ObjectModel &model)
{
    connection.execute("CREATE TABLE IF NOT EXISTS _store (name TEXT PRIMARY KEY, value) WITHOUT ROWID");
    SaveLog(connection).createTable();
    for (const auto &entity : model.entities()) {
        createTable(connection, *entity);
        createIndexes(connection, *entity);
        createJoins(connection, *entity);
    }
    connection.execute("PRAGMA user_version=" + std::to_string(model.version()));
}

std::set<std::string> schemaNames(const ObjectModel &model)
{
    std::set<std::string> names{"_store", "_saves"};
    for (const auto &entity : model.entities()) {
        names.insert(entity->name());
        for (const auto &columns : entity->indexes())
            names.insert(indexName(*entity, columns));
        for (const Property *relationship : entity->toManyRelationships()) {
            if (!relationship->joinTable.empty())
                names.insert({relationship->joinTable, relationship->joinTable + "_member"});
        }
    }
    return names;
}

std::string storeValue(Connection &connection, const std::string &name)
{
    Statement statement = connection.prepare("SELECT value FROM _store WHERE name = ?");
    statement.bind(ValueView(std::string_view(name)));
    return statement.step() ? statement.text(0) : std::string();
}

void setStoreValue(Connection &connection, const std::string &name, const std::string &value)
{
    Statement statement = connection.prepare("INSERT OR REPLACE INTO _store (name, value) VALUES (?, ?)");
    statement.bind(ValueView(std::string_view(name))).bind(ValueView(std::string_view(value))).run();
}

std::string selectRows(const EntityDescription &entity)
{
    std::string sql = "SELECT t._key, t._save";
    for (const Property *column : entity.columns())
        sql += ", t." + identifier(column->name);
    return sql + " FROM " + identifier(entity.name()) + " t";
}

namespace {

void addNumber(RowBuilder &builder, sqlite3_value *value, const Property &column)
{
    if (column.isToOne())
        return builder.addReference(sqlite3_value_int64(value));
    switch (column.type) {
    case AttributeType::Boolean:
        return builder.addFlag(sqlite3_value_int64(value) != 0);
    case AttributeType::Double:
        return builder.addReal(Row::Kind::Double, sqlite3_value_double(value));
    case AttributeType::Date:
        return builder.addReal(Row::Kind::Date, sqlite3_value_double(value));
    default:
        return builder.addInteger(sqlite3_value_int64(value));
    }
}

void addColumn(RowBuilder &builder, sqlite3_value *value, const Property &column)
{
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
        return addNumber(builder, value, column);
    case SQLITE_TEXT: {
        const unsigned char *text = sqlite3_value_text(value);
        return builder.addBytes(Row::Kind::Text, text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    }
    case SQLITE_BLOB: {
        const void *bytes = sqlite3_value_blob(value);
        return builder.addBytes(Row::Kind::Binary, bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    }
    default:
        return builder.addNil();
    }
}

} // namespace

ValueView columnValue(const Statement &statement, int place, const Property &column)
{
    sqlite3_stmt *handle = statement.handle();
    const auto size = [handle, place] { return static_cast<std::size_t>(sqlite3_column_bytes(handle, place)); };
    switch (sqlite3_column_type(handle, place)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
        if (column.isToOne())
            return ObjectID{column.destination, statement.integer(place)};
        switch (column.type) {
        case AttributeType::Boolean:
            return statement.integer(place) != 0;
        case AttributeType::Double:
            return sqlite3_column_double(handle, place);
        case AttributeType::Date:
            return Instant{sqlite3_column_double(handle, place)};
        default:
            return statement.integer(place);
        }
    case SQLITE_TEXT: {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(handle, place));
        return std::string_view(text, size());
    }
    case SQLITE_BLOB: {
        const auto *bytes = static_cast<const std::byte *>(sqlite3_column_blob(handle, place));
        return std::span(bytes, size());
    }
    default:
        return {};
    }
}

RowPointer readRow(RowBuilder &builder, const Statement &statement, const EntityDescription &entity)
{
    const auto &columns = entity.columns();
    builder.begin(statement.integer(1));
    for (std::size_t i = 0; i < columns.size(); ++i) // one call for each column: the connection is this thread's alone
        addColumn(builder, sqlite3_column_value(statement.handle(), static_cast<int>(i) + 2), *columns[i]);
    return builder.finish();
}

} // namespace objectstore
