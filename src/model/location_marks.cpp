// SPDX-License-Identifier: GPL-3.0-or-later
// Which tasks can be done where the user is.
#include "model/data_utilities.h"
#include "objectstore/object_context.h"

#include <algorithm>

namespace model {

using objectstore::ObjectID;
using objectstore::Predicate;
using objectstore::Value;
using objectstore::ValueView;

namespace {

constexpr double reach = 1000.0; // metres; what is exactly so far away is not near

bool isNear(const Contexts &context, const location::Coordinate &current)
{
    return (context.useLocation() && location::metresBetween(current, context.coordinate()) < reach)
        || context.alwaysShow();
}

bool isOneOf(const std::vector<Contexts *> &contexts, const ValueView &id)
{
    const auto *wanted = std::get_if<ObjectID>(&id);
    return wanted && std::any_of(contexts.begin(), contexts.end(), [wanted](const Contexts *context) {
        return context->objectID() == *wanted;
    });
}

bool isMarkedAs(const ValueView &mark, std::optional<bool> wanted)
{
    const auto *held = std::get_if<bool>(&mark);
    return wanted ? held && *held == *wanted : objectstore::isNil(mark);
}

} // namespace

std::vector<Contexts *> DataUtilities::contextsNear(const std::optional<location::Coordinate> &current) const
{
    if (!current)
        return {};
    std::vector<Contexts *> contexts = getLocalContexts();
    std::erase_if(contexts, [&](const Contexts *context) { return !isNear(*context, *current); });
    return contexts;
}

void DataUtilities::markTasksForLocation(bool flag, const std::vector<Contexts *> &near) const
{
    std::vector<ObjectID> toMark;
    std::vector<ObjectID> toClear;
    const auto look = [&](const Predicate &which) {
        const auto looked = m_moc.fetchValues({.entity = "Tasks", .predicate = which, .sortDescriptors = {}},
            {"contexts", "isCurrentLocation"}, [&](const ObjectID &task, std::span<const ValueView> values) {
                const bool isHere = isOneOf(near, values[0]);
                if (!isMarkedAs(values[1], isHere ? std::optional(flag) : std::nullopt))
                    (isHere ? toMark : toClear).push_back(task);
            });
        if (!looked)
            presentError(looked.error());
    };
    // a mark of either kind; said as a range because the index finds that, and not whatever is something
    static const Predicate marked = Predicate::format("isCurrentLocation BETWEEN {NO, YES}");
    static const Predicate ofContext = Predicate::format("contexts == $CONTEXT");
    look(marked);
    for (const Contexts *context : near)
        look(ofContext.withVariables({{"CONTEXT", Value(context->objectID())}}));
    for (const ObjectID &task : toMark)
        m_moc.object(task)->setValue("isCurrentLocation", flag);
    for (const ObjectID &task : toClear)
        m_moc.object(task)->setValue("isCurrentLocation", {});
}

} // namespace model
