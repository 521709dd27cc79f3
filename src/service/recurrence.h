// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace service {

/// The dates of a task, each "YYYY-MM-DD" or "".
struct TaskDates {
    std::string start;
    std::string due;
};

/// The dates of a repeating task's next occurrence: the first of its rhythm that is after `today`, at least one step
/// on. The start keeps its distance to the due date. Nothing where the code `repeat` names no rhythm (0 is none, 9
/// follows a parent) or the calendar ends.
[[nodiscard]] std::optional<TaskDates> nextOccurrence(
    const TaskDates &dates, std::int64_t repeat, const std::string &today);

} // namespace service
