// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"
#include "model/settings_defaults.h"
#include "support/recording_sync_host.h"
#include "support/test_store.h"
#include "sync/toodledo_sync.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace support {

/// One computer of a user for a test: a store, settings and a host, which synchronise with the service at an address.
class SyncDevice
{
public:
    explicit SyncDevice(const std::string &address = {}, bool guards = true)
    {
        settings.set("ToodledoHost", address);
        settings.set("ToodleDoUsername", std::string("ana@example.org"));
        settings.set("ToodleDoPassword", std::string("secret word"));
        settings.set("SyncGuards", guards);
    }

    /// Saves, runs to the end, merges what was saved into the main context and tells how the run ended.
    syncing::SyncOutcome sync()
    {
        host.clear();
        store.save();
        syncing::ToodledoSync run({store.store(), settings, store.clock, host, makeTransport});
        if (const auto started = run.startSyncTasks(); !started)
            throw std::runtime_error(started.error().message);
        run.wait();
        for (const auto &changes : host.merges)
            store.moc().mergeChanges(changes);
        return run.outcome();
    }

    /// The task with this title, which must be the only one.
    [[nodiscard]] model::Tasks &task(std::string_view title)
    {
        const auto found = store.fetch({.entity = "Tasks",
            .predicate = objectstore::Predicate::format("title == %@", {objectstore::Value(std::string(title))}),
            .sortDescriptors = {}});
        if (found.size() != 1)
            throw std::runtime_error(std::to_string(found.size()) + " tasks are titled " + std::string(title));
        return *model::as<model::Tasks>(found.front());
    }
    [[nodiscard]] std::vector<std::string> taskTitles() { return titles(store.all("Tasks")); }

    /// Changes a record as the user does: stamped and saved.
    void edit(model::ManagedObject &record, std::string_view attribute, objectstore::Value value)
    {
        record.setValue(attribute, std::move(value));
        record.setValue("modifiedDate", store.clock.now());
        store.save();
    }

    TestStore store;
    foundation::MemorySettingsFile settingsFile;
    foundation::Settings settings{settingsFile, model::settingsDefaults()};
    RecordingSyncHost host;
    std::function<std::unique_ptr<toodledo::HttpTransport>()> makeTransport; ///< empty means HTTP
};

} // namespace support
