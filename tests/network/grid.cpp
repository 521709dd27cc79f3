// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/grid.h"

#include "foundation/log.h"

#include <atomic>
#include <chrono>

namespace network {

namespace {

using testing_support::Greeting;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;
using toodledo::TDError;

constexpr double deadline = 0.3; // seconds; a healthy exchange on the loopback takes a thousandth
constexpr double patience = 10; // seconds after which an operation has outlasted its deadline on any machine
constexpr std::size_t replyLimit = std::size_t{1} << 20;

/// What is wrong with how an operation took a fault; empty when nothing is.
std::string judge(const Fault &fault, bool succeeded, Bench &bench, const TDError &error)
{
    const toodledo::TDReply &reply = bench.client().lastReply();
    if (fault.kind == Fault::Kind::Bad && succeeded && !reply.wasRefused && !reply.failure)
        return "is believed";
    if (showsSecret(error.message) || showsSecret(error.detail))
        return "shows a secret in its error: " + error.message + " / " + error.detail;
    if (reply.failure && (showsSecret(reply.failure->message) || showsSecret(reply.failure->detail)))
        return "shows a secret in the reason: " + reply.failure->detail;
    if (error && error.code == 0)
        return "has an error without a code";
    if (elsewhere().connections() > 0)
        return "follows a redirect";
    return {};
}

} // namespace

HurriedTransport::HurriedTransport(toodledo::CurlTransport::Options options)
    : m_isSecure(!options.authorities.empty())
    , m_transport({.replyLimit = replyLimit,
          .acceptedCertificateDomain = options.acceptedCertificateDomain,
          .authorities = options.authorities})
{ }

foundation::Result<toodledo::HttpReply> HurriedTransport::perform(
    const toodledo::HttpRequest &request, toodledo::BodySink &body)
{
    toodledo::HttpRequest hurried = request;
    hurried.deadline = m_isHurried ? deadline : 30;
    if (m_isSecure && hurried.url.starts_with("http:"))
        hurried.url.insert(4, "s");
    return m_transport.perform(hurried, body);
}

std::optional<std::string> tryCell(
    const Cell &cell, toodledo::HttpTransport &transport, const std::function<void(bool)> &setHurried)
{
    const auto &[operation, fault, place, identity] = cell;
    std::atomic<bool> isFaulty = true;
    const auto answer = [&](const std::string &target) {
        const std::string good = goodReply(target);
        if (!isFaulty || !fault.reply || methodOf(target) != operation.method)
            return ScriptedReply{.body = good};
        ScriptedReply reply = fault.reply(good, target);
        reply.place = place;
        return reply;
    };
    const auto greet = [&] {
        if (!isFaulty || !fault.greeting)
            return Greeting{.identity = identity};
        Greeting greeting = fault.greeting();
        greeting.place = place;
        if (!greeting.identity)
            greeting.identity = identity;
        return greeting;
    };
    ScriptedHttpServer server(answer, greet);
    Bench bench(fault.isRefusal() ? ScriptedHttpServer::refusingHost() : server.host(), transport);
    setHurried(true);
    TDError error;
    const auto start = std::chrono::steady_clock::now();
    const bool succeeded = operation.perform(bench, error);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    if (std::string wrong = judge(fault, succeeded, bench, error); !wrong.empty())
        return wrong;
    if (taken.count() > patience)
        return "takes " + std::to_string(taken.count()) + " s";

    isFaulty = false;
    setHurried(false);
    if (fault.isRefusal())
        return {};
    error = {};
    if (!operation.perform(bench, error) || bench.client().lastReplyWasRefused() || error)
        return "spoils the next request: " + error.message;
    return {};
}

LogReader::LogReader()
{
    foundation::setLogSink([this](std::string_view line) {
        const std::scoped_lock lock(m_mutex);
        ++m_lines;
        if (showsSecret(line))
            m_leak = line;
    });
}

LogReader::~LogReader()
{
    foundation::setLogSink({});
}

int LogReader::lines() const
{
    const std::scoped_lock lock(m_mutex);
    return m_lines;
}

std::string LogReader::leak() const
{
    const std::scoped_lock lock(m_mutex);
    return m_leak;
}

} // namespace network
