// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/operations.h"

#include "toodledo/td_text.h"

#include <algorithm>
#include <array>

namespace network {

namespace {

using toodledo::TDApi;
using toodledo::TDError;

constexpr std::string_view userId = "td123";
constexpr std::string_view username = "ana@example.org";

toodledo::GtdTask task()
{
    toodledo::GtdTask made;
    made.taskId = 7;
    made.title = "Milk";
    made.note = "fresh";
    return made;
}

toodledo::GtdFolder folder()
{
    toodledo::GtdFolder made;
    made.folderId = 7;
    made.title = "Home";
    return made;
}

toodledo::GtdContext context()
{
    toodledo::GtdContext made;
    made.contextId = 7;
    made.title = "Town";
    return made;
}

toodledo::GtdNote note()
{
    toodledo::GtdNote made;
    made.uid = 7;
    made.title = "Note";
    made.text = "Text";
    return made;
}

constexpr Operation table[]{
    {"initWithUsername", "getUserid",
        [](Bench &bench, TDError &error) {
            auto client = TDApi::initWithUsername(username, password, bench.environment(), &error);
            const bool in = client && !client->loginWasRefused();
            if (client)
                bench.adopt(std::move(client));
            return in;
        }},
    {"getUserIdForUsername", "getUserid",
        [](Bench &bench, TDError &) { return bench.client().getUserIdForUsername(username, password).has_value(); }},
    {"key", "getToken",
        [](Bench &bench, TDError &) {
            bench.forgetKey();
            return bench.client().key().has_value();
        }},
    {"loadServerInfos", "getServerInfo",
        [](Bench &bench, TDError &) { return bench.client().key() && bench.client().loadServerInfos(); }},
    {"loadAccountInfo", "getAccountInfo", [](Bench &bench, TDError &) { return bench.client().loadAccountInfo(); }},
    {"getLastModificationsDates", "getAccountInfo",
        [](Bench &bench, TDError &error) { return bench.client().getLastModificationsDates(&error).has_value(); }},
    {"createAccount", "createAccount",
        [](Bench &bench, TDError &error) {
            return bench.client().createAccount(username, password, &error).has_value();
        }},
    {"getTasks", "getTasks", [](Bench &bench, TDError &error) { return bench.client().getTasks(&error).has_value(); }},
    {"getTasksAfterDate", "getTasks",
        [](Bench &bench, TDError &error) { return bench.client().getTasksAfterDate({1e9}, &error).has_value(); }},
    {"getDeleted", "getDeleted",
        [](Bench &bench, TDError &error) { return bench.client().getDeleted(&error).has_value(); }},
    {"addTask", "addTask", [](Bench &bench, TDError &error) { return bench.client().addTask(task(), &error) != -1; }},
    {"editTask", "editTask", [](Bench &bench, TDError &error) { return bench.client().editTask(task(), &error); }},
    {"deleteTask", "deleteTask",
        [](Bench &bench, TDError &error) { return bench.client().deleteTask(task(), &error); }},
    {"getFolders", "getFolders",
        [](Bench &bench, TDError &error) { return bench.client().getFolders(&error).has_value(); }},
    {"addFolder", "addFolder",
        [](Bench &bench, TDError &error) {
            bench.client().addFolder(folder(), &error); // -1 whatever happens
            return !error;
        }},
    {"editFolder", "editFolder",
        [](Bench &bench, TDError &error) { return bench.client().editFolder(folder(), &error); }},
    {"deleteFolder", "deleteFolder",
        [](Bench &bench, TDError &error) { return bench.client().deleteFolder(folder(), &error); }},
    {"getContexts", "getContexts",
        [](Bench &bench, TDError &error) { return bench.client().getContexts(&error).has_value(); }},
    {"addContext", "addContext",
        [](Bench &bench, TDError &error) { return bench.client().addContext(context(), &error) != -1; }},
    {"editContext", "editContext",
        [](Bench &bench, TDError &error) { return bench.client().editContext(context(), &error); }},
    {"deleteContext", "deleteContext",
        [](Bench &bench, TDError &error) { return bench.client().deleteContext(context(), &error); }},
    {"getNotes", "getNotes", [](Bench &bench, TDError &error) { return bench.client().getNotes(&error).has_value(); }},
    {"addNote", "addNote",
        [](Bench &bench, TDError &error) {
            return bench.client().key() && bench.client().addNote(note(), &error) != -1;
        }},
    {"editNote", "addNote",
        [](Bench &bench, TDError &error) { return bench.client().key() && bench.client().editNote(note(), &error); }},
    {"deleteNote", "deleteNote",
        [](Bench &bench, TDError &error) { return bench.client().deleteNote(note(), &error); }},
};

struct Reply {
    std::string_view method;
    std::string_view text;
};
constexpr std::array<Reply, 12> replies{{
    {"getUserid", "<userid>td123</userid>"},
    {"getToken", "<token>canary-token</token>"},
    {"getServerInfo", "<server><unixtime>1790000000</unixtime></server>"},
    {"getAccountInfo",
        "<account><userid>td123</userid><pro>0</pro><lastaddedit>2026-11-01 08:00:00</lastaddedit></account>"},
    {"createAccount", "<added>td124</added>"},
    {"getTasks", "<tasks><task><id>7</id><title>Milk</title></task></tasks>"},
    {"getDeleted", "<deleted><task><id>7</id></task></deleted>"},
    {"getFolders", "<folders><folder id=\"7\">Home</folder></folders>"},
    {"getContexts", "<contexts><context id=\"7\">Town</context></contexts>"},
    {"getNotes", "<notes><note id=\"7\" text=\"Text\">Note</note></notes>"},
    {"addNote", "<added>7</added>"},
    {"addTask", "<added>7</added>"},
}};

} // namespace

bool showsSecret(std::string_view text)
{
    static const std::array<std::string, 4> secrets{
        std::string(password), std::string(token), std::string(heldKey), toodledo::md5Hex(password)};
    return std::any_of(secrets.begin(), secrets.end(),
        [text](const std::string &secret) { return text.find(secret) != std::string_view::npos; });
}

Bench::Bench(const std::string &host, toodledo::HttpTransport &transport)
    : m_settings(m_file, {{"ToodledoHost", host}}), m_transport(transport)
{
    m_settings.set("toodledoKey", std::string(heldKey));
    m_settings.set("toodledoKeyUserId", std::string(userId));
    m_settings.set("lastKeyUpdate", m_clock.now());
    m_client = std::make_unique<TDApi>(environment());
    m_client->setUserId(std::string(userId));
    m_client->setPasswordHashWithPassword(password);
}

toodledo::TDApiEnvironment Bench::environment()
{
    return {m_settings, m_transport, m_clock};
}

void Bench::forgetKey()
{
    m_settings.remove("toodledoKey");
}

std::span<const Operation> operations()
{
    return table;
}

std::string methodOf(const std::string &target)
{
    const std::size_t begin = target.find("method=") + 7;
    return target.substr(begin, target.find(';') - begin);
}

std::string goodReply(const std::string &target)
{
    const std::string method = methodOf(target);
    if (method == "addNote" && target.find(";id=") != std::string::npos)
        return "<success>1</success>"; // it edits
    const auto found
        = std::find_if(replies.begin(), replies.end(), [&](const Reply &reply) { return reply.method == method; });
    if (found != replies.end())
        return std::string(found->text);
    return method.starts_with("add") ? "<added>7</added>" : "<success>1</success>";
}

} // namespace network
