// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/user_interaction.h"
#include "model/edit_tracking.h"
#include "sync/sync_host.h"

#include <QObject>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace app {

/// Brings what a synchronisation run says and asks to the main thread by queued calls. Where the run has to wait, only
/// its own thread does: the window goes on working, also under an alert.
///
/// Made and destroyed on the main thread, after the last run. `stopServing` frees a run that waits.
class MainThreadSyncHost final : public QObject, public syncing::SyncHost
{
    Q_OBJECT

public:
    /// All of them must outlive the host. `save` saves the main context and shows what goes wrong.
    MainThreadSyncHost(objectstore::ObjectContext &moc, model::EditTracking &tracking, UserInteraction &user,
        std::function<void()> save);

    /// From now on everything that waits returns at once without being done. For the end of the program.
    void stopServing();

    void presentError(const foundation::Error &error) override;
    void updateStatus(std::string_view text) override;
    void displayAlert(std::string_view title, std::string_view message) override;
    bool allowsDeletions(std::string_view sentence) override;
    void displayNotification(std::string_view title, std::string_view description) override;
    void post(syncing::SyncNotification notification) override;
    void unregisterForChangeNotifications() override;
    void registerForChangeNotifications() override;
    void mergeChanges(objectstore::ChangeSet changes) override;
    void saveAction() override;

Q_SIGNALS:
    void statusChanged(const QString &text);
    void syncDidBegin();
    void syncDidEnd();
    void changesMerged();

private:
    void later(std::function<void()> task);
    void andWait(std::function<void()> task);

    objectstore::ObjectContext &m_moc;
    model::EditTracking &m_tracking;
    UserInteraction &m_user;
    std::function<void()> m_save;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isServing = true;
};

} // namespace app
