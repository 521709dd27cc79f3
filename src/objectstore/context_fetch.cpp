// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"
#include "objectstore/predicate_evaluator.h"
#include "objectstore/text_order.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <limits>
#include <numeric>

namespace objectstore {

using foundation::Failure;

namespace {

Error badRequest(std::string sentence)
{
    return {"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::BadRequest), std::move(sentence), {}};
}

/// With so many objects loaded, room is made for all that there are: to move them whenever the room doubles takes
/// longer.
constexpr std::size_t manyObjects = 2000;

/// The value at the end of a key path of to-one relationships; nothing where the path meets nothing.
ValueView valueAtPath(const ManagedObject &object, std::string_view path)
{
    const ManagedObject *current = &object;
    for (std::size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.')) {
        current = current->related(path.substr(0, dot));
        if (!current)
            return {};
        path.remove_prefix(dot + 1);
    }
    return current->value(path);
}

/// Orders values of one column: nothing first, then numbers and dates, then text.
int order(const ValueView &left, const ValueView &right)
{
    const auto rank = [](const ValueView &value) {
        return isNil(value) ? 0 : std::holds_alternative<std::string_view>(value) ? 2 : 1;
    };
    if (rank(left) != rank(right) || rank(left) == 0)
        return rank(left) - rank(right);
    if (rank(left) == 2)
        return toText(left).compare(toText(right));
    const double a = toDouble(left);
    const double b = toDouble(right);
    return a < b ? -1 : a > b ? 1 : 0;
}

void sortBy(std::vector<ManagedObject *> &objects, const SortDescriptor &descriptor)
{
    std::vector<std::size_t> places(objects.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    const auto arrange = [&](auto compare) {
        std::stable_sort(places.begin(), places.end(),
            [&](std::size_t a, std::size_t b) { return descriptor.ascending ? compare(a, b) < 0 : compare(b, a) < 0; });
    };
    if (descriptor.localized) {
        const TextOrder textOrder;
        std::vector<QCollatorSortKey> keys;
        keys.reserve(objects.size());
        for (const ManagedObject *object : objects)
            keys.push_back(textOrder.key(toText(valueAtPath(*object, descriptor.key))));
        arrange([&](std::size_t a, std::size_t b) { return keys[a].compare(keys[b]); });
    } else {
        std::vector<ValueView> keys;
        keys.reserve(objects.size());
        for (const ManagedObject *object : objects)
            keys.push_back(valueAtPath(*object, descriptor.key));
        arrange([&](std::size_t a, std::size_t b) { return order(keys[a], keys[b]); });
    }
    std::vector<ManagedObject *> sorted;
    sorted.reserve(objects.size());
    for (const std::size_t place : places)
        sorted.push_back(objects[place]);
    objects = std::move(sorted);
}

/// What a request means for the statement that answers it.
struct Plan {
    const EntityDescription *entity = nullptr;
    SqlCondition condition;
    /// The condition was left out: every object has to be asked in memory.
    bool inMemory = false;
};

/// Unsaved changes may alter the answer. Objects that hold some are asked in memory anyway; but the answer of a
/// predicate over relationships may hang on changes elsewhere, so that it is asked of every object in memory.
Result<Plan> planFor(const FetchRequest &request, const ObjectModel &model, bool hasChanges)
{
    Plan plan;
    plan.entity = model.entity(request.entity);
    if (!plan.entity)
        return Failure(badRequest("There are no records of the kind \"" + request.entity + "\"."));
    for (const SortDescriptor &descriptor : request.sortDescriptors) {
        if (!plan.entity->property(descriptor.key.substr(0, descriptor.key.find('.'))))
            return Failure(badRequest("There is no \"" + descriptor.key + "\" to sort by."));
    }
    if (!request.predicate.isAlwaysTrue()) {
        auto condition = compileToSql(request.predicate, *plan.entity);
        if (!condition)
            return Failure(condition.error());
        plan.inMemory = condition->tooDeep || (hasChanges && request.predicate.followsRelationships(*plan.entity));
        if (!plan.inMemory)
            plan.condition = std::move(*condition);
    }
    return plan;
}

std::string where(const Plan &plan)
{
    return plan.condition.sql.empty() ? std::string() : " WHERE " + plan.condition.sql;
}

void bindAll(Statement &statement, const SqlCondition &condition)
{
    for (const Value &parameter : condition.parameters)
        statement.bind(view(parameter));
}

Result<std::vector<const Property *>> columnsFor(const std::vector<std::string> &keys, const EntityDescription &entity)
{
    std::vector<const Property *> columns;
    for (const std::string &key : keys) {
        columns.push_back(entity.property(key));
        if (!columns.back() || columns.back()->isToMany())
            return Failure(badRequest("\"" + entity.name() + "\" have no single value named \"" + key + "\"."));
    }
    return columns;
}

} // namespace

std::size_t ObjectContext::State::recordsOf(const EntityDescription &entity) const
{
    Statement statement = connection->prepare("SELECT count(*) FROM " + identifier(entity.name()));
    return statement.step() ? static_cast<std::size_t>(statement.integer(0)) : 0;
}

bool ObjectContext::State::takeKnown(
    Statement &statement, const EntityDescription &entity, std::vector<ManagedObject *> &found) const
{
    const Objects &here = objects[static_cast<std::size_t>(entity.index())];
    while (statement.step()) {
        const auto kept = here.find(statement.integer(0));
        if (kept == here.end())
            return false;
        ManagedObject &object = *kept->second;
        if (object.hasChanges() && !object.m_deleted)
            continue; // asked in memory
        if (!object.m_row || object.m_deleted || object.m_inserted || object.m_row->save() != statement.integer(1))
            return false;
        found.push_back(&object);
    }
    return true;
}

/// The objects of the rows that `statement` gives, which have those rows now unless they are changed here.
std::vector<ManagedObject *> ObjectContext::takeRows(Statement &statement, const EntityDescription &entity)
{
    auto &objects = m_state->objects[static_cast<std::size_t>(entity.index())];
    std::vector<ManagedObject *> found;
    std::vector<ManagedObject *> loaded;
    RowBuilder builder;
    while (statement.step()) {
        if (loaded.size() == manyObjects)
            objects.reserve(m_state->recordsOf(entity));
        ManagedObject &object = registered({&entity, statement.integer(0)});
        if (object.m_deleted && !m_state->changedOf(entity).contains(object)) {
            object.m_deleted = false; // an undo elsewhere brought it back
            object.m_row.reset();
        }
        if (!object.m_row)
            loaded.push_back(&object);
        if (!object.m_row || (!object.m_unsaved && object.m_row->save() != statement.integer(1) && !object.m_inserted))
            object.m_row = readRow(builder, statement, entity);
        found.push_back(&object);
    }
    for (ManagedObject *object : loaded)
        object->awakeFromFetch();
    return found;
}

Result<std::vector<ManagedObject *>> ObjectContext::fetch(const FetchRequest &request)
{
    processPendingChanges();
    if (!connected())
        return Failure(m_state->connectError);
    const auto plan = planFor(request, m_store.model(), hasChanges());
    if (!plan)
        return Failure(plan.error());
    const EntityDescription &entity = *plan->entity;
    const bool unsaved = plan->inMemory || !m_state->changedOf(entity).empty();
    const PredicateEvaluator evaluator(request.predicate, entity);
    // A wish for an order would keep SQLite from the index that finds the rows; they are put in order below.
    const auto read = [&](const std::string &columns, const auto &take) {
        Statement statement = m_state->connection->prepare(columns + where(*plan));
        bindAll(statement, plan->condition);
        return take(statement);
    };
    std::vector<ManagedObject *> found;
    try {
        const bool mayBeKnown = !plan->inMemory && !m_state->objects[static_cast<std::size_t>(entity.index())].empty();
        // A list that is shown again needs no columns.
        const bool isKnown = mayBeKnown
            && read("SELECT t._key, t._save FROM " + identifier(entity.name()) + " t",
                [&](Statement &keys) { return m_state->takeKnown(keys, entity, found); });
        if (!isKnown)
            found = read(selectRows(entity), [&](Statement &rows) { return takeRows(rows, entity); });
    } catch (const SQLite::Exception &exception) {
        disconnect(exception);
        return Failure(
            storeError(StoreErrorCode::Unreadable, "The tasks could not be read from the store.", exception));
    }
    if (unsaved) {
        std::erase_if(found, [&](const ManagedObject *object) {
            return object->hasChanges() || (plan->inMemory && !evaluator.matches(*object));
        });
        for (ManagedObject *object : m_state->changedOf(entity)) {
            if (object->hasChanges() && !object->m_deleted && evaluator.matches(*object))
                found.push_back(object);
        }
    }
    const auto byKey = [](const ManagedObject *a, const ManagedObject *b) { return a->m_id.key < b->m_id.key; };
    if (!std::is_sorted(found.begin(), found.end(), byKey))
        std::sort(found.begin(), found.end(), byKey);
    for (auto descriptor = request.sortDescriptors.rbegin(); descriptor != request.sortDescriptors.rend(); ++descriptor)
        sortBy(found, *descriptor);
    if (request.limit > 0 && found.size() > static_cast<std::size_t>(request.limit))
        found.resize(static_cast<std::size_t>(request.limit));
    return found;
}

Result<std::int64_t> ObjectContext::count(const FetchRequest &request)
{
    processPendingChanges();
    if (!connected())
        return Failure(m_state->connectError);
    const auto plan = planFor(request, m_store.model(), hasChanges());
    if (!plan)
        return Failure(plan.error());
    std::int64_t number = 0;
    if (plan->inMemory || !m_state->changedOf(*plan->entity).empty()) {
        const auto counted = fetchIDs(request, [&number](const ObjectID &) { ++number; });
        return counted ? Result<std::int64_t>(number) : Failure(counted.error());
    }
    try {
        Statement statement = m_state->connection->prepare(
            "SELECT count(*) FROM " + identifier(plan->entity->name()) + " t" + where(*plan));
        bindAll(statement, plan->condition);
        if (statement.step())
            number = statement.integer(0);
    } catch (const SQLite::Exception &exception) {
        disconnect(exception);
        return Failure(storeError(StoreErrorCode::Unreadable, "The tasks could not be counted.", exception));
    }
    return request.limit > 0 ? std::min(number, request.limit) : number;
}

Result<void> ObjectContext::fetchIDs(const FetchRequest &request, const std::function<void(const ObjectID &)> &visit)
{
    processPendingChanges();
    if (!connected())
        return Failure(m_state->connectError);
    const auto plan = planFor(request, m_store.model(), hasChanges());
    if (!plan)
        return Failure(plan.error());
    if (plan->inMemory) {
        const auto found = fetch(request);
        if (!found)
            return Failure(found.error());
        std::for_each(found->begin(), found->end(), [&](const ManagedObject *object) { visit(object->m_id); });
        return {};
    }
    std::int64_t left = request.limit > 0 ? request.limit : std::numeric_limits<std::int64_t>::max();
    const auto &changed = m_state->changedOf(*plan->entity);
    try {
        Statement statement = m_state->connection->prepare(
            "SELECT t._key FROM " + identifier(plan->entity->name()) + " t" + where(*plan));
        bindAll(statement, plan->condition);
        const auto &objects = m_state->objects[static_cast<std::size_t>(plan->entity->index())];
        while (left > 0 && statement.step()) {
            const std::int64_t key = statement.integer(0);
            if (!changed.empty()) {
                const auto kept = objects.find(key);
                if (kept != objects.end() && m_state->isChanged(*kept->second))
                    continue;
            }
            visit({plan->entity, key});
            --left;
        }
    } catch (const SQLite::Exception &exception) {
        disconnect(exception);
        return Failure(
            storeError(StoreErrorCode::Unreadable, "The tasks could not be read from the store.", exception));
    }
    const PredicateEvaluator evaluator(request.predicate, *plan->entity);
    for (const ManagedObject *object : changed) {
        if (left > 0 && object->hasChanges() && !object->m_deleted && evaluator.matches(*object)) {
            visit(object->m_id);
            --left;
        }
    }
    return {};
}

Result<void> ObjectContext::fetchValues(const FetchRequest &request, const std::vector<std::string> &keys,
    const std::function<void(const ObjectID &, std::span<const ValueView>)> &visit)
{
    processPendingChanges();
    if (!connected())
        return Failure(m_state->connectError);
    if (!request.sortDescriptors.empty())
        return Failure(badRequest("Values are read in the order of insertion and in no other."));
    const auto plan = planFor(request, m_store.model(), hasChanges());
    if (!plan)
        return Failure(plan.error());
    const auto columns = columnsFor(keys, *plan->entity);
    if (!columns)
        return Failure(columns.error());

    std::vector<ValueView> values(keys.size());
    const auto visitObject = [&](const ManagedObject &object) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = object.value(*(*columns)[i]);
        visit(object.m_id, values);
    };
    if (plan->inMemory) {
        const auto found = fetch(request);
        if (!found)
            return Failure(found.error());
        std::for_each(found->begin(), found->end(), [&](const ManagedObject *object) { visitObject(*object); });
        return {};
    }

    const PredicateEvaluator evaluator(request.predicate, *plan->entity);
    std::vector<ManagedObject *> changed = State::sorted(m_state->changedOf(*plan->entity).inOrderOfArrival());
    std::erase_if(changed, [&](const ManagedObject *object) {
        return !object->hasChanges() || object->m_deleted || !evaluator.matches(*object);
    });
    std::int64_t left = request.limit > 0 ? request.limit : std::numeric_limits<std::int64_t>::max();
    auto next = changed.begin();
    const auto visitChangedBelow = [&](std::int64_t key) {
        for (; next != changed.end() && (*next)->m_id.key < key && left > 0; ++next, --left)
            visitObject(**next);
    };
    try {
        std::string sql = "SELECT t._key";
        for (const Property *column : *columns)
            sql += ", t." + identifier(column->name);
        Statement statement = m_state->connection->prepare(
            sql + " FROM " + identifier(plan->entity->name()) + " t" + where(*plan) + " ORDER BY t._key");
        bindAll(statement, plan->condition);
        const auto &objects = m_state->objects[static_cast<std::size_t>(plan->entity->index())];
        while (left > 0 && statement.step()) {
            const std::int64_t key = statement.integer(0);
            visitChangedBelow(key);
            const auto kept = objects.find(key);
            if (left == 0 || (kept != objects.end() && m_state->isChanged(*kept->second)))
                continue;
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = columnValue(statement, static_cast<int>(i) + 1, *(*columns)[i]);
            visit({plan->entity, key}, values);
            --left;
        }
    } catch (const SQLite::Exception &exception) {
        disconnect(exception);
        return Failure(
            storeError(StoreErrorCode::Unreadable, "The tasks could not be read from the store.", exception));
    }
    visitChangedBelow(std::numeric_limits<std::int64_t>::max());
    return {};
}

} // namespace objectstore
