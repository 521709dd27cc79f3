// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/data_utilities.h"
#include "model/task_store.h"
#include "support/collected_errors.h"
#include "support/task_builder.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

#include <memory>
#include <stdexcept>
#include <vector>

namespace support {

/// A task store of its own for a test, in a temporary folder, as the first launch of the program leaves it.
class TestStore
{
public:
    TestStore() { launch(); }

    /// Closes the store and, a second later, opens it again as the next launch does; objects from before are gone.
    void relaunch()
    {
        m_store.reset();
        clock.advance(1);
        launch();
    }

    [[nodiscard]] model::ObjectContext &moc() { return m_store->managedObjectContext(); }
    [[nodiscard]] objectstore::Store &store() { return m_store->store(); }
    [[nodiscard]] model::DataUtilities records() { return {moc(), errors}; }

    model::Tasks &add(const TaskBuilder &task) { return task.addTo(records()); }

    void save()
    {
        if (const auto saved = moc().save(); !saved)
            throw std::runtime_error("not saved: " + saved.error().message + " " + saved.error().detail);
    }

    [[nodiscard]] std::vector<model::ManagedObject *> fetch(const objectstore::FetchRequest &request)
    {
        auto objects = moc().fetch(request);
        if (!objects)
            throw std::runtime_error("not fetched: " + objects.error().message + " " + objects.error().detail);
        return std::move(*objects);
    }
    /// All objects of an entity, in the order of insertion.
    [[nodiscard]] std::vector<model::ManagedObject *> all(std::string_view entity)
    {
        return fetch({.entity = std::string(entity), .predicate = {}, .sortDescriptors = {}});
    }

    TestClock clock;
    CollectedErrors errors;
    TemporaryFolder folder;

private:
    void launch()
    {
        auto opened = model::TaskStore::open(folder.path(), clock, errors);
        if (!opened)
            throw std::runtime_error("not opened: " + opened.error().message + " " + opened.error().detail);
        m_store = std::move(*opened);
    }

    std::unique_ptr<model::TaskStore> m_store;
};

/// The values of a text attribute, one for each object.
inline std::vector<std::string> texts(const std::vector<model::ManagedObject *> &objects, std::string_view attribute)
{
    std::vector<std::string> texts;
    for (const model::ManagedObject *object : objects)
        texts.emplace_back(object->text(attribute));
    return texts;
}
inline std::vector<std::string> titles(const std::vector<model::ManagedObject *> &objects)
{
    return texts(objects, "title");
}

} // namespace support
