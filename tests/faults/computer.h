// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "faults/isolated.h"
#include "foundation/settings.h"
#include "histories/service_in_process.h"
#include "model/edit_tracking.h"
#include "model/task_store.h"
#include "support/recording_sync_host.h"
#include "support/test_clock.h"
#include "sync/toodledo_sync.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace faults {

/// One computer of a user who has several: a store, a settings file beside it, and runs with a service in this process.
/// What fails at its start is told to `notes`, the fault lifted, and tried again.
class Computer
{
public:
    Computer(
        const std::filesystem::path &folder, std::string_view now, histories::ServiceInProcess &service, Notes &notes);
    ~Computer();

    [[nodiscard]] objectstore::ObjectContext &context() { return m_store->managedObjectContext(); }
    [[nodiscard]] foundation::Result<void> save();

    /// One run; what it saved is merged into the context, and the errors that it told are noted.
    syncing::SyncOutcome sync();
    /// All that the last run told the user, or asked; empty when it told nothing.
    [[nodiscard]] std::string told() const;

    [[nodiscard]] std::multiset<std::string> picture();

private:
    class Host;

    histories::ServiceInProcess &m_service;
    Notes &m_notes;
    support::TestClock m_clock;
    std::unique_ptr<Host> m_host;
    foundation::JsonSettingsFile m_settingsFile;
    std::unique_ptr<foundation::Settings> m_settings;
    std::unique_ptr<model::TaskStore> m_store;
    std::unique_ptr<model::EditTracking> m_tracking;
};

} // namespace faults
