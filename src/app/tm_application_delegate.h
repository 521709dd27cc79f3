// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/main_thread_sync_host.h"
#include "app/qvl_location_manager_delegate.h"
#include "app/reminder_timer.h"
#include "app/repeating_schedule.h"
#include "app/settings_care.h"
#include "app/store_care.h"
#include "app/tm_application.h"
#include "app/user_interaction.h"
#include "foundation/local_zone_watch.h"
#include "foundation/settings.h"
#include "hotkeys/qvl_hot_key_center.h"
#include "model/data_utilities.h"
#include "model/edit_tracking.h"
#include "model/task_queries.h"
#include "model/task_store.h"
#include "sync/toodledo_sync.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

namespace app {

/// What the delegate works with; all but the store must outlive it.
struct Environment {
    TMApplication &application;
    std::unique_ptr<model::TaskStore> store;
    foundation::Settings &settings;
    const foundation::Clock &clock;
    UserInteraction &user;
    /// The transport of synchronisation; empty means libcurl.
    std::function<std::unique_ptr<toodledo::HttpTransport>()> makeTransport = {};
    /// Where the global hot key is registered; null for none.
    hotkeys::QVLHotKeyCenter *hotKeyCenter = nullptr;
    /// What tells the position; empty means nothing does.
    QVLLocationManagerDelegate::MakeManager makeLocationManager = {};
};

/// The hub of the program: owns the store with its main context, the tracking of edits, the timers and the running
/// synchronisation, and knows in which order the program comes up and goes down.
///
/// Main thread. Changes are announced once per turn of the event loop and saved a moment after they were made; a save
/// that fails is shown once, keeps every change, and is tried again until it succeeds. A save that another program
/// holds up waits for a tenth of a second and is tried again between events; the status line tells when that lasts.
class TMApplicationDelegate final : public QObject
{
    Q_OBJECT

public:
    explicit TMApplicationDelegate(Environment environment);
    ~TMApplicationDelegate() override;

    /// The launch, after the windows are made and connected.
    void applicationDidFinishLaunching();
    /// Commits what is being edited and saves; false when the user would rather stay.
    [[nodiscard]] bool applicationShouldTerminate();
    /// Ends the synchronisation that may run and writes the settings.
    void applicationWillTerminate();

    [[nodiscard]] objectstore::ObjectContext &managedObjectContext() { return m_store->managedObjectContext(); }
    [[nodiscard]] foundation::Settings &settings() { return m_settings; }
    [[nodiscard]] const foundation::Clock &clock() const { return m_clock; }
    [[nodiscard]] UserInteraction &user() { return m_user; }
    [[nodiscard]] TMApplication &application() { return m_application; }
    [[nodiscard]] model::EditTracking &editTracking() { return m_tracking; }
    [[nodiscard]] model::DataUtilities records() { return {managedObjectContext(), m_user}; }
    /// What the lists show, by the settings and the location filter.
    [[nodiscard]] model::ListFilter listFilter() const;

    [[nodiscard]] QVLLocationManagerDelegate &locationController() { return m_locationController; }
    /// The contexts whose tasks can be done at the current position.
    [[nodiscard]] std::vector<model::Contexts *> contextsNear();
    /// Marks the tasks of the current position anew, as the location filter goes on or off, and saves.
    void filterTasks(bool byLocation);
    /// Marks the tasks that can be done at the current position, and no others; not while a synchronisation runs.
    void flagAllTasksForLocation();
    /// The same where the position has come near other contexts; false where it has not.
    bool followLocation();

    /// Saves the main context; a failure is logged and shown.
    void saveAction();
    /// Takes over what other programs have written to the store.
    void mergeExternalChanges();

    /// Registers the hot key of the settings with the desktop, anew if it was registered.
    void initializeHotKey();
    [[nodiscard]] hotkeys::QVLHotKey &hotKey() { return *m_hotKey; }
    /// Takes another combination for the hot key, which holds and is in the settings' file at once.
    void changeHotKey(const hotkeys::QVLKeyCombo &keyCombo);
    /// Lets the hot key do nothing until `initializeHotKey`.
    void suspendHotKey();
    /// Why the desktop refuses the hot key; empty while it does not.
    [[nodiscard]] const QString &hotKeyProblem() const { return m_hotKeyProblem; }
    /// What the parts of a combination are called on this keyboard.
    [[nodiscard]] std::vector<std::string> parts(const hotkeys::QVLKeyCombo &keyCombo) const;

    /// Opens a window to take down a task, with a title where there is one already.
    void quickTask(const QString &title = {});

    [[nodiscard]] bool isFirstRun() const;
    [[nodiscard]] QString statusText() const { return m_statusText; }
    void updateStatus(const QString &text);

    [[nodiscard]] bool isSyncing() const { return m_isSyncing; }
    /// Starts a synchronisation unless one is under way.
    void synchronizeTasks();

    /// The local midnight of the day that the lists show.
    [[nodiscard]] foundation::Instant today() const { return m_today; }
    void initTimers();
    /// Schedules the synchronisations anew after the setting `SyncInterval` changed.
    void resetTimer();
    /// The tick of every two seconds: whether a day has turned, the computer has moved to another time zone, or a
    /// synchronisation is due. The clock decides, so that a computer that slept is up to date as soon as it wakes.
    void checkSecondActions();
    void newDay();
    /// "3/7", "3", or nothing: what waits today and in the Inbox, counted now.
    [[nodiscard]] QString dockBadge();
    /// The badge as it was last counted.
    [[nodiscard]] const QString &badge() const { return m_badge; }
    void updateDockBadge();

Q_SIGNALS:
    /// What is being typed is to be put into its record now.
    void commitEditing();
    void objectsDidChange(const objectstore::ObjectsChange &change);
    /// Another program or a synchronisation changed the store.
    void storeDidChangeElsewhere();
    void statusTextChanged(const QString &text);
    void newDayDidBegin();
    void quickTaskRequested(const QString &title);
    void hotKeyProblemChanged(const QString &problem);
    void syncDidBegin();
    void syncDidEnd();
    void columnsDidChange();
    /// Another program has changed some of the settings.
    void settingsDidChangeElsewhere();
    void dockBadgeChanged(const QString &text);

private:
    [[nodiscard]] foundation::Result<void> save();
    [[nodiscard]] foundation::Result<void> saveBeforeQuitting();
    void waitForOtherWriter();
    void logError(const foundation::Error &error) const;
    void announce(const objectstore::ObjectsChange &change);
    void saveSoon();
    void endSync();
    [[nodiscard]] std::unique_ptr<hotkeys::QVLHotKey> makeHotKey();
    void registerHotKey();
    void hotKeyPressed(hotkeys::QVLHotKey &hotKey);
    void setHotKeyProblem(const QString &problem);
    void renewSmartFolders();
    void takeOverSettings(const foundation::Settings::Keys &changed);
    [[nodiscard]] bool isReadOnly() const { return !m_store->store().notice().empty(); }
    void markTasksForLocation(bool flag, const std::vector<model::Contexts *> &near);

    TMApplication &m_application;
    std::unique_ptr<model::TaskStore> m_store;
    foundation::Settings &m_settings;
    const foundation::Clock &m_clock;
    UserInteraction &m_user;
    std::function<std::unique_ptr<toodledo::HttpTransport>()> m_makeTransport;

    hotkeys::QVLHotKeyCenter *m_hotKeyCenter;
    std::unique_ptr<hotkeys::QVLHotKey> m_hotKey;
    QString m_hotKeyProblem;

    QVLLocationManagerDelegate m_locationController;
    std::vector<const model::Contexts *> m_marked; ///< the contexts whose tasks are

    StoreCare m_care;
    SettingsCare m_settingsCare;
    model::EditTracking m_tracking;
    MainThreadSyncHost m_syncHost;
    std::unique_ptr<syncing::ToodledoSync> m_sync;
    objectstore::Subscription m_changes;

    ReminderTimer m_reminderTimer;
    QTimer m_saveTimer;
    QTimer m_secondsTimer;
    RepeatingSchedule m_syncSchedule;
    foundation::LocalZoneWatch m_zone;
    foundation::Instant m_today;
    QString m_statusText;
    QString m_badge;
    bool m_isSyncing = false;
    bool m_saveFailed = false;
    int m_savesHeldUp = 0; ///< by another program, in a row
};

} // namespace app
