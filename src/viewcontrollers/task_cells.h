// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "viewcontrollers/task_columns.h"

#include <QDateTime>
#include <QVariant>

namespace viewcontrollers {

/// The title of a folder, context or state as it is shown: those that every store has are named in the user's language.
[[nodiscard]] QString recordTitle(TaskColumn kind, std::string_view title);

/// What a cell of the task table says, in the user's language.
[[nodiscard]] QString cellText(const model::Tasks &task, TaskColumn column, foundation::Instant now);
/// The value that an editor of the cell starts from: text, a boolean, a date or time, minutes, or a record's URI.
[[nodiscard]] QVariant cellValue(const model::Tasks &task, TaskColumn column);
/// Puts what was edited into the task; false for a value that the column does not take.
bool setCellValue(model::Tasks &task, TaskColumn column, const QVariant &value);
[[nodiscard]] bool isEditable(TaskColumn column);

/// Ticks a task off, or on again, with the date of it.
void setComplete(model::Tasks &task, bool complete, foundation::Instant now);
/// Whether the task is open and the time, or without a time the day, at which it is due has passed.
[[nodiscard]] bool isOverdue(const model::Tasks &task, foundation::Instant now);

/// A date as it is said near `now`: "Today 14:00", "Yesterday", "26 Nov", "26 Nov 2027". Midnight is no time.
[[nodiscard]] QString nearDate(std::optional<foundation::Instant> date, foundation::Instant now);
/// A time of day without seconds, as the user's locale writes it.
[[nodiscard]] QString timeText(QTime time);
/// Minutes as "45 min", "1 h 30 min", "2 h"; nothing for 0.
[[nodiscard]] QString lengthText(std::int64_t minutes);
/// "2 – High" and so on.
[[nodiscard]] QString priorityText(std::int64_t priority);

[[nodiscard]] QDateTime toDateTime(foundation::Instant instant);
[[nodiscard]] foundation::Instant toInstant(const QDateTime &dateTime);

} // namespace viewcontrollers
