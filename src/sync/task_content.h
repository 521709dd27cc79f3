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

[[nodiscard]] ContentMark contentOf(const toodledo::GtdTask &task);
[[nodiscard]] ContentMark contentOf(const toodledo::GtdFolder &folder);
[[nodiscard]] ContentMark contentOf(const toodledo::GtdContext &context);

} // namespace syncing
