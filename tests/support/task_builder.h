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
    TaskBuilder &titled(std::string title)
    {
        return then([title](model::Tasks &task, auto &) { task.setTitle(title); });
    }
    /// Minutes before the due date.
    TaskBuilder &reminding(std::int64_t minutes)
    {
        return then([minutes](model::Tasks &task, auto &) { task.setReminder(minutes); });
    }
    TaskBuilder &noted(std::string notes)
    {
        return then([notes](model::Tasks &task, auto &) { task.setNotes(notes); });
    }
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
    TaskBuilder &starting(std::string_view date)
    {
        return then([when = at(date)](model::Tasks &task, auto &) { task.setStartDate(when); });
    }
    TaskBuilder &due(std::string_view date)
    {
        return then([when = at(date)](model::Tasks &task, auto &) { task.setDueDate(when); });
    }
    TaskBuilder &modified(std::string_view date)
    {
        return then([when = at(date)](model::Tasks &task, auto &) { task.setModifiedDate(when); });
    }
    TaskBuilder &completed(std::string_view date)
    {
        return then([when = at(date)](model::Tasks &task, auto &) {
            task.setComplete(true);
            task.setCompletedDate(when);
        });
    }
    TaskBuilder &starred()
    {
        return then([](model::Tasks &task, auto &) { task.setStar(true); });
    }
    TaskBuilder &inTheTrash()
    {
        return then([](model::Tasks &task, auto &) { task.setDeleteOnSync(true); });
    }
    TaskBuilder &emptiedFromTheTrash()
    {
        return inTheTrash().then([](model::Tasks &task, auto &) { task.setMarkedDeleted(true); });
    }
    TaskBuilder &atTheCurrentLocation()
    {
        return then([](model::Tasks &task, auto &) { task.setIsCurrentLocation(true); });
    }
    /// A task that the service knows by this id.
    TaskBuilder &sentAs(std::int64_t taskID)
    {
        return then([taskID](model::Tasks &task, auto &) {
            task.setTaskID(taskID);
            task.setIsNew(false);
        });
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
