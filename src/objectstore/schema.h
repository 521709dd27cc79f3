// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/connection.h"
#include "objectstore/row.h"

#include <set>
#include <string>

namespace objectstore {

/// Creates what is missing of the tables, columns and indexes that `model` needs and records its version.
/// Run inside a write transaction; what is there already stays as it is.
void createSchema(Connection &connection, const ObjectModel &model);

/// The names of the tables and indexes that `createSchema` creates.
[[nodiscard]] std::set<std::string> schemaNames(const ObjectModel &model);

/// Values that the store keeps about itself, in the table `_store`.
[[nodiscard]] std::string storeValue(Connection &connection, const std::string &name);
void setStoreValue(Connection &connection, const std::string &name, const std::string &value);

/// "SELECT _key, _save, every column FROM the entity's table t", to which a condition may be added.
[[nodiscard]] std::string selectRows(const EntityDescription &entity);

/// The value in column `place` of the row at which `statement` stands, which is one of `column`; it holds until the
/// statement moves on.
[[nodiscard]] ValueView columnValue(const Statement &statement, int place, const Property &column);

/// The row at which `statement`, made from `selectRows`, stands.
[[nodiscard]] RowPointer readRow(RowBuilder &builder, const Statement &statement, const EntityDescription &entity);

} // namespace objectstore
