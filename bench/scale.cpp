// SPDX-License-Identifier: GPL-3.0-or-later
// What touches one task must cost the same in a small store and in a large one.
#include "generator.h"
#include "measure.h"
#include "objectstore/undo_manager.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace {

using namespace objectstore;

template <typename T> T value(Result<T> result)
{
    if (!result)
        throw std::runtime_error(result.error().message + " " + result.error().detail);
    return std::move(*result);
}

struct Figure {
    std::string work;
    double milliseconds = 0;
};

/// Medians of pieces of work that each touch one task, in processor time: the disk takes what it takes.
std::vector<Figure> measured(Store &store)
{
    constexpr int rounds = 101;
    std::vector<Figure> rows;
    ObjectContext context(store, MergePolicy::Rollback);
    ObjectContext other(store, MergePolicy::Rollback);
    context.enableUndo();
    const auto add = [&](std::string work, const std::function<void()> &once) {
        rows.push_back({std::move(work), bench::median(rounds, once) * 1000});
    };
    const auto fetch = [&](ObjectContext &from, const char *predicate, Value argument) {
        return value(from.fetch({.entity = "Tasks", .predicate = Predicate::format(predicate, {std::move(argument)})}));
    };
    ManagedObject &folder = *value(context.fetch({.entity = "Folders", .predicate = {}})).back();
    ManagedObject *task = nullptr;
    std::int64_t number = 0;
    add("fetch one task by its service id, each time another",
        [&] { task = fetch(context, "taskID == %@", Value(++number * 37)).at(0); });
    const ObjectID id = task->objectID();
    add("open a context and read one task", [&] {
        ObjectContext fresh(store, MergePolicy::Rollback);
        (void)fresh.existingObject(id)->text("title");
    });
    add("change one attribute and save", [&] {
        task->setValue("star", !task->boolean("star"));
        value(context.save());
    });
    add("undo that and save", [&] {
        context.undoManager()->undo();
        value(context.save());
    });
    std::vector<ManagedObject *> made;
    add("insert a task and save", [&] {
        made.push_back(&context.insert("Tasks"));
        value(context.save());
    });
    add("add a task to a folder and save", [&] {
        folder.addObject("tasks", *made[static_cast<std::size_t>(number++) % made.size()]);
        value(context.save());
    });
    ManagedObject &tag = *value(context.fetch({.entity = "Tags", .predicate = {}})).back();
    add("add a task to a tag and save", [&] {
        tag.addObject("tasks", *made[static_cast<std::size_t>(number++) % made.size()]);
        value(context.save());
    });
    value(other.mergeExternalChanges());
    add("save a change and merge it elsewhere", [&] {
        task->setValue("star", !task->boolean("star"));
        value(context.save());
        if (!value(other.mergeExternalChanges()))
            throw std::runtime_error("nothing merged");
    });
    add("delete a task and save", [&] {
        context.remove(*made.back());
        made.pop_back();
        value(context.save());
    });
    return rows;
}

} // namespace

int main(int count, char **arguments)
{
    try {
        const int large = count > 1 ? std::atoi(arguments[1]) : 1000000;
        std::vector<std::vector<Figure>> columns;
        for (const int tasks : {10000, large}) {
            const bench::Workplace workplace;
            const auto made = bench::generate(workplace.path(), {.tasks = tasks});
            ::sync(); // or the first saves wait for the disk, which still writes the store that was just made
            columns.push_back(measured(made->store()));
        }
        bench::printHeader("one task in " + std::to_string(large) + " tasks (ours) and in 10,000 (raw)");
        for (std::size_t i = 0; i < columns[0].size(); ++i)
            bench::printRatio(columns[0][i].work, columns[1][i].milliseconds, columns[0][i].milliseconds, "ms", 1.5);
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
