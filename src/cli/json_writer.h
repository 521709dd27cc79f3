// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/record_fields.h"

#include <string>
#include <string_view>

namespace cli {

/// The text as a JSON string; bytes that are not UTF-8 become U+FFFD, since JSON knows no others.
void appendJsonString(std::string &out, std::string_view text);

/// The record as one JSON object on one line, its fields in their order.
void appendJson(std::string &out, const Record &record);

/// Everything about the objects, as one JSON array with a line for each.
void appendJsonArray(std::string &out, std::span<objectstore::ManagedObject *const> objects, const RecordKind &kind);

} // namespace cli
