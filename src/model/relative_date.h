// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"
#include "objectstore/predicate_node.h"

#include <cstdint>

namespace model {

/// The units of a relative date, in the order of their menu; a date keeps the number.
enum class DateUnit { Days, Weeks, Months };
constexpr std::int64_t maximumRelativeNumber = 9999;

/// The date so many units from `now`, or `backward` of it, by the calendar: a month later is the same day of the month
/// or the month's last, and the time of day stays through a change of the clock. A unit that does not exist is no
/// distance at all.
[[nodiscard]] objectstore::RelativeDate relativeDate(
    std::int64_t number, int unit, bool backward, foundation::Instant now);

/// The number of units that `date` was made with; -1 where its values cannot have been made. It is counted from the
/// moment of making, which a date tells, so that neither a shorter month nor a change of the clock since then wears it
/// down.
[[nodiscard]] std::int64_t valueOfTimeDifferenceInUnits(const objectstore::RelativeDate &date);

/// `predicate` with its relative dates made anew at `now`; what has none is returned as it is.
[[nodiscard]] objectstore::Predicate withRelativeDatesAt(
    const objectstore::Predicate &predicate, foundation::Instant now);

} // namespace model
