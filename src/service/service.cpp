// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/service.h"

#include "service/known_keys.h"
#include "service/method.h"
#include "service/result.h"
#include "service/text.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace service {

namespace {

/// A method whose calls a POST brings, one a line, each as the query of a request without a key.
constexpr Method several{"several", Access::Write, noParameters, nullptr};

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

std::string refusalElement(const Refusal &refusal)
{
    return element("error", refusal.what());
}

} // namespace

struct Service::State {
    Database &database;
    ServiceOptions options;
    MethodTable methods = allMethods();
    Throttles throttles;
    KnownKeys knownKeys;

    /// What makes a reply, in a transaction.
    using Work = std::function<std::string(Call &call)>;

    [[nodiscard]] std::string answer(const Request &request, std::string_view calls, std::string_view address);
    [[nodiscard]] std::string answerSeveral(const Call &head, std::string_view calls) const;
    [[nodiscard]] std::string answerOneOfSeveral(const Call &head, std::string_view query) const;
    [[nodiscard]] std::string perform(
        Access access, const Request &request, std::string_view address, const Work &work);
    [[nodiscard]] const Method &methodOf(const Request &request) const;
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

const Method &Service::State::methodOf(const Request &request) const
{
    const auto found = methods.find(request.method());
    if (found == methods.end())
        throw Refusal("unknown method");
    return *found->second;
}

std::string Service::State::answer(const Request &request, std::string_view calls, std::string_view address)
{
    const bool holdsCalls = request.method() == several.name;
    const Method &method = holdsCalls ? several : methodOf(request);
    return perform(method.access, request, address, [&](Call &call) {
        checkParameters(method, request);
        return holdsCalls ? answerSeveral(call, calls) : method.answer(call);
    });
}

/// Answers each call in its turn. One commit keeps them all, which is what most of the time of a change goes to.
std::string Service::State::answerSeveral(const Call &head, std::string_view calls) const
{
    std::string xml = "<several>";
    for (int number = 1; !calls.empty(); ++number) {
        if (number > options.mostCalls)
            throw Refusal("too many calls"); // which undoes those before
        const std::size_t end = std::min(calls.find('\n'), calls.size());
        xml += answerOneOfSeveral(head, calls.substr(0, end));
        calls.remove_prefix(std::min(end + 1, calls.size()));
    }
    return xml += "</several>";
}

/// A call that is refused has written nothing, and the others count.
std::string Service::State::answerOneOfSeveral(const Call &head, std::string_view query) const
{
    try {
        const Request request = Request::parse(query);
        const Method &method = methodOf(request);
        if (method.access != Access::Write)
            throw Refusal("not to be one of several");
        checkParameters(method, request);
        Call call{request, head.connection, head.session, head.now, head.options, head.throttles, head.address};
        return method.answer(call);
    } catch (const Refusal &refusal) {
        return refusalElement(refusal);
    }
}

/// Does the work in a transaction, once the key is checked.
std::string Service::State::perform(Access access, const Request &request, std::string_view address, const Work &work)
{
    const std::int64_t now = options.clock();
    const bool writes = access == Access::Write || access == Access::OpenWrite;
    const bool needsKey = access == Access::Write || access == Access::Read;

    std::string xml;
    Session session;
    const auto check = [&](Connection &connection) { session = sessionOf(connection, request, now); };
    const auto inTransaction = [&](Connection &connection) {
        if (needsKey)
            check(connection);
        Call call{request, connection, session, now, options, throttles, address};
        xml = work(call);
    };
    if (access == Access::Write && !knownKeys.contains(request.text("key"))) {
        database.read(check); // a key that is none must not make writers wait
        knownKeys.add(request.text("key"));
    }
    if (writes)
        database.write(inTransaction);
    else
        database.read(inTransaction);
    return xml;
}

Service::Service(Database &database, ServiceOptions options) : m_state(new State{database, std::move(options)}) { }

Service::~Service() = default;

std::string Service::answer(std::string_view target, std::string_view body, std::string_view address)
{
    const std::size_t question = target.find('?');
    const auto query = question == std::string_view::npos ? std::string_view() : target.substr(question + 1);
    try {
        Request request = Request::parse(query);
        if (!body.empty() && request.method() != several.name)
            request = Request::parse(std::string(query).append(";").append(body));
        return withDeclaration(m_state->answer(request, body, address));
    } catch (const Refusal &refusal) {
        return withDeclaration(refusalElement(refusal));
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
