// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application_delegate.h"

#include "app/store_opening.h"
#include "app/text.h"
#include "foundation/log.h"
#include "hotkeys/qvl_key_code_translator.h"
#include "model/settings_defaults.h"
#include "model/smart_folder.h"
#include "objectstore/undo_manager.h"

#include <QAbstractEventDispatcher>
#include <chrono>

namespace app {

using namespace std::chrono_literals;
using foundation::Error;
namespace keys = model::keys;

namespace {
constexpr auto saveDelay = 700ms; // typing is saved in pauses, and a crash costs less than a second of it
constexpr auto saveRetryDelay = 20s;
constexpr auto longestSaveWait = 100ms; // for another writer; longer would be felt while typing
constexpr auto heldUpSaveDelay = 300ms;
constexpr int heldUpSavesUntold = 10; // some four seconds
constexpr int heldUpSavesBeforeQuitting = 100; // some ten seconds
constexpr auto tickInterval = 2s;
constexpr auto patienceBeforeQuitting = 3s; // with a keyring that is locked

bool isHeldUp(const Error &error)
{
    return error.domain == "ObjectStoreErrorDomain"
        && error.code == static_cast<int>(objectstore::StoreErrorCode::Busy);
}

bool isKeptBySynchronisation(const std::string &key)
{
    return key == keys::toodledoKey || key == keys::lastKeyUpdate || key == keys::dateLastSynched;
}

} // namespace

TMApplicationDelegate::TMApplicationDelegate(Environment environment)
    : m_application(environment.application)
    , m_store(std::move(environment.store))
    , m_settings(environment.settings)
    , m_clock(environment.clock)
    , m_user(environment.user)
    , m_makeTransport(std::move(environment.makeTransport))
    , m_hotKeyCenter(environment.hotKeyCenter)
    , m_hotKey(makeHotKey())
    , m_locationController(m_settings, m_clock, std::move(environment.makeLocationManager))
    , m_care(m_store->store(), backupFolder(m_store->store().file().parent_path()))
    , m_settingsCare(m_settings)
    , m_tracking(managedObjectContext(), m_clock)
    , m_syncHost(managedObjectContext(), m_tracking, m_user, [this] { saveAction(); })
    , m_reminderTimer(managedObjectContext(), m_clock, m_user, [this] { saveAction(); })
{
    managedObjectContext().enableUndo();
    managedObjectContext().setLongestWait(longestSaveWait);
    m_changes = managedObjectContext().onObjectsDidChange(
        [this](const objectstore::ObjectsChange &change) { announce(change); });

    connect(&m_syncHost, &MainThreadSyncHost::statusChanged, this, &TMApplicationDelegate::updateStatus);
    connect(&m_syncHost, &MainThreadSyncHost::syncDidBegin, this, &TMApplicationDelegate::syncDidBegin);
    connect(&m_syncHost, &MainThreadSyncHost::syncDidEnd, this, &TMApplicationDelegate::endSync);
    connect(&m_syncHost, &MainThreadSyncHost::changesMerged, this, &TMApplicationDelegate::storeDidChangeElsewhere);

    connect(&m_care, &StoreCare::troubleFound, this, [this](const Error &error) { m_user.presentError(error); });
    connect(
        &m_settingsCare, &SettingsCare::troubleFound, this, [this](const Error &error) { m_user.presentError(error); });
    connect(&m_settingsCare, &SettingsCare::changedElsewhere, this, &TMApplicationDelegate::takeOverSettings);

    m_saveTimer.setSingleShot(true);
    connect(&m_saveTimer, &QTimer::timeout, this, &TMApplicationDelegate::saveAction);
    connect(&m_secondsTimer, &QTimer::timeout, this, [this] {
        mergeExternalChanges();
        checkSecondActions();
        m_settingsCare.tick();
    });
}

TMApplicationDelegate::~TMApplicationDelegate()
{
    applicationWillTerminate();
    suspendHotKey();
    if (m_hotKeyCenter)
        m_hotKeyCenter->onLateFailure({});
}

void TMApplicationDelegate::applicationDidFinishLaunching()
{
    updateStatus({});
    initializeHotKey();
    if (!m_hotKeyProblem.isEmpty())
        updateStatus(tr("The hot key opens no quick entry. %1").arg(m_hotKeyProblem));
    m_locationController.applySettings();
    m_tracking.registerForChangeNotifications();
    if (auto *dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
            [this] { managedObjectContext().processPendingChanges(); });
    updateDockBadge();
    initTimers();
    if (m_settings.boolean(keys::SyncOnLaunch) && m_settings.boolean(keys::SyncToToodledo))
        synchronizeTasks();
    m_care.checkAndBackUp();
    newDay();
}

bool TMApplicationDelegate::applicationShouldTerminate()
{
    Q_EMIT commitEditing();
    bool isTerminating = true;
    if (managedObjectContext().hasChanges()) {
        if (const auto saved = saveBeforeQuitting(); !saved) {
            logError(saved.error());
            m_user.presentError(saved.error());
            isTerminating = m_user.ask(
                tr("Could not save changes while quitting. Quit anyway?"), tr("Quit anyway"), tr("Cancel"));
        }
    }
    if (const auto written = m_settings.synchronizeWithSecrets({.patience = patienceBeforeQuitting}); !written)
        m_user.presentError(written.error());
    return isTerminating;
}

void TMApplicationDelegate::applicationWillTerminate()
{
    m_saveTimer.stop();
    m_secondsTimer.stop();
    m_reminderTimer.stopTimer();
    m_syncHost.stopServing();
    m_sync.reset();
    m_settings.set(keys::GlobalHotKey, m_hotKey->keyCombo().plistRepresentation());
    if (const auto written = m_settings.synchronize(); !written)
        logError(written.error());
}

model::ListFilter TMApplicationDelegate::listFilter() const
{
    return {
        .showCompleted = m_settings.boolean(keys::ShowCompletedTasks),
        .byLocation = m_application.isFilteringByLocation(),
    };
}

std::vector<model::Contexts *> TMApplicationDelegate::contextsNear()
{
    return records().contextsNear(m_locationController.location());
}

void TMApplicationDelegate::filterTasks(bool byLocation)
{
    markTasksForLocation(byLocation, contextsNear());
    saveAction();
}

void TMApplicationDelegate::flagAllTasksForLocation()
{
    if (!m_isSyncing)
        markTasksForLocation(true, contextsNear());
}

bool TMApplicationDelegate::followLocation()
{
    const auto near = contextsNear();
    if (m_isSyncing || std::equal(near.begin(), near.end(), m_marked.begin(), m_marked.end()))
        return false;
    markTasksForLocation(true, near);
    return true;
}

/// The marks are the program's own work, which is neither sent to the service nor undone.
void TMApplicationDelegate::markTasksForLocation(bool flag, const std::vector<model::Contexts *> &near)
{
    if (isReadOnly())
        return;
    const auto pause = m_tracking.pause();
    objectstore::UndoManager &undo = *managedObjectContext().undoManager();
    undo.disableRegistration();
    records().markTasksForLocation(flag, near);
    undo.enableRegistration();
    m_marked.assign(near.begin(), near.end());
}

void TMApplicationDelegate::announce(const objectstore::ObjectsChange &change)
{
    Q_EMIT objectsDidChange(change);
    saveSoon();
}

void TMApplicationDelegate::saveSoon()
{
    if (!m_saveTimer.isActive() && managedObjectContext().hasChanges())
        m_saveTimer.start(m_saveFailed ? saveRetryDelay : saveDelay);
}

foundation::Result<void> TMApplicationDelegate::save()
{
    m_saveTimer.stop();
    auto saved = managedObjectContext().save();
    if (!saved) {
        m_saveFailed = m_saveFailed || !isHeldUp(saved.error());
        return foundation::Failure(std::move(saved.error()));
    }
    m_saveFailed = false;
    m_savesHeldUp = 0;
    for (const objectstore::DiscardedValue &discarded : saved->discarded)
        foundation::logLine("A save gave up the value entered for " + discarded.property + " of "
            + m_store->store().uri(discarded.object) + ": it had been changed elsewhere.");
    if (!saved->discarded.empty())
        updateStatus(tr("A change of yours gave way to one made elsewhere at the same time."));
    return {};
}

void TMApplicationDelegate::saveAction()
{
    const bool wasFailing = m_saveFailed;
    const bool wasWaiting = m_savesHeldUp > heldUpSavesUntold;
    const auto saved = save();
    if (saved) {
        if (wasFailing || wasWaiting)
            updateStatus({});
        return;
    }
    if (isHeldUp(saved.error()))
        return waitForOtherWriter();
    m_saveTimer.start(saveRetryDelay);
    logError(saved.error());
    if (wasFailing)
        return; // it has been said
    updateStatus(tr("Your changes are not saved yet; trying again."));
    m_user.presentError(saved.error());
}

/// The user quits and can wait for a moment; another program writes for a few seconds at most.
foundation::Result<void> TMApplicationDelegate::saveBeforeQuitting()
{
    auto saved = save();
    for (int attempt = 0; !saved && isHeldUp(saved.error()) && attempt < heldUpSavesBeforeQuitting; ++attempt)
        saved = save();
    return saved;
}

void TMApplicationDelegate::waitForOtherWriter()
{
    m_saveTimer.start(heldUpSaveDelay);
    if (++m_savesHeldUp == heldUpSavesUntold + 1)
        updateStatus(tr("Another program is writing to your tasks; your changes are saved as soon as it is done."));
}

void TMApplicationDelegate::logError(const Error &error) const
{
    foundation::logLine("Failed to save to data store: " + error.message);
    foundation::logLine("  " + error.detail);
}

void TMApplicationDelegate::mergeExternalChanges()
{
    const auto merged = managedObjectContext().mergeExternalChanges();
    if (!merged)
        foundation::logLine("Other programs' changes could not be read: " + merged.error().message);
    else if (*merged)
        Q_EMIT storeDidChangeElsewhere();
}

std::unique_ptr<hotkeys::QVLHotKey> TMApplicationDelegate::makeHotKey()
{
    const auto stored = m_settings.value(keys::GlobalHotKey);
    const auto *plist = stored ? std::get_if<hotkeys::QVLKeyCombo::Plist>(&*stored) : nullptr;
    return std::make_unique<hotkeys::QVLHotKey>(std::string(keys::GlobalHotKey), toUtf8(tr("Quick Entry")),
        plist ? hotkeys::QVLKeyCombo::initWithPlistRepresentation(*plist) : hotkeys::QVLKeyCombo(),
        [this](hotkeys::QVLHotKey &hotKey) { hotKeyPressed(hotKey); });
}

void TMApplicationDelegate::initializeHotKey()
{
    suspendHotKey();
    m_hotKey = makeHotKey();
    if (m_hotKeyCenter)
        m_hotKeyCenter->onLateFailure([this](const Error &error) {
            foundation::logLine(error.message + " " + error.detail);
            setHotKeyProblem(toQString(error.message));
        });
    registerHotKey();
}

void TMApplicationDelegate::suspendHotKey()
{
    if (m_hotKeyCenter)
        m_hotKeyCenter->unregisterHotKey(*m_hotKey);
}

void TMApplicationDelegate::registerHotKey()
{
    if (!m_hotKeyCenter)
        return;
    const bool isRegistered = m_hotKeyCenter->registerHotKey(*m_hotKey);
    if (!isRegistered)
        foundation::logLine(m_hotKeyCenter->lastError()->message);
    setHotKeyProblem(isRegistered ? QString() : toQString(m_hotKeyCenter->lastError()->message));
}

void TMApplicationDelegate::setHotKeyProblem(const QString &problem)
{
    m_hotKeyProblem = problem;
    Q_EMIT hotKeyProblemChanged(problem);
}

void TMApplicationDelegate::changeHotKey(const hotkeys::QVLKeyCombo &keyCombo)
{
    m_hotKey->setKeyCombo(keyCombo);
    registerHotKey();
    m_settings.set(keys::GlobalHotKey, keyCombo.plistRepresentation());
    if (const auto written = m_settings.synchronize(); !written)
        m_user.presentError(written.error());
}

std::vector<std::string> TMApplicationDelegate::parts(const hotkeys::QVLKeyCombo &keyCombo) const
{
    return m_hotKeyCenter ? m_hotKeyCenter->parts(keyCombo) : hotkeys::QVLKeyCodeTranslator::parts(keyCombo);
}

void TMApplicationDelegate::hotKeyPressed(hotkeys::QVLHotKey &)
{
    quickTask();
}

void TMApplicationDelegate::quickTask(const QString &title)
{
    Q_EMIT quickTaskRequested(title);
}

bool TMApplicationDelegate::isFirstRun() const
{
    return !m_settings.boolean(keys::HasBeenRun);
}

void TMApplicationDelegate::updateStatus(const QString &text)
{
    m_statusText = text;
    Q_EMIT statusTextChanged(text);
}

void TMApplicationDelegate::synchronizeTasks()
{
    if (m_isSyncing)
        return;
    Q_EMIT commitEditing();
    m_isSyncing = true;
    m_sync = std::make_unique<syncing::ToodledoSync>(
        syncing::SyncEnvironment{m_store->store(), m_settings, m_clock, m_syncHost, m_makeTransport});
    if (const auto started = m_sync->startSyncTasks(); !started) {
        m_isSyncing = false;
        m_sync.reset();
        m_user.presentError(started.error());
    }
}

void TMApplicationDelegate::endSync()
{
    m_isSyncing = false;
    Q_EMIT syncDidEnd();
}

void TMApplicationDelegate::initTimers()
{
    m_reminderTimer.startTimer();
    resetTimer();
    m_today = m_clock.now(); // no midnight, so that the first tick finds a new day
    m_secondsTimer.start(tickInterval);
}

void TMApplicationDelegate::resetTimer()
{
    const auto minutes = m_settings.integer(keys::SyncInterval);
    m_syncSchedule.stop();
    if (minutes > 0)
        m_syncSchedule.start(m_clock.now(), std::chrono::minutes(std::min<std::int64_t>(minutes, 60 * 24 * 7)));
}

void TMApplicationDelegate::takeOverSettings(const foundation::Settings::Keys &changed)
{
    const auto isChanged = [&changed](std::string_view key) { return changed.contains(key); };
    if (isChanged(keys::SyncInterval))
        resetTimer();
    if (isChanged(keys::UseLocation) || isChanged(keys::NmeaSource) || isChanged(keys::NmeaBaudRate))
        m_locationController.applySettings();
    if (isChanged(keys::GlobalHotKey))
        initializeHotKey();
    if (std::all_of(changed.begin(), changed.end(), isKeptBySynchronisation))
        return; // of which nothing is on show
    updateDockBadge();
    Q_EMIT columnsDidChange();
    Q_EMIT settingsDidChangeElsewhere();
}

void TMApplicationDelegate::checkSecondActions()
{
    const bool isElsewhere = m_zone.hasChanged();
    const foundation::Instant now = m_clock.now();
    const foundation::Instant midnight = foundation::startOfLocalDay(now);
    if (midnight != m_today || isElsewhere) {
        m_today = midnight;
        newDay();
    }
    m_locationController.checkLocation();
    if (m_syncSchedule.isDue(now))
        synchronizeTasks();
}

void TMApplicationDelegate::newDay()
{
    renewSmartFolders();
    Q_EMIT newDayDidBegin();
    m_care.backUp();
    updateDockBadge();
}

void TMApplicationDelegate::renewSmartFolders()
{
    if (isReadOnly())
        return; // a store that cannot be written would complain of a change that nobody made
    if (const auto renewed = model::renewSmartFolders(managedObjectContext(), m_clock.now()); !renewed)
        foundation::logLine("Smart folders were not brought to the new day: " + renewed.error().message);
}

QString TMApplicationDelegate::dockBadge()
{
    const auto number = [this](const objectstore::FetchRequest &request) {
        return managedObjectContext().count(request).value_or(0);
    };
    const std::int64_t today = m_settings.boolean(keys::ShowTodayInBadge)
        ? number(model::todayBadgeTasks(m_clock.now(), m_settings.boolean(keys::ShowCompletedTasks)))
        : 0;
    const model::Folders *folder = records().getFolderByTitle("Inbox");
    const std::int64_t inbox
        = m_settings.boolean(keys::ShowInboxInBadge) && folder ? number(model::folderTasks(*folder, listFilter())) : 0;
    if (today > 0 && inbox > 0)
        return QStringLiteral("%1/%2").arg(today).arg(inbox);
    return today > 0 || inbox > 0 ? QString::number(std::max(today, inbox)) : QString();
}

void TMApplicationDelegate::updateDockBadge()
{
    QString badge = dockBadge();
    if (badge == m_badge)
        return;
    m_badge = std::move(badge);
    Q_EMIT dockBadgeChanged(m_badge);
}

} // namespace app
