// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/gtd_context.h"
#include "toodledo/gtd_folder.h"
#include "toodledo/gtd_task.h"

#include <cstdint>

namespace syncing {

/// A number that stands for the content of one record as it travels: equal contents have equal marks. It covers what a
/// synchronisation carries both ways and nothing else; blanks at the ends of texts, the order of tags and the form of
/// line ends, which do not survive every service, do not count.
using ContentMark = std::int64_t;

/// Where a task can be, as far as its content goes.
enum class Place { Folder, Context };

[[nodiscard]] ContentMark contentOf(const toodledo::GtdTask &task);
/// What is to be added to the mark of a task in the place with this id when it is there no longer, and nowhere instead.
[[nodiscard]] ContentMark leaving(Place place, std::int64_t id);
[[nodiscard]] ContentMark contentOf(const toodledo::GtdFolder &folder);
[[nodiscard]] ContentMark contentOf(const toodledo::GtdContext &context);

} // namespace syncing
