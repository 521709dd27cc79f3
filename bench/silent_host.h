// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "measure.h"
#include "sync/toodledo_sync.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace bench {

/// Shows nothing of a run, except its steps and their times where QUELVIN_BENCH_STATUS is set; throws what would alert.
class SilentHost final : public syncing::SyncHost
{
public:
    void updateStatus(std::string_view text) override
    {
        if (std::getenv("QUELVIN_BENCH_STATUS"))
            std::printf("  %8.3f %s\n", bench::secondsSinceStart(), std::string(text).c_str());
    }
    void displayAlert(std::string_view, std::string_view message) override
    {
        throw std::runtime_error(std::string(message));
    }
    bool allowsDeletions(std::string_view) override { return false; }
    void displayNotification(std::string_view, std::string_view) override { }
    void post(syncing::SyncNotification) override { }
    void unregisterForChangeNotifications() override { }
    void registerForChangeNotifications() override { }
    void mergeChanges(objectstore::ChangeSet) override { }
    void saveAction() override { }
    void presentError(const foundation::Error &error) override { throw std::runtime_error(error.message); }
};

} // namespace bench
