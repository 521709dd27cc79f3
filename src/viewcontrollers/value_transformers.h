// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

namespace viewcontrollers {

/// The label of a reminder so many minutes before the due date; a number without a label reads "No Reminder".
[[nodiscard]] QString reminderLabel(std::int64_t minutes);
/// The minutes of a label. Not the way back of `reminderLabel` in one case: 43200 minutes read "3 weeks", but only
/// "4 weeks" is stored as 43200; "3 weeks" is stored as 0.
[[nodiscard]] std::int64_t reminderMinutes(const QString &label);
/// The labels that are offered: those that are stored as something.
[[nodiscard]] QStringList reminderLabels();

/// How a task repeats, by the service's code; a code without a text reads as its number.
[[nodiscard]] QString repeatLabel(std::int64_t code);
/// The codes that are offered, in order; each may have 100 added, to count from the completion.
[[nodiscard]] const std::vector<std::int64_t> &repeatCodes();

/// Reads a length as people write it: "45", "45 min", "1:30", "1h30", "1.5 h", "2 hours". Nothing for other text.
[[nodiscard]] std::optional<std::int64_t> parseLength(const QString &text);

} // namespace viewcontrollers
