// SPDX-License-Identifier: GPL-3.0-or-later
// A run that sends a thousand new tasks to the service on the same machine, from the store to the last saved id,
// against a thousand bare requests on one connection: to a service that takes several tasks in a request, as ours does,
// and to one that does not.
#include "generator.h"
#include "measure.h"
#include "silent_host.h"

#include "foundation/clock.h"
#include "model/entities.h"
#include "model/settings_defaults.h"
#include "service/digest.h"
#include "service/http_server.h"
#include "toodledo/curl_transport.h"

namespace {

constexpr int tasks = 1000;

/// Takes a reply as text.
class Text final : public toodledo::BodySink
{
public:
    bool receive(std::string_view bytes) override
    {
        m_text += bytes;
        return true;
    }
    [[nodiscard]] std::string inside(const std::string &element) const
    {
        const std::size_t start = m_text.find("<" + element + ">") + element.size() + 2;
        return m_text.substr(start, m_text.find("</" + element + ">") - start);
    }

private:
    std::string m_text;
};

/// A service on the disk, and accounts on it.
class Place
{
public:
    Place(const std::filesystem::path &folder, int mostCalls)
        : m_database(std::move(service::Database::open(folder.string()).value()))
        , m_service(*m_database, {.tokensPerHour = 1000, .mostCalls = mostCalls})
        , m_server(std::move(service::HttpServer::start(m_service).value()))
    { }

    [[nodiscard]] const std::string &address() const { return m_server->address(); }
    std::string ask(const std::string &query)
    {
        Text text;
        const auto reply = m_transport.perform({.url = "http://" + address() + "/api.php?method=" + query}, text);
        if (!reply)
            throw std::runtime_error(reply.error().message);
        return text.inside(query.starts_with("getToken") ? "token" : "added");
    }
    /// A new account; returns its user id.
    std::string makeAccount(const std::string &email)
    {
        return ask("createAccount;email=" + email + ";pass=password;");
    }

private:
    std::unique_ptr<service::Database> m_database;
    service::Service m_service;
    std::unique_ptr<service::HttpServer> m_server;
    toodledo::CurlTransport m_transport{toodledo::CurlTransport::Options{}};
};

/// A store with a thousand tasks that no service knows, and what a run on it takes.
double push(Place &place, const std::string &email)
{
    place.makeAccount(email);
    const bench::Workplace workplace;
    const auto made
        = bench::generate(workplace.path(), {.tasks = 0, .folders = 0, .contexts = 0, .tags = 0, .smartFolders = 0});
    unsigned state = 7;
    for (int i = 0; i < tasks; ++i)
        model::insert<model::Tasks>(made->managedObjectContext()).setTitle(bench::words(38, state));
    if (const auto saved = made->managedObjectContext().save(); !saved)
        throw std::runtime_error(saved.error().message);
    foundation::MemorySettingsFile file;
    foundation::Settings settings(file, model::settingsDefaults());
    settings.set("ToodledoHost", place.address());
    settings.set("ToodleDoUsername", email);
    settings.set("ToodleDoPassword", std::string("password"));
    const foundation::SystemClock clock;
    bench::SilentHost host;
    return bench::secondsFor([&] {
        syncing::ToodledoSync sync({made->store(), settings, clock, host, {}});
        if (const auto started = sync.startSyncTasks(); !started)
            throw std::runtime_error(started.error().message);
        sync.wait();
        if (sync.outcome() != syncing::SyncOutcome::Completed)
            throw std::runtime_error("the run did not complete");
    });
}

double sendBare(Place &place, const std::string &email)
{
    const std::string user = place.makeAccount(email);
    const std::string token = place.ask("getToken;userid=" + user + ";appid=bench;");
    const std::string key = service::md5(service::md5("password") + token + user);
    return bench::secondsFor([&] {
        for (int i = 0; i < tasks; ++i)
            (void)place.ask("addTask;key=" + key + ";title=Task%20number%20" + std::to_string(i) + ";mark=number%20"
                + std::to_string(i) + ";");
    });
}

} // namespace

int main()
{
    try {
        const bench::Workplace workplace;
        Place place(workplace.path() / "several", service::ServiceOptions().mostCalls);
        Place singlePlace(workplace.path() / "single", 1);
        double ours = 0;
        double single = 0;
        double raw = 0;
        constexpr int rounds = 5;
        for (int round = 0; round < rounds; ++round) {
            const std::string email = "ana" + std::to_string(round) + "@example.org";
            ours += push(place, email) / rounds;
            single += push(singlePlace, email) / rounds;
            raw += sendBare(singlePlace, "bare." + email) / rounds;
        }
        bench::printHeader("a run that sends 1,000 new tasks (raw: bare requests on one connection)");
        bench::printRatio("to the service", ours * 1000, raw * 1000, "ms", 0.3);
        bench::printFigure("tasks sent", tasks / ours, "a second", ">= 3000");
        bench::printRatio("to one that takes a task in each request", single * 1000, raw * 1000, "ms", 1.5);
        bench::printFigure("tasks sent", tasks / single, "a second", "");
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
