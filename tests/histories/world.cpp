// SPDX-License-Identifier: GPL-3.0-or-later
// Plays a history: clients, the service in this process, and the judge.
#include "histories/client.h"
#include "histories/history.h"
#include "histories/service_in_process.h"

#include <algorithm>
#include <map>

namespace histories {

namespace {

constexpr double startOfTime = 1795510800; // 2026-11-24 09:00:00 UTC
constexpr int cleanRounds = 3; // a folder renamed here and deleted there is sent anew in the second

class World
{
public:
    explicit World(const History &history)
        : m_history(history)
        , m_service([this] { return static_cast<std::int64_t>(m_now); }, {}, history.marks,
              history.singleCalls ? 1 : service::ServiceOptions().mostCalls)
    {
        for (int i = 0; i < history.clients; ++i)
            m_clients.push_back(newClient(history.skews.at(static_cast<std::size_t>(i))));
        m_expected = m_clients.front()->contents();
    }

    Verdict run()
    {
        for (const Step &step : m_history.steps)
            take(step);
        for (int round = 0; round < cleanRounds && !isQuiet(); ++round) { }
        judge();
        return std::move(m_verdict);
    }

private:
    std::unique_ptr<Client> newClient(std::int32_t skew)
    {
        return std::make_unique<Client>(
            [this](std::string_view target, std::string_view body) {
                m_isAskedOnly = m_isAskedOnly && target.starts_with("/api.php?method=get");
                return m_service.answer(target, body);
            },
            m_now, skew, m_history.guards);
    }

    void pass(double seconds)
    {
        m_now += seconds;
        for (auto &client : m_clients)
            client->setTime(m_now);
    }

    void cleanRun(Client &client)
    {
        pass(3);
        client.sync({.deed = Deed::Sync}, nullptr);
    }

    /// Each client runs once; whether none of them sent or changed anything, so that another round would be the same.
    bool isQuiet()
    {
        const auto contents = [this] {
            std::vector<std::multiset<std::string>> all;
            for (auto &client : m_clients)
                all.push_back(client->contents());
            return all;
        };
        const auto before = contents();
        m_isAskedOnly = true;
        for (auto &client : m_clients)
            cleanRun(*client);
        return m_isAskedOnly && contents() == before;
    }

    void take(const Step &step)
    {
        pass(step.deed == Deed::Wait ? step.value * 5.0 : step.value % 3);
        Client &client = *m_clients[step.client % m_clients.size()];
        if (step.deed == Deed::Wait)
            return;
        if (step.deed == Deed::Sync)
            run(client, step);
        else
            edit(client, step);
    }

    void run(Client &client, const Step &step)
    {
        std::function<void()> meddle;
        if (!step.meddling.empty())
            meddle = [this, &step] {
                for (const Step &meddling : step.meddling)
                    take(meddling);
            };
        m_isListOld = step.fault == Fault::StaleList;
        client.sync(step, meddle);
        expectAfterRun(client, std::exchange(m_isListOld, false));
    }

    void edit(Client &client, const Step &step)
    {
        const std::string name = std::to_string(++m_names);
        const auto unexpected = broughtBack(client);
        if (!client.edit(step, name))
            return;
        if (step.deed == Deed::AddTask)
            m_created.insert("t" + name);
        for (const std::string &uid : client.trashed())
            m_everTrashed.insert(uid);
        if (m_history.clients != 1)
            return;
        m_expected = client.contents();
        std::erase_if(m_expected, [&unexpected](const std::string &line) { return unexpected.contains(line); });
    }

    /// What an old list has brought back here; the user did not leave it.
    std::multiset<std::string> broughtBack(Client &client)
    {
        if (!m_isListOld)
            return {};
        auto contents = client.contents();
        std::erase_if(contents,
            [this](const std::string &line) { return line.starts_with("task") || m_expected.contains(line); });
        return contents;
    }

    /// With one computer nothing but its user changes anything: a run may only take away what was to be deleted. What
    /// an old list brings back once more goes with the next.
    void expectAfterRun(Client &client, bool mayBringBack)
    {
        if (m_history.clients != 1 || !m_verdict.faults.empty())
            return;
        const auto expected = neverDeleted(m_expected);
        auto found = neverDeleted(client.contents());
        if (mayBringBack)
            std::erase_if(found,
                [&expected](const std::string &line) { return !line.starts_with("task") && !expected.contains(line); });
        if (m_history.losesReplies())
            dropDoubles(found, expected);
        compare("what the user left", expected, "what a run made of it", found);
    }

    /// A task whose add went unanswered may be there twice; that is counted by itself.
    static void dropDoubles(std::multiset<std::string> &found, const std::multiset<std::string> &expected)
    {
        std::set<std::string> there;
        for (const std::string &line : expected) {
            if (found.contains(line))
                there.insert(uidIn(line));
        }
        std::multiset<std::string> once;
        for (const std::string &line : found) {
            const bool isExpected = once.count(line) < expected.count(line);
            if (isExpected || !line.starts_with("task ") || !there.contains(uidIn(line)))
                once.insert(line);
        }
        found = std::move(once);
    }

    /// The second word of a line: what a task is known by.
    static std::string uidIn(const std::string &line)
    {
        const std::size_t start = line.find(' ') + 1;
        return line.substr(start, line.find(' ', start) - start);
    }

    /// Without the tasks that were ever in the Trash, and what is marked to be deleted.
    [[nodiscard]] std::multiset<std::string> neverDeleted(const std::multiset<std::string> &contents) const
    {
        std::multiset<std::string> kept;
        for (const std::string &line : contents) {
            const bool isTrashed = line.starts_with("task ") && m_everTrashed.contains(uidIn(line));
            if (!isTrashed && !line.ends_with(" (to be deleted)"))
                kept.insert(line);
        }
        return kept;
    }

    void compare(const std::string &oneName, const std::multiset<std::string> &one, const std::string &otherName,
        const std::multiset<std::string> &other)
    {
        std::vector<std::string> onlyOne;
        std::vector<std::string> onlyOther;
        std::ranges::set_difference(one, other, std::back_inserter(onlyOne));
        std::ranges::set_difference(other, one, std::back_inserter(onlyOther));
        if (onlyOne.empty() && onlyOther.empty())
            return;
        std::string text = oneName + " and " + otherName + " differ:";
        for (const std::string &line : onlyOne)
            text += "\n    only in " + oneName + ": " + line;
        for (const std::string &line : onlyOther)
            text += "\n    only in " + otherName + ": " + line;
        m_verdict.faults.push_back(text);
    }

    void judge()
    {
        for (std::size_t i = 1; i < m_clients.size(); ++i)
            compare("client 0", m_clients[0]->contents(), "client " + std::to_string(i), m_clients[i]->contents());
        judgeTasks(*m_clients[0]);
        const auto observer = newClient(0);
        cleanRun(*observer);
        compare("client 0", m_clients[0]->contents(), "a new client", observer->contents());
    }

    void judgeTasks(Client &client)
    {
        const auto present = client.uids();
        for (const std::string &uid : m_created) {
            const auto times = present.count(uid);
            if (times == 0 && !m_everTrashed.contains(uid))
                m_verdict.faults.push_back("the task " + uid + " is lost");
            if (times > 1)
                ++m_verdict.doubled;
            if (times > 1 && !m_history.losesReplies())
                m_verdict.faults.push_back("the task " + uid + " is there " + std::to_string(times) + " times");
        }
        for (const std::string &uid : client.trashed())
            m_verdict.faults.push_back("the task " + uid + " is still in the Trash");
    }

    const History &m_history;
    double m_now = startOfTime;
    bool m_isListOld = false; ///< some list of the run that is under way
    bool m_isAskedOnly = false; ///< the service, since that was last set
    ServiceInProcess m_service;
    std::vector<std::unique_ptr<Client>> m_clients;
    Verdict m_verdict;
    std::set<std::string> m_created;
    std::set<std::string> m_everTrashed;
    std::multiset<std::string> m_expected; ///< what the user of a single computer left, apart from every store
    int m_names = 0;
};

} // namespace

Verdict play(const History &history)
{
    return World(history).run();
}

} // namespace histories
