// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"

#include <string>
#include <string_view>

namespace objectstore {

/// `text` as it is compared under `options`: each letter's case folded by Unicode's simple rule (one letter for one, so
/// that "ß" stays), combining marks removed. Bytes that are not UTF-8 stay as they are.
[[nodiscard]] std::string folded(std::string_view text, TextOptions options);

/// The same into `buffer`, whose room is used again; returns what it then holds.
std::string_view foldInto(std::string &buffer, std::string_view text, TextOptions options);

} // namespace objectstore
