// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/edit_tracking.h"
#include "sync/sync_host.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// A host that writes down what a run tells and asks.
class RecordingSyncHost : public syncing::SyncHost
{
public:
    struct Alert {
        std::string title;
        std::string message;
    };

    void updateStatus(std::string_view text) override { note(statuses, std::string(text)); }
    void displayAlert(std::string_view title, std::string_view message) override
    {
        note(alerts, Alert{std::string(title), std::string(message)});
    }
    bool allowsDeletions(std::string_view sentence) override
    {
        note(questions, std::string(sentence));
        return answer;
    }
    void displayNotification(std::string_view title, std::string_view description) override
    {
        note(notifications, std::string(title) + ": " + std::string(description));
    }
    void post(syncing::SyncNotification notification) override
    {
        note(events, notification == syncing::SyncNotification::QVLSyncDidBegin ? "QVLSyncDidBegin" : "QVLSyncDidEnd");
    }
    void unregisterForChangeNotifications() override { note(events, "unregister"); }
    void registerForChangeNotifications() override { note(events, "register"); }
    void mergeChanges(objectstore::ChangeSet changes) override { note(merges, std::move(changes)); }
    void saveAction() override { note(events, "saveAction"); }
    void presentError(const foundation::Error &error) override { note(errors, error); }

    std::vector<std::string> statuses;
    std::vector<std::string> notifications;
    std::vector<std::string> events;
    std::vector<std::string> questions;
    std::vector<Alert> alerts;
    std::vector<foundation::Error> errors;
    std::vector<objectstore::ChangeSet> merges;
    bool answer = false; ///< to every question

    /// Forgets what was recorded, for the next run.
    void clear()
    {
        statuses.clear();
        notifications.clear();
        events.clear();
        questions.clear();
        alerts.clear();
        errors.clear();
        merges.clear();
    }

private:
    template <class List, class Item> void note(List &list, Item &&item)
    {
        const std::lock_guard lock(m_mutex);
        list.emplace_back(std::forward<Item>(item));
    }

    std::mutex m_mutex;
};

} // namespace support
