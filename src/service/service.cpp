// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/service.h"

#include "service/known_keys.h"
#include "service/method.h"
#include "service/result.h"
#include "service/text.h"

#include <algorithm>
#include <optional>

namespace service {

namespace {

using MethodTable = std::unordered_map<std::string_view, const Method *>;

MethodTable allMethods()
{
    MethodTable table;
    for (const auto methods : {accountMethods(), taskMethods(), folderMethods(), noteMethods()})
        for (const Method &method : methods)
            table.emplace(method.name, &method);
    return table;
}

std::string withDeclaration(std::string xml)
{
    return xml.insert(0, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
}

void checkParameters(const Method &method, const Request &request)
{
    for (const auto &[name, value] : request.parameters())
        if (name != "key" && std::ranges::find(method.parameters, name) == method.parameters.end())
            throw Refusal("unknown parameter: " + cleaned(name.substr(0, 64)));
}

} // namespace

struct Service::State {
    Database &database;
    ServiceOptions options;
    MethodTable methods = allMethods();
    Throttles throttles;
    KnownKeys knownKeys;

    [[nodiscard]] std::string answer(const Request &request, std::string_view address);
    [[nodiscard]] Session sessionOf(Connection &connection, const Request &request, std::int64_t now);
};

Session Service::State::sessionOf(Connection &connection, const Request &request, std::int64_t now)
{
    const std::string_view key = request.text("key");
    if (key.empty())
        throw Refusal("missing key");
    const auto session = service::sessionOf(connection, key, now);
    if (!session) {
        knownKeys.remove(key);
        throw Refusal("key did not validate");
    }
    return *session;
}

std::string Service::State::answer(const Request &request, std::string_view address)
{
    const auto found = methods.find(request.method());
    if (found == methods.end())
        throw Refusal("unknown method");
    const Method &method = *found->second;
    const std::int64_t now = options.clock();
    const bool writes = method.access == Access::Write || method.access == Access::OpenWrite;
    const bool needsKey = method.access == Access::Write || method.access == Access::Read;

    std::string xml;
    Session session;
    const auto check = [&](Connection &connection) { session = sessionOf(connection, request, now); };
    const auto work = [&](Connection &connection) {
        if (needsKey)
            check(connection);
        checkParameters(method, request);
        Call call{request, connection, session, now, options, throttles, address};
        xml = method.answer(call);
    };
    if (method.access == Access::Write && !knownKeys.contains(request.text("key"))) {
        database.read(check); // a key that is none must not make writers wait
        knownKeys.add(request.text("key"));
    }
    if (writes)
        database.write(work);
    else
        database.read(work);
    return xml;
}

Service::Service(Database &database, ServiceOptions options) : m_state(new State{database, std::move(options)}) { }

Service::~Service() = default;

std::string Service::answer(std::string_view target, std::string_view body, std::string_view address)
{
    const std::size_t question = target.find('?');
    std::string_view query = question == std::string_view::npos ? std::string_view() : target.substr(question + 1);
    std::string joined;
    if (!body.empty()) {
        joined.append(query).append(";").append(body);
        query = joined;
    }
    try {
        return withDeclaration(m_state->answer(Request::parse(query), address));
    } catch (const Refusal &refusal) {
        return withDeclaration(element("error", refusal.what()));
    } catch (const DatabaseError &error) {
        return withDeclaration(element("error", std::string("the service could not use its data: ") + error.what()));
    } catch (const std::exception &error) {
        return withDeclaration(element("error", std::string("the service failed: ") + error.what()));
    }
}

std::string_view titleOf(const Request &request)
{
    constexpr std::size_t longest = 16'384; // bytes
    const std::string_view title = request.text("title");
    if (title.empty())
        throw Refusal("empty title");
    if (title.size() > longest)
        throw Refusal("title is too long");
    return title;
}

std::int64_t ownIdOrNone(Call &call, const char *table, std::int64_t id)
{
    if (id <= 0)
        return 0;
    Statement found = call.connection.prepare(std::string("SELECT 1 FROM ") + table + " WHERE id = ? AND user = ?");
    return found.bind(id).bind(call.session.user).step() ? id : 0;
}

void touchAccount(Call &call, const char *column)
{
    call.connection.prepare(std::string("UPDATE user SET ") + column + " = ? WHERE id = ?")
        .bind(call.now)
        .bind(call.session.user)
        .run();
}

std::string added(std::int64_t id)
{
    return element("added", id);
}

std::string success()
{
    return element("success", 1);
}

} // namespace service
