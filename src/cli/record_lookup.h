// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/record_fields.h"
#include "foundation/error.h"
#include "model/entities.h"
#include "objectstore/object_context.h"

#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// The first record of the kind with this title, or an error that suggests the closest one. Folders and contexts that
/// only wait for their deletion at the service are not found.
[[nodiscard]] foundation::Result<objectstore::ManagedObject *> recordNamed(
    objectstore::ObjectContext &moc, const RecordKind &kind, std::string_view title);

/// Whether there is one.
[[nodiscard]] foundation::Result<bool> hasRecordNamed(
    objectstore::ObjectContext &moc, const RecordKind &kind, std::string_view title);

/// The records of the kind that are there for the user, as lists show them.
[[nodiscard]] foundation::Result<std::vector<objectstore::ManagedObject *>> recordsOf(
    objectstore::ObjectContext &moc, const RecordKind &kind);

/// The tag with this title, which is made where there is none.
[[nodiscard]] foundation::Result<objectstore::ManagedObject *> tagNamed(
    objectstore::ObjectContext &moc, std::string_view title);

/// The task that a URI, or the short name that lists show, stands for.
[[nodiscard]] foundation::Result<model::Tasks *> taskNamed(objectstore::ObjectContext &moc, std::string_view reference);

/// The short name of a record, for people to type.
[[nodiscard]] std::string shortName(const objectstore::ManagedObject &object);

} // namespace cli
