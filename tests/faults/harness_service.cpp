// SPDX-License-Identifier: GPL-3.0-or-later
// Fifty clients work at the built service at once, while others send what no decent client sends. At any moment it is
// killed, or asked to end; in some lives its disk is full before. Started again, it must hold all that it answered to,
// each task once, and until the end it must have answered every client.
#include "faults/harness.h"
#include "faults/program.h"
#include "faults/sabotage.h"
#include "service/http_client.h"
#include "service/protocol_text.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sys/wait.h>
#include <thread>

using namespace calling;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

constexpr auto patience = 60s;
constexpr int clientCount = 50;
constexpr int hostileCount = 4;
constexpr const char *hostileAddress = "127.0.0.2"; // an address may have 64 connections, and the clients need theirs
constexpr const char *password = "a; password & more";
constexpr const char *fullDisk = "--fsize=400000"; // bytes that a file of the service may have

/// The built service on a folder, and an account's key at it.
class Life
{
public:
    Life(const fs::path &folder, bool isDiskFull) : m_program(command(folder, isDiskFull))
    {
        const std::string start = "listening on ";
        const auto line = m_program.line(patience);
        if (!line || !line->starts_with(start))
            throw std::runtime_error("the service does not start");
        m_address = line->substr(start.size());
        HttpClient client;
        const auto ask = [&](const char *method, const Parameters &parameters, const char *element) {
            return inside(client.get(url(method, parameters)).body, element);
        };
        const std::string userid = ask("getUserid", {{"email", "ana@example.org"}, {"pass", password}}, "userid");
        m_key = keyOf(password, ask("getToken", {{"userid", userid}, {"appid", "test"}}, "token"), userid);
    }
    [[nodiscard]] std::string url(const std::string &method, const Parameters &parameters) const
    {
        return "http://" + m_address + target(method, parameters);
    }
    [[nodiscard]] std::string keyed(const std::string &method, Parameters parameters = {}) const
    {
        parameters.emplace(parameters.begin(), "key", m_key);
        return url(method, parameters);
    }
    [[nodiscard]] const std::string &address() const { return m_address; }
    /// How the service ended upon the signal, as `waitpid` tells it.
    int end(int signal)
    {
        m_program.kill(signal);
        const auto status = m_program.wait(patience);
        if (!status)
            throw std::runtime_error("the service does not end");
        return *status;
    }

private:
    static std::vector<std::string> command(const fs::path &folder, bool isDiskFull)
    {
        std::vector<std::string> words{
            SERVICE_PROGRAM, "--listen", "127.0.0.1:0", "--data", folder.string(), "--tokens-per-hour", "1000"};
        if (isDiskFull)
            words.insert(words.begin(), {"/usr/bin/prlimit", fullDisk});
        return words;
    }

    faults::RunningProgram m_program;
    std::string m_address;
    std::string m_key;
};

/// A task as its client knows it: what was answered to, and what may have been done without an answer.
struct Task {
    std::string name; ///< the start of each of its titles, which no other task has
    std::string id; ///< empty while the service has not answered to it
    std::string title;
    std::string unanswered;
};

/// One of the clients, which adds tasks and renames them until the service goes.
class Client
{
public:
    Client(const Life &life, int number, std::uint64_t seed) : m_life(life), m_number(number), m_random(seed) { }

    void work(const std::atomic<bool> &isOver)
    {
        while (!isOver) {
            const bool renames = !m_tasks.empty() && m_random() % 4 == 0;
            if (!(renames ? rename(m_tasks[m_random() % m_tasks.size()]) : add())) {
                m_isLeftAlone = !isOver;
                return;
            }
        }
    }
    [[nodiscard]] const std::vector<Task> &tasks() const { return m_tasks; }
    /// Whether a request of it had no answer although the service was to be there.
    [[nodiscard]] bool isLeftAlone() const { return m_isLeftAlone; }

private:
    /// False when there was no answer at all.
    bool add()
    {
        const std::string name = "c" + std::to_string(m_number) + "-" + std::to_string(m_tasks.size()) + ";";
        m_tasks.push_back({.name = name, .id = {}, .title = {}, .unanswered = name});
        const std::string url = m_life.keyed("addTask", {{"title", name}, {"note", std::string(500, 'n')}});
        if (faults::isPlanted("adds-sent-twice"))
            (void)m_client.get(url);
        const auto reply = m_client.get(url);
        const std::string id = inside(reply.body, "added");
        if (id != "(none)") {
            m_tasks.back().id = id;
            keep(m_tasks.back());
        }
        return reply.status != 0;
    }
    bool rename(Task &task)
    {
        if (task.id.empty())
            return true;
        task.unanswered = task.name + std::to_string(m_random());
        const auto reply = m_client.get(m_life.keyed("editTask", {{"id", task.id}, {"title", task.unanswered}}));
        if (inside(reply.body, "success") == "1")
            keep(task);
        return reply.status != 0;
    }
    static void keep(Task &task) { task.title = std::exchange(task.unanswered, {}); }

    const Life &m_life;
    int m_number;
    std::mt19937_64 m_random;
    HttpClient m_client;
    std::vector<Task> m_tasks;
    bool m_isLeftAlone = false;
};

/// Sends bytes that are no request, half a request, more than one, a wrong key; or says nothing.
void annoy(const Life &life, const std::atomic<bool> &isOver, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    const std::string line = "GET " + target("getTasks", {{"key", std::string(32, 'f')}}) + " HTTP/1.1\r\n";
    while (!isOver) {
        try {
            std::string bytes(random() % 4000, '\0');
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
            RawSocket socket(life.address(), hostileAddress);
            switch (random() % 5) {
            case 0:
                socket.send(bytes);
                break;
            case 1:
                socket.send(line.substr(0, random() % line.size()));
                break;
            case 2:
                socket.send(line + "Host: x\r\n\r\n" + bytes);
                break;
            case 3:
                socket.send("GET /api.php?" + std::string(200'000, 'a'));
                break;
            default:
                break;
            }
            std::this_thread::sleep_for(5ms);
        } catch (const std::runtime_error &) { // the service has gone
            return;
        }
    }
}

/// The titles that the service lists, by id.
std::map<std::string, std::string> listed(const Life &life)
{
    const std::string list = HttpClient().get(life.keyed("getTasks")).body;
    std::map<std::string, std::string> titles;
    for (std::size_t at = 0; (at = list.find("<task>", at)) != std::string::npos; ++at) {
        const std::string task = list.substr(at, list.find("</task>", at) - at);
        titles[inside(task, "id")] = inside(task, "title");
    }
    return titles;
}

class Crowd
{
public:
    std::int64_t prepare(std::uint64_t seed)
    {
        m_seed = seed;
        faults::runToEnd(
            {SERVICE_PROGRAM, "--data", (m_template.path() / "data").string(), "add-user", "ana@example.org"},
            password);
        return 0;
    }

    std::optional<std::string> run(std::int64_t number)
    {
        std::mt19937_64 random(m_seed * 1000003 + static_cast<std::uint64_t>(number));
        const support::TemporaryFolder place;
        const fs::path folder = place.path() / "data";
        fs::copy(m_template.path() / "data", folder, fs::copy_options::recursive);

        Life life(folder, random() % 4 == 0);
        std::vector<std::unique_ptr<Client>> clients;
        for (int i = 0; i < clientCount; ++i)
            clients.push_back(std::make_unique<Client>(life, i, random()));
        const int signal = random() % 4 == 0 ? SIGTERM : SIGKILL;
        const int status = endAmid(life, clients, signal, std::chrono::milliseconds(50 + random() % 350), random());
        if (signal == SIGTERM && status != 0)
            return "the service ended with status " + std::to_string(status);
        if (faults::isPlanted("answered-before-written"))
            fs::remove(folder / "service.db-wal");
        return judge(clients, listed(Life(folder, false)));
    }

    [[nodiscard]] std::string seen() const
    {
        if (m_answered < 100)
            throw std::runtime_error("too few requests were answered");
        return std::to_string(m_answered) + " tasks answered to, " + std::to_string(m_unanswered) + " not";
    }

private:
    static int endAmid(Life &life, const std::vector<std::unique_ptr<Client>> &clients, int signal,
        std::chrono::milliseconds after, std::uint64_t seed)
    {
        std::atomic<bool> isOver = false;
        std::vector<std::jthread> threads;
        for (const auto &client : clients)
            threads.emplace_back([&isOver, &client] { client->work(isOver); });
        for (int i = 0; i < hostileCount; ++i)
            threads.emplace_back(
                [&isOver, &life, i, seed] { annoy(life, isOver, seed + static_cast<std::uint64_t>(i)); });
        std::this_thread::sleep_for(after);
        isOver = true;
        const int status = life.end(signal);
        threads.clear();
        return status;
    }

    std::optional<std::string> judge(
        const std::vector<std::unique_ptr<Client>> &clients, const std::map<std::string, std::string> &titles)
    {
        std::map<std::string, int> copies; // by the start of the title
        for (const auto &[id, title] : titles)
            ++copies[title.substr(0, title.find(';') + 1)];
        for (const auto &client : clients) {
            if (client->isLeftAlone())
                return "a client had no answer while the service was to be there";
            for (const Task &task : client->tasks()) {
                const auto known = titles.find(task.id);
                ++(task.id.empty() ? m_unanswered : m_answered);
                if (copies[task.name] > 1)
                    return "\"" + task.name + "\" is there twice";
                if (task.id.empty())
                    continue;
                if (known == titles.end())
                    return "\"" + task.title + "\" was answered to and is gone";
                if (known->second != task.title && known->second != task.unanswered)
                    return "\"" + task.title + "\" was answered to, but is \"" + known->second + "\"";
            }
        }
        return {};
    }

    support::TemporaryFolder m_template;
    std::uint64_t m_seed = 0;
    std::int64_t m_answered = 0;
    std::int64_t m_unanswered = 0;
};

} // namespace

int main(int argc, char **argv)
{
    Crowd crowd;
    return faults::runHarness(argc, argv,
        {.name = "harness_service",
            .prepare = [&crowd](std::uint64_t seed) { return crowd.prepare(seed); },
            .run = [&crowd](std::int64_t number) { return crowd.run(number); },
            .seen = [&crowd] { return crowd.seen(); }});
}
