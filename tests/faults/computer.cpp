// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/computer.h"

#include "faults/sabotage.h"
#include "faults/scenario.h"
#include "model/settings_defaults.h"
#include "support/store_picture.h"

namespace faults {

namespace {

/// Carries requests to the service as the network does on a good day.
class ServiceTransport final : public toodledo::HttpTransport
{
public:
    explicit ServiceTransport(histories::ServiceInProcess &service) : m_service(service) { }
    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        const Spared spared;
        const auto target = std::string_view(request.url).substr(request.url.find("/api.php"));
        body.receive(m_service.answer(target, request.body));
        return toodledo::HttpReply{200, "text/xml"};
    }

private:
    histories::ServiceInProcess &m_service;
};

} // namespace

/// Does at once what the window's main thread would do soon.
class Computer::Host final : public support::RecordingSyncHost
{
public:
    explicit Host(Computer &computer) : m_computer(computer) { }
    void unregisterForChangeNotifications() override { m_computer.m_tracking->unregisterForChangeNotifications(); }
    void registerForChangeNotifications() override { m_computer.m_tracking->registerForChangeNotifications(); }
    void saveAction() override
    {
        if (const auto saved = m_computer.save(); !saved)
            presentError(saved.error());
    }
    void presentError(const foundation::Error &error) override
    {
        if (!isPlanted("failed-runs-kept-quiet"))
            RecordingSyncHost::presentError(error);
    }

private:
    Computer &m_computer;
};

Computer::Computer(
    const std::filesystem::path &folder, std::string_view now, histories::ServiceInProcess &service, Notes &notes)
    : m_service(service)
    , m_notes(notes)
    , m_clock(support::at(now))
    , m_host(std::make_unique<Host>(*this))
    , m_settingsFile(folder / "settings.json")
{
    const auto readSettings
        = [this] { m_settings = std::make_unique<foundation::Settings>(m_settingsFile, model::settingsDefaults()); };
    m_store = openStore(folder, m_clock, notes);
    readSettings();
    if (m_settings->loadError()) {
        expectSentence(notes, *m_settings->loadError());
        lift(notes);
        readSettings();
    }
    m_settings->set("ToodledoHost", std::string("127.0.0.1"));
    m_settings->set("ToodleDoUsername", std::string("ana@example.org"));
    m_settings->set("ToodleDoPassword", std::string("secret word"));
    m_tracking = std::make_unique<model::EditTracking>(context(), m_clock);
    m_tracking->registerForChangeNotifications();
}

Computer::~Computer() = default;

foundation::Result<void> Computer::save()
{
    auto saved = context().save();
    return saved ? foundation::Result<void>() : foundation::Failure(saved.error());
}

syncing::SyncOutcome Computer::sync()
{
    m_host->clear();
    syncing::ToodledoSync run({m_store->store(), *m_settings, m_clock, *m_host,
        [this] { return std::make_unique<ServiceTransport>(m_service); }});
    if (const auto started = run.startSyncTasks(); !started) {
        m_host->presentError(started.error());
        return syncing::SyncOutcome::Failed;
    }
    run.wait();
    for (const auto &changes : m_host->merges)
        context().mergeChanges(changes);
    for (const auto &error : m_host->errors)
        expectSentence(m_notes, error);
    return run.outcome();
}

std::string Computer::told() const
{
    std::string all;
    for (const auto &error : m_host->errors)
        all += error.message + " (" + error.detail + ") ";
    for (const auto &alert : m_host->alerts)
        all += alert.message + " ";
    for (const auto &question : m_host->questions)
        all += question + " ";
    return all;
}

std::multiset<std::string> Computer::picture()
{
    return support::pictureOf(context());
}

} // namespace faults
