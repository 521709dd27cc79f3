// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/relative_date.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace model {

using foundation::CivilTime;
using foundation::Instant;
using objectstore::Expression;
using objectstore::Predicate;
using objectstore::PredicateNode;
using objectstore::RelativeDate;

namespace {

constexpr double secondsPerDay = 86400;
constexpr std::array<double, 3> shortestUnit{secondsPerDay, 7 * secondsPerDay, 28 * secondsPerDay};
constexpr double tolerance = 1; // seconds; a date may have been measured a moment after it was made
constexpr double longestOffset = 1000 * 366 * secondsPerDay;
constexpr double latestInstant = 2000 * 366 * secondsPerDay; // either side of the reference date

bool isUnit(int unit)
{
    return unit >= 0 && static_cast<std::size_t>(unit) < shortestUnit.size();
}

Instant addLocalMonths(Instant instant, int months)
{
    CivilTime time = foundation::toLocal(instant);
    const int month = time.year * 12 + time.month - 1 + months;
    time.year = month / 12;
    time.month = month % 12 + 1;
    while (time.day > 28 && !foundation::isValid(time))
        --time.day;
    return foundation::fromLocal(time).value_or(instant);
}

Instant moved(Instant instant, int number, int unit)
{
    switch (static_cast<DateUnit>(unit)) {
    case DateUnit::Days:
        return foundation::addLocalDays(instant, number);
    case DateUnit::Weeks:
        return foundation::addLocalDays(instant, 7 * number);
    case DateUnit::Months:
        return addLocalMonths(instant, number);
    }
    return instant;
}

bool hasRelativeDate(const Expression &expression)
{
    return expression.kind == Expression::Kind::Relative
        || std::any_of(expression.parts.begin(), expression.parts.end(), hasRelativeDate);
}

bool hasRelativeDate(const PredicateNode &node)
{
    return hasRelativeDate(node.left) || hasRelativeDate(node.right)
        || std::any_of(node.children.begin(), node.children.end(),
            [](const PredicateNode::Pointer &child) { return hasRelativeDate(*child); });
}

void renew(Expression &expression, Instant now)
{
    RelativeDate &date = expression.relative;
    if (expression.kind == Expression::Kind::Relative) {
        if (const std::int64_t number = valueOfTimeDifferenceInUnits(date); number >= 0)
            date = relativeDate(number, date.dateUnits, date.backward, now);
    }
    for (Expression &part : expression.parts)
        renew(part, now);
}

PredicateNode::Pointer renewed(const PredicateNode::Pointer &node, Instant now)
{
    if (!hasRelativeDate(*node))
        return node;
    auto result = std::make_shared<PredicateNode>(*node);
    for (PredicateNode::Pointer &child : result->children)
        child = renewed(child, now);
    renew(result->left, now);
    renew(result->right, now);
    return result;
}

} // namespace

RelativeDate relativeDate(std::int64_t number, int unit, bool backward, Instant now)
{
    const int distance = static_cast<int>(std::clamp(number, -maximumRelativeNumber, maximumRelativeNumber));
    const Instant target = isUnit(unit) ? moved(now, backward ? -distance : distance, unit) : now;
    return {
        .timeIntervalSinceNow = target.seconds - now.seconds,
        .timeIntervalSinceReferenceDate = target.seconds - objectstore::referenceDate,
        .dateUnits = unit,
        .backward = backward,
    };
}

std::int64_t valueOfTimeDifferenceInUnits(const RelativeDate &date)
{
    const double offset = date.timeIntervalSinceNow;
    const bool isSane
        = std::abs(offset) < longestOffset && std::abs(date.timeIntervalSinceReferenceDate) < latestInstant;
    if (!isUnit(date.dateUnits) || !isSane)
        return -1;
    const int direction = date.backward ? -1 : 1;
    const Instant target{date.timeIntervalSinceReferenceDate + objectstore::referenceDate};
    const Instant made{target.seconds - offset};
    const double distance = direction * offset;
    if (distance < -tolerance)
        return -1;
    const auto isBeyond = [&](int number) {
        return direction * (moved(made, direction * number, date.dateUnits).seconds - target.seconds) > tolerance;
    };
    int number = static_cast<int>(distance / shortestUnit[static_cast<std::size_t>(date.dateUnits)]) + 1;
    while (number > 0 && isBeyond(number))
        --number;
    return number;
}

Predicate withRelativeDatesAt(const Predicate &predicate, Instant now)
{
    return Predicate(renewed(predicate.shared(), now));
}

} // namespace model
