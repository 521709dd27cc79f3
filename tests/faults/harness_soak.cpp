// SPDX-License-Identifier: GPL-3.0-or-later
// Synchronises one store with the service again and again, six hours apart on a clock that is set, both in this process
// and over HTTP. Nothing may pile up: memory stays within 5 %, and every descriptor is closed again.
#include "faults/growth.h"
#include "faults/harness.h"
#include "foundation/settings.h"
#include "model/settings_defaults.h"
#include "model/task_store.h"
#include "service/http_server.h"
#include "support/recording_sync_host.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "sync/toodledo_sync.h"

#include <stdexcept>

using namespace faults;

namespace {

constexpr std::int64_t warmUp = 60; ///< runs after which caches and pools have the size that they keep
constexpr int taskCount = 20;
constexpr double between = 6 * 3600; ///< seconds from run to run: every key of the service has expired by then

template <class Held> Held require(foundation::Result<Held> result)
{
    if (!result)
        throw std::runtime_error(result.error().message + " " + result.error().detail);
    return std::move(*result);
}

template <class Held> Held require(service::Result<Held> result)
{
    if (!result)
        throw std::runtime_error(result.error());
    return std::move(*result);
}

/// A service, a computer that synchronises with it, and its user.
class Soak
{
public:
    Soak()
    {
        const std::string reply
            = m_service.answer("/api.php?method=createAccount;email=ana%40example.org;pass=secret%20word;");
        if (reply.find("<added>") == std::string::npos)
            throw std::runtime_error("no account: " + reply);
        m_settings.set("ToodledoHost", m_server->address());
        m_settings.set("ToodleDoUsername", std::string("ana@example.org"));
        m_settings.set("ToodleDoPassword", std::string("secret word"));
        for (int i = 0; i < taskCount; ++i)
            m_context.insert("Tasks").setValue("title", "task " + std::to_string(i));
    }

    /// A user's quarter of a day and the run at its end; what is wrong afterwards.
    std::optional<std::string> run(std::int64_t number)
    {
        m_clock.advance(between);
        edit(number);
        if (std::string wrong = synchronise(); !wrong.empty())
            return wrong;
        Growth::leak();
        return m_growth.judge(number);
    }

    [[nodiscard]] std::string seen() const { return m_growth.seen(); }

private:
    /// One task is renamed; now and then one goes and another comes, and the number stays.
    void edit(std::int64_t number)
    {
        auto tasks = require(m_context.fetch({.entity = "Tasks", .predicate = {}, .sortDescriptors = {}}));
        if (tasks.size() != taskCount)
            throw std::runtime_error(std::to_string(tasks.size()) + " tasks are there");
        auto &task = *tasks[static_cast<std::size_t>(number % taskCount)];
        if (number % 10 == 9) {
            task.setValue("deleteOnSync", true);
            task.setValue("markedDeleted", true);
            m_context.insert("Tasks").setValue("title", "task of run " + std::to_string(number));
        } else {
            task.setValue("title", "task after run " + std::to_string(number));
            task.setValue("notes", "note " + std::to_string(number));
        }
        if (const auto saved = m_context.save(); !saved)
            throw std::runtime_error(saved.error().message);
    }

    std::string synchronise()
    {
        syncing::ToodledoSync run({m_store->store(), m_settings, m_clock, m_host});
        if (const auto started = run.startSyncTasks(); !started)
            return started.error().message;
        run.wait();
        for (const auto &changes : m_host.merges)
            m_context.mergeChanges(changes);
        std::string wrong;
        if (run.outcome() != syncing::SyncOutcome::Completed)
            wrong = "a run did not complete: " + (m_host.alerts.empty() ? std::string() : m_host.alerts[0].message);
        m_host.clear();
        return wrong;
    }

    support::TemporaryFolder m_folder;
    support::TestClock m_clock;
    support::RecordingSyncHost m_host;
    std::unique_ptr<service::Database> m_database = require(service::Database::open(m_folder.path() / "service"));
    service::Service m_service{*m_database,
        {.tokensPerHour = 1'000'000, .clock = [this] { return static_cast<std::int64_t>(m_clock.now().seconds); }}};
    std::unique_ptr<service::HttpServer> m_server = require(service::HttpServer::start(m_service));
    foundation::MemorySettingsFile m_file;
    foundation::Settings m_settings{m_file, model::settingsDefaults()};
    std::unique_ptr<model::TaskStore> m_store = require(model::TaskStore::open(m_folder.path(), m_clock, m_host));
    objectstore::ObjectContext &m_context = m_store->managedObjectContext();
    Growth m_growth{warmUp};
};

} // namespace

int main(int argc, char **argv)
{
    return runOnEnd<Soak>(argc, argv, "harness_soak");
}
