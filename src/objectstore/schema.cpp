// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/schema.h"

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

void createIndexes(Connection &connection, const EntityDescription &entity)
{
    for (const auto &names : entity.indexes()) {
        std::string title = entity.name();
        std::string columns;
        for (const std::string &name : names) {
            title += "_" + name;
            columns += (columns.empty() ? "" : ", ") + identifier(name);
        }
        connection.execute("CREATE INDEX IF NOT EXISTS " + identifier(title) + " ON " + identifier(entity.name()) + " ("
            + columns + ")");
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
    for (const auto &entity : model.entities()) {
        createTable(connection, *entity);
        createIndexes(connection, *entity);
        createJoins(connection, *entity);
    }
    connection.execute("PRAGMA user_version=" + std::to_string(model.version()));
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

Row::Kind numberKind(const Property &column)
{
    if (column.isToOne())
        return Row::Kind::Reference;
    switch (column.type) {
    case AttributeType::Boolean:
        return Row::Kind::Boolean;
    case AttributeType::Double:
        return Row::Kind::Double;
    case AttributeType::Date:
        return Row::Kind::Date;
    default:
        return Row::Kind::Integer;
    }
}

void addColumn(RowBuilder &builder, sqlite3_stmt *statement, int place, const Property &column)
{
    const auto size = [statement, place] { return static_cast<std::size_t>(sqlite3_column_bytes(statement, place)); };
    switch (sqlite3_column_type(statement, place)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
        if (const Row::Kind kind = numberKind(column); kind == Row::Kind::Double || kind == Row::Kind::Date)
            builder.addDouble(kind, sqlite3_column_double(statement, place));
        else
            builder.addInteger(kind, sqlite3_column_int64(statement, place));
        break;
    case SQLITE_TEXT: {
        const unsigned char *text = sqlite3_column_text(statement, place);
        builder.addBytes(Row::Kind::Text, text, size());
        break;
    }
    case SQLITE_BLOB: {
        const void *bytes = sqlite3_column_blob(statement, place);
        builder.addBytes(Row::Kind::Binary, bytes, size());
        break;
    }
    default:
        builder.addNil();
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
        switch (numberKind(column)) {
        case Row::Kind::Reference:
            return ObjectID{column.destination, statement.integer(place)};
        case Row::Kind::Boolean:
            return statement.integer(place) != 0;
        case Row::Kind::Double:
            return sqlite3_column_double(handle, place);
        case Row::Kind::Date:
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
    builder.begin(static_cast<int>(columns.size()), statement.integer(1));
    for (std::size_t i = 0; i < columns.size(); ++i)
        addColumn(builder, statement.handle(), static_cast<int>(i) + 2, *columns[i]);
    return builder.finish();
}

} // namespace objectstore
