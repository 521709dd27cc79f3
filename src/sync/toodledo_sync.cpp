// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/toodledo_sync.h"

#include "foundation/file_lock.h"
#include "foundation/log.h"
#include "model/settings_defaults.h"
#include "sync/context_phases.h"
#include "sync/folder_phases.h"
#include "sync/sync_session.h"
#include "sync/task_phases.h"
#include "toodledo/curl_transport.h"

#include <algorithm>
#include <exception>

namespace syncing {

using foundation::Error;
using foundation::Instant;
using objectstore::ObjectContext;
using toodledo::TDApi;
using toodledo::TDError;
namespace keys = model::keys;

namespace {

constexpr std::string_view loginStatus = "Could not log on to Toodledo.";
constexpr std::string_view loginAlert
    = "Could not log on to Toodledo. Check your Internet connection, and make sure your user name and password are "
      "correct.";
constexpr std::string_view synchronizationStatus = "Could not synchronize with Toodledo.";
constexpr std::string_view limitAlert
    = "Could not synchronize with Toodledo. The most likely cause is that you have reached the hourly synch limit of "
      "ToodleDo. Wait and try again later.";

/// The end of the last run, if the settings and the store tell the same one: where they disagree, one of them is an old
/// copy, and the run counts as a first run.
std::optional<Instant> comparisonDate(const foundation::Settings &settings, const SyncLedger &ledger)
{
    const auto date = settings.date(keys::dateLastSynched);
    if (ledger.isGuarding() && date != ledger.date())
        return std::nullopt;
    return date;
}

/// Forgets every id of another account: the store's tasks are new to this one. Where some cannot be read, the run is
/// over and nothing of this is saved.
void leaveAccount(SyncSession &session)
{
    const auto forEach = [&session](const char *entity, const char *withId, const auto &forgetId) {
        if (const auto found = session.records().fetch(entity, objectstore::Predicate::format(withId)))
            std::ranges::for_each(*found, forgetId);
    };
    forEach("Tasks", "taskID != 0", [](objectstore::ManagedObject *task) {
        task->setValue("taskID", std::int64_t{0});
        task->setValue("isNew", true);
    });
    forEach("Folders", "folderID != 0", [](objectstore::ManagedObject *folder) { folder->setValue("folderID", {}); });
    forEach(
        "Contexts", "contextID != 0", [](objectstore::ManagedObject *context) { context->setValue("contextID", {}); });
    session.ledger().forgetAll();
    foundation::logLine("The account is another than before: everything here is sent to it as new.");
}

/// One run on its thread, from the login to the end.
class Run
{
public:
    Run(const SyncEnvironment &environment, std::stop_token stop)
        : m_environment(environment)
        , m_host(environment.host)
        , m_stop(std::move(stop))
        , m_moc(environment.store, objectstore::MergePolicy::StoreTrump)
        , m_ledger(m_moc, environment.settings.boolean(keys::SyncGuards))
        , m_transport(environment.makeTransport
                  ? environment.makeTransport()
                  : std::make_unique<toodledo::CurlTransport>(toodledo::transportOptions(environment.settings)))
    { }

    SyncOutcome exchange();

private:
    [[nodiscard]] std::unique_ptr<TDApi> logIn();
    SyncOutcome fail(std::string_view status);
    bool runPhases(SyncSession &session, bool &isExchanged);
    bool pull(SyncSession &session, FolderPhases &folders, ContextPhases &contexts, TaskPhases &tasks);
    void push(SyncSession &session, FolderPhases &folders, ContextPhases &contexts, TaskPhases &tasks);
    void finish(SyncSession &session);

    const SyncEnvironment &m_environment;
    SyncHost &m_host;
    std::stop_token m_stop;
    ObjectContext m_moc;
    SyncLedger m_ledger;
    std::unique_ptr<toodledo::HttpTransport> m_transport;
    std::optional<SyncSession> m_session; ///< from the login on
};

SyncOutcome Run::exchange()
{
    if (const auto loaded = m_ledger.load(); !loaded) {
        m_host.presentError(loaded.error());
        return fail(synchronizationStatus);
    }
    const auto client = logIn();
    if (m_stop.stop_requested())
        return SyncOutcome::Cancelled;
    if (!client)
        return SyncOutcome::Failed;
    SyncSession &session = m_session.emplace(SyncSession::Parts{m_moc, m_ledger, *client, m_host, m_environment.clock,
        comparisonDate(m_environment.settings, m_ledger), m_stop});
    if (m_ledger.isGuarding()) {
        if (!m_ledger.account().empty() && m_ledger.account() != client->userId())
            leaveAccount(session);
        if (!session.hasReadAll())
            return fail(synchronizationStatus);
        m_ledger.setAccount(client->userId());
    }
    bool isExchanged = false;
    const bool isThrough = runPhases(session, isExchanged);
    if (m_stop.stop_requested()) {
        session.saveAction();
        m_host.updateStatus("");
        return SyncOutcome::Cancelled;
    }
    if (!isExchanged)
        return SyncOutcome::Failed;
    finish(session);
    return isThrough && !session.isIncomplete() ? SyncOutcome::Completed : SyncOutcome::Incomplete;
}

std::unique_ptr<TDApi> Run::logIn()
{
    m_host.updateStatus("Logging in to Toodledo...");
    const foundation::Settings &settings = m_environment.settings;
    const auto password = settings.secret(keys::ToodleDoPassword, {.stop = m_stop});
    TDError error = password ? TDError() : password.error();
    std::unique_ptr<TDApi> client;
    if (password)
        client = TDApi::initWithUsername(settings.text(keys::ToodleDoUsername), *password,
            {m_environment.settings, *m_transport, m_environment.clock,
                [this](std::string_view title) { return m_session ? m_session->contextByTitle(title) : 0; }, m_stop},
            &error);
    if (client && m_ledger.isGuarding() && client->loginWasRefused()) {
        error = {toodledo::toodledoApiErrorDomain, 30, "The service refused the login: " + client->userId(), {}};
        client.reset();
    }
    if (error && !m_stop.stop_requested()) {
        if (password && settings.text(keys::ToodledoHost).empty())
            error.message = "The address of the service is not set. " + error.message;
        m_host.presentError(error);
        m_host.updateStatus(loginStatus);
        if (password)
            m_host.displayAlert("Login problem", loginAlert);
    }
    return error ? nullptr : std::move(client);
}

SyncOutcome Run::fail(std::string_view status)
{
    m_host.updateStatus(status);
    return SyncOutcome::Failed;
}

/// `isExchanged` tells whether the first lists were had, so that the run counts as one. What later phases return is not
/// asked: each does what it can.
bool Run::runPhases(SyncSession &session, bool &isExchanged)
{
    FolderPhases folders(session);
    ContextPhases contexts(session);
    TaskPhases tasks(session);
    if (!pull(session, folders, contexts, tasks))
        return false;
    isExchanged = true;
    push(session, folders, contexts, tasks);
    return !session.isOver();
}

bool Run::pull(SyncSession &session, FolderPhases &folders, ContextPhases &contexts, TaskPhases &tasks)
{
    m_host.updateStatus("Retrieving folders...");
    if (!folders.getNewFolders()) {
        if (!m_stop.stop_requested()) {
            m_host.updateStatus(synchronizationStatus);
            m_host.displayAlert("Synchronization problem", limitAlert);
        }
        return false;
    }
    m_host.updateStatus("Deleting folders on server.");
    folders.sendDeletedFolders();
    m_host.updateStatus("Retrieving contexts...");
    if (!contexts.getNewContexts()) {
        if (!m_stop.stop_requested())
            m_host.updateStatus(synchronizationStatus);
        return false;
    }
    contexts.removeThoseDeletedThere();
    m_host.updateStatus("Retrieving tasks...");
    // Without the list nothing tells what the service has: what was sent before might be sent again.
    if (!tasks.getTasks() && m_ledger.isGuarding())
        session.giveUp();
    session.saveAction();
    return true;
}

void Run::push(SyncSession &session, FolderPhases &folders, ContextPhases &contexts, TaskPhases &tasks)
{
    struct Phase {
        std::string_view status;
        std::function<void()> run;
    };
    const std::array<Phase, 6> phases{{
        {"Synchronizing tasks", [&] { tasks.synchEditedTasks(); }},
        {"Getting new tasks", [&] { tasks.getNewTasks(); }},
        {"Sending new folders",
            [&] {
                folders.sendNewFolders();
                tasks.placeInLateFolders();
                folders.sendDeletedFolders();
                contexts.sendNewContexts();
                contexts.sendDeletedContexts();
            }},
        {"Getting deleted tasks", [&] { tasks.getDeletedTasks(); }},
        {"Sending new tasks",
            [&] {
                tasks.sendNewTasks();
                if (session.isGuarding())
                    tasks.sendLateEdits();
            }},
        {"Sending deleted tasks", [&] { tasks.sendDeletedTasks(); }},
    }};
    for (const Phase &phase : phases) {
        if (session.isOver())
            return;
        m_host.updateStatus(phase.status);
        phase.run();
    }
}

void Run::finish(SyncSession &session)
{
    m_host.updateStatus("Saving data");
    const Instant now = m_environment.clock.now();
    if (m_ledger.isGuarding())
        m_ledger.setDate(now);
    session.saveAction();
    m_host.updateStatus("");
    m_host.displayNotification("Toodledo Sync Complete", "Toodledo synchronization completed.");
    m_environment.settings.set(keys::dateLastSynched, now);
    if (const auto written = m_environment.settings.synchronize(); !written)
        session.present(written.error());
}

} // namespace

class ToodledoSync::RunLock
{
public:
    explicit RunLock(foundation::FileLock lock) : m_lock(std::move(lock)) { }

private:
    foundation::FileLock m_lock;
};

ToodledoSync::ToodledoSync(SyncEnvironment environment) : m_environment(std::move(environment)) { }

ToodledoSync::~ToodledoSync()
{
    cancel();
    wait();
}

foundation::Result<void> ToodledoSync::startSyncTasks()
{
    auto lock = foundation::FileLock::tryLock(m_environment.store.file().string() + ".sync-lock");
    if (!lock) {
        foundation::logLine("The lock of the synchronisation cannot be had: " + lock.error().detail);
        return foundation::Failure(Error{syncErrorDomain, static_cast<int>(SyncErrorCode::NotLocked),
            "The synchronisation cannot write its lock file beside your tasks. Make room on the disk, or make the "
            "folder writable.",
            lock.error().detail});
    }
    if (!*lock)
        return foundation::Failure(Error{syncErrorDomain, static_cast<int>(SyncErrorCode::AlreadyRunning),
            "A synchronisation is already under way. Wait until it has ended.", {}});
    m_lock = std::make_unique<RunLock>(std::move(**lock));
    m_outcome = SyncOutcome::Running;
    SyncHost &host = m_environment.host;
    host.displayNotification("Starting Toodledo sync", "Toodledo sync may take a few moments.");
    host.updateStatus("Test message");
    host.updateStatus("Beginning sync process");
    host.saveAction(); // so that the run reads everything that the user has entered
    m_thread = std::jthread([this](const std::stop_token &stop) { syncTasks(stop); });
    return {};
}

void ToodledoSync::syncTasks(const std::stop_token &stop)
{
    SyncHost &host = m_environment.host;
    host.post(SyncNotification::QVLSyncDidBegin);
    host.unregisterForChangeNotifications();
    SyncOutcome outcome = SyncOutcome::Failed;
    try {
        outcome = Run(m_environment, stop).exchange();
    } catch (const std::exception &exception) {
        foundation::logLine(std::string("Exception caught in a synchronisation: ") + exception.what());
        host.presentError({syncErrorDomain, 2, "The synchronisation broke off.", exception.what()});
    }
    host.registerForChangeNotifications();
    m_lock.reset();
    m_outcome = outcome;
    host.post(SyncNotification::QVLSyncDidEnd);
}

void ToodledoSync::cancel()
{
    m_thread.request_stop();
}

void ToodledoSync::wait()
{
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace syncing
