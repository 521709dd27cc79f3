// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/record_lookup.h"
#include "cli/task_changes.h"
#include "cli/task_view.h"
#include "cli/text.h"
#include "cli/workplace.h"
#include "model/task_queries.h"

namespace cli {

using foundation::Failure;
using foundation::Result;
using model::Tasks;
using objectstore::ObjectContext;

namespace {

/// All tasks that the operands name, before any of them is changed.
Result<std::vector<Tasks *>> namedTasks(ObjectContext &moc, const Arguments &arguments)
{
    std::vector<Tasks *> tasks;
    for (const std::string &reference : arguments.operands) {
        auto task = taskNamed(moc, reference);
        if (!task)
            return Failure(std::move(task.error()));
        tasks.push_back(*task);
    }
    return tasks;
}

/// Changes each named task and saves; `refusal` tells why a task cannot be changed so, or is empty.
template <class Refusal, class Change>
Done changeTasks(Workplace &workplace, const Arguments &arguments, Refusal refusal, Change change)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    auto tasks = namedTasks(**moc, arguments);
    if (!tasks)
        return Failure(std::move(tasks.error()));
    for (const Tasks *task : *tasks) {
        if (const std::string why = refusal(*task); !why.empty())
            return notUnderstood(inQuotes(task->title()) + " " + why);
    }
    for (Tasks *task : *tasks)
        change(*task);
    return workplace.save();
}

std::string never(const Tasks &)
{
    return {};
}

/// In the first launch of a store the context "None" has no id yet by which a new task would find it.
Result<void> placeInDefaultContext(ObjectContext &moc, Tasks &task)
{
    if (task.contexts())
        return {};
    auto none = recordNamed(moc, kindOf("Contexts"), "None");
    if (!none)
        return Failure(std::move(none.error()));
    task.setRelated("contexts", *none);
    return {};
}

} // namespace

Done addTask(Workplace &workplace, const Arguments &arguments)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const auto changes = TaskChanges::read(arguments, **moc, workplace.clock().now());
    if (!changes)
        return Failure(changes.error());
    auto &task = model::insert<Tasks>(**moc);
    task.setTitle(arguments.operands.front());
    changes->applyTo(task);
    if (auto placed = placeInDefaultContext(**moc, task); !placed)
        return placed;
    if (auto saved = workplace.save(); !saved)
        return saved;
    workplace.out += (*moc)->uri(task) + "\n";
    return {};
}

Done showTask(Workplace &workplace, const Arguments &arguments)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const auto task = taskNamed(**moc, arguments.operands.front());
    if (!task)
        return Failure(task.error());
    if (arguments.has("json")) {
        workplace.out += "[";
        appendJson(workplace.out, recordOf(**task, kindOf("Tasks")));
        workplace.out += "]\n";
    } else {
        workplace.out += taskSheet(**task, workplace.terminal());
    }
    return {};
}

Done editTask(Workplace &workplace, const Arguments &arguments)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const auto task = taskNamed(**moc, arguments.operands.front());
    if (!task)
        return Failure(task.error());
    if (arguments.options.empty())
        return notUnderstood("Nothing to change was given. \"qvl edit --help\" shows what can be.");
    const auto changes = TaskChanges::read(arguments, **moc, workplace.clock().now());
    if (!changes)
        return Failure(changes.error());
    changes->applyTo(**task);
    return workplace.save();
}

Done completeTasks(Workplace &workplace, const Arguments &arguments)
{
    const bool complete = !arguments.has("undo");
    return changeTasks(workplace, arguments, never, [&](Tasks &task) {
        if (task.complete() == complete)
            return; // a task keeps the day on which it was completed first
        task.setComplete(complete);
        task.setCompletedDate(complete ? std::optional(workplace.clock().now()) : std::nullopt);
    });
}

Done deleteTasks(Workplace &workplace, const Arguments &arguments)
{
    return changeTasks(workplace, arguments, never, [](Tasks &task) { task.setDeleteOnSync(true); });
}

Done undeleteTasks(Workplace &workplace, const Arguments &arguments)
{
    return changeTasks(
        workplace, arguments,
        [](const Tasks &task) { return task.deleteOnSync() ? std::string() : "is not in the Trash."; },
        [](Tasks &task) { task.setDeleteOnSync(false); });
}

/// A task that the service knows is kept, out of sight, until a synchronisation has deleted it there too; forgotten
/// here it would come back from there.
Done emptyTrash(Workplace &workplace, const Arguments &)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const auto found = (*moc)->fetch(model::trashTasks());
    if (!found)
        return Failure(found.error());
    for (objectstore::ManagedObject *object : *found) {
        auto *task = model::as<Tasks>(object);
        if (task->taskID() != 0)
            task->setMarkedDeleted(true);
        else
            (*moc)->remove(*task);
    }
    return workplace.save();
}

} // namespace cli
