// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/data_utilities.h"
#include "objectstore/object_context.h"
#include "support/test_clock.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// Describes a task in the words of a test: `aTask().titled("Milk").in("Home").due("2026-12-01")`.
/// Folders, contexts and tags that are named and missing are made; a name stands for its first record.
class TaskBuilder
{
public:
    TaskBuilder &titled(const std::string &title) { return with(&model::Tasks::setTitle, title); }
    /// Minutes before the due date.
    TaskBuilder &reminding(std::int64_t minutes) { return with(&model::Tasks::setReminder, minutes); }
    TaskBuilder &noted(const std::string &notes) { return with(&model::Tasks::setNotes, notes); }
    TaskBuilder &in(std::string folder)
    {
        return then([folder](model::Tasks &task, const model::DataUtilities &records) {
            task.setRelated("folders", &existingOr(records.getFolderByTitle(folder), folder, records));
        });
    }
    TaskBuilder &doneAt(std::string context)
    {
        return then([context](model::Tasks &task, const model::DataUtilities &records) {
            task.setRelated("contexts", &existingOr(records.getContextByTitle(context), context, records));
        });
    }
    TaskBuilder &tagged(std::string tag)
    {
        return then([tag](model::Tasks &task, const model::DataUtilities &records) {
            const auto tags = records.getTags();
            const auto found = tags.value().find(tag);
            task.addObject("tags", existingOr(found == tags->end() ? nullptr : found->second, tag, records));
        });
    }
    /// The status by name and the priority by value, which must exist.
    TaskBuilder &inState(std::string state)
    {
        return then([state](model::Tasks &task, const model::DataUtilities &records) {
            task.setRelated("states", &existing(records.getStateByName(state), state));
        });
    }
    TaskBuilder &ofPriority(int priority)
    {
        return then([name = std::to_string(priority)](model::Tasks &task, const model::DataUtilities &records) {
            task.setRelated("priorities", &existing(records.getPriorityByName(name), name));
        });
    }
    TaskBuilder &starting(std::string_view date) { return with(&model::Tasks::setStartDate, at(date)); }
    TaskBuilder &due(std::string_view date) { return with(&model::Tasks::setDueDate, at(date)); }
    TaskBuilder &modified(std::string_view date) { return with(&model::Tasks::setModifiedDate, at(date)); }
    TaskBuilder &completed(std::string_view date)
    {
        return with(&model::Tasks::setComplete, true).with(&model::Tasks::setCompletedDate, at(date));
    }
    TaskBuilder &starred() { return with(&model::Tasks::setStar, true); }
    TaskBuilder &inTheTrash() { return with(&model::Tasks::setDeleteOnSync, true); }
    TaskBuilder &emptiedFromTheTrash() { return inTheTrash().with(&model::Tasks::setMarkedDeleted, true); }
    TaskBuilder &atTheCurrentLocation() { return with(&model::Tasks::setIsCurrentLocation, true); }
    /// A task that the service knows by this id.
    TaskBuilder &sentAs(std::int64_t taskID)
    {
        return with(&model::Tasks::setTaskID, taskID).with(&model::Tasks::setIsNew, false);
    }

    model::Tasks &addTo(const model::DataUtilities &records) const
    {
        auto &task = model::insert<model::Tasks>(records.moc());
        for (const Step &step : m_steps)
            step(task, records);
        return task;
    }

private:
    using Step = std::function<void(model::Tasks &, const model::DataUtilities &)>;

    template <class Setter, class Held> TaskBuilder &with(Setter setter, const Held &value)
    {
        return then([setter, value](model::Tasks &task, auto &) { (task.*setter)(value); });
    }
    TaskBuilder &then(Step step)
    {
        m_steps.push_back(std::move(step));
        return *this;
    }
    template <class Record> static Record &existing(Record *record, const std::string &name)
    {
        if (!record)
            throw std::invalid_argument("no record for: " + name);
        return *record;
    }
    template <class Record>
    static Record &existingOr(Record *record, const std::string &title, const model::DataUtilities &records)
    {
        if (record)
            return *record;
        auto &made = model::insert<Record>(records.moc());
        made.setTitle(title);
        return made;
    }

    std::vector<Step> m_steps;
};

inline TaskBuilder aTask()
{
    return {};
}

} // namespace support
