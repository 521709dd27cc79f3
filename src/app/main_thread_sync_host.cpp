// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/main_thread_sync_host.h"

#include "app/text.h"

#include <QThread>

namespace app {

namespace {

/// What a run says; its own room knows no translation.
[[maybe_unused]] constexpr const char *texts[] = {
    QT_TRANSLATE_NOOP("ToodledoSync", "Could not log on to Toodledo."),
    QT_TRANSLATE_NOOP("ToodledoSync",
        "Could not log on to Toodledo. Check your Internet connection, and make sure your user name and password are "
        "correct."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Could not synchronize with Toodledo."),
    QT_TRANSLATE_NOOP("ToodledoSync",
        "Could not synchronize with Toodledo. The most likely cause is that you have reached the hourly synch limit of "
        "ToodleDo. Wait and try again later."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Login problem"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Synchronization problem"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Logging in to Toodledo..."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Retrieving folders..."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Deleting folders on server."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Retrieving contexts..."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Retrieving tasks..."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Saving data"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Beginning sync process"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Test message"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Starting Toodledo sync"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Toodledo sync may take a few moments."),
    QT_TRANSLATE_NOOP("ToodledoSync", "Toodledo Sync Complete"),
    QT_TRANSLATE_NOOP("ToodledoSync", "Toodledo synchronization completed."),
};

} // namespace

MainThreadSyncHost::MainThreadSyncHost(
    objectstore::ObjectContext &moc, model::EditTracking &tracking, UserInteraction &user, std::function<void()> save)
    : m_moc(moc), m_tracking(tracking), m_user(user), m_save(std::move(save))
{ }

void MainThreadSyncHost::stopServing()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isServing = false;
    }
    m_changed.notify_all();
}

void MainThreadSyncHost::later(std::function<void()> task)
{
    if (QThread::currentThread() == thread())
        task();
    else
        QMetaObject::invokeMethod(this, std::move(task), Qt::QueuedConnection);
}

void MainThreadSyncHost::andWait(std::function<void()> task)
{
    if (QThread::currentThread() == thread()) {
        task();
        return;
    }
    const auto isDone = std::make_shared<bool>(false); // the task may run, or be dropped, after we stopped waiting
    QMetaObject::invokeMethod(
        this,
        [this, isDone, task = std::move(task)] {
            {
                const std::scoped_lock lock(m_mutex);
                if (!m_isServing)
                    return;
            }
            task();
            {
                const std::scoped_lock lock(m_mutex);
                *isDone = true;
            }
            m_changed.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, &isDone] { return *isDone || !m_isServing; });
}

void MainThreadSyncHost::presentError(const foundation::Error &error)
{
    andWait([this, error] { m_user.presentError(error); });
}

void MainThreadSyncHost::updateStatus(std::string_view text)
{
    later([this, shown = translated("ToodledoSync", text)] { Q_EMIT statusChanged(shown); });
}

void MainThreadSyncHost::displayAlert(std::string_view title, std::string_view message)
{
    andWait([this, heading = translated("ToodledoSync", title), sentence = translated("ToodledoSync", message)] {
        m_user.displayAlert(heading, sentence);
    });
}

bool MainThreadSyncHost::allowsDeletions(std::string_view sentence)
{
    const auto isAllowed = std::make_shared<bool>(false);
    andWait([this, isAllowed, question = toQString(sentence)] {
        *isAllowed = m_user.ask(question, tr("Delete here too"), tr("Keep"));
    });
    const std::scoped_lock lock(m_mutex);
    return *isAllowed;
}

void MainThreadSyncHost::displayNotification(std::string_view title, std::string_view description)
{
    later([this, heading = translated("ToodledoSync", title), sentence = translated("ToodledoSync", description)] {
        m_user.displayNotification(heading, sentence);
    });
}

void MainThreadSyncHost::post(syncing::SyncNotification notification)
{
    later([this, notification] {
        if (notification == syncing::SyncNotification::QVLSyncDidBegin)
            Q_EMIT syncDidBegin();
        else
            Q_EMIT syncDidEnd();
    });
}

void MainThreadSyncHost::unregisterForChangeNotifications()
{
    andWait([this] { m_tracking.unregisterForChangeNotifications(); });
}

void MainThreadSyncHost::registerForChangeNotifications()
{
    andWait([this] { m_tracking.registerForChangeNotifications(); });
}

void MainThreadSyncHost::mergeChanges(objectstore::ChangeSet changes)
{
    later([this, changes = std::move(changes)] {
        m_moc.mergeChanges(changes);
        Q_EMIT changesMerged();
    });
}

void MainThreadSyncHost::saveAction()
{
    m_save();
}

} // namespace app
