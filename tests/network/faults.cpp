// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/faults.h"

#include "support/repeated.h"

namespace network {

namespace {

using support::repeated;
using testing_support::Greeting;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;
using testing_support::Tear;
using Mode = ScriptedReply::Mode;

// Where a reply is refused for something other than its body, that body is a good one: to believe it is to fail.

template <Mode mode> ScriptedReply in(const std::string &good, const std::string &)
{
    return {.body = good, .mode = mode};
}

/// The good reply, torn on its way to the client;
template <Tear tear> ScriptedReply torn(const std::string &good, const std::string &)
{
    return {.body = good, .tear = tear};
}

template <int status> ScriptedReply with(const std::string &good, const std::string &)
{
    return {.body = good, .status = status, .headers = status == 401 ? "WWW-Authenticate: Basic realm=\"x\"\r\n" : ""};
}

ScriptedReply redirect(int status, const std::string &location, const std::string &good)
{
    return {.body = good, .status = status, .headers = "Location: " + location + "\r\n"};
}

/// The good reply with `text` just inside its outermost element.
std::string inside(const std::string &good, const std::string &text)
{
    const std::size_t place = good.find('>') + 1;
    return good.substr(0, place) + text + good.substr(place);
}

std::string raw(const std::string &head, const std::string &body)
{
    return head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

using Good = const std::string &;
using Target = const std::string &;

constexpr Fault table[]{
    // the connection
    {"the connection is refused", nullptr},
    {"the connection is closed at once", in<Mode::CloseAtOnce>},
    {"the connection is reset at once", in<Mode::ResetAtOnce>},
    {"the connection is reset in the body", in<Mode::ResetInBody>},
    {"the body is shorter than its length", in<Mode::CutLength>},
    {"the connection is closed in the reply", torn<Tear::Close>},
    {"the connection is reset in the reply", torn<Tear::Reset>},
    {"a reply without a length is cut",
        [](Good good, Target) {
            return ScriptedReply{.body = "HTTP/1.1 200 OK\r\n\r\n" + good, .mode = Mode::Bytes, .tear = Tear::Close};
        }},
    {"the status line is cut", [](Good, Target) { return ScriptedReply{.body = "HTTP/1.1 2", .mode = Mode::Bytes}; }},
    {"the headers are cut",
        [](Good, Target) {
            return ScriptedReply{.body = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nX", .mode = Mode::Bytes};
        }},
    {"the last chunk is missing",
        [](Good good, Target) {
            return ScriptedReply{
                .body = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffff\r\n" + good, .mode = Mode::Bytes};
        }},
    {"a chunk has no length", in<Mode::BadChunk>},
    {"a chunk is longer than any memory",
        [](Good good, Target) {
            return ScriptedReply{
                .body = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfffffffffffffffff\r\n" + good,
                .mode = Mode::Bytes};
        }},
    {"the length is negative",
        [](Good good, Target) {
            return ScriptedReply{
                .body = "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n" + good.substr(0, 9), .mode = Mode::Bytes};
        }},

    // time
    {"the server is silent", in<Mode::Hang>},
    {"the server falls silent in the reply", torn<Tear::Silence>},
    {"the server falls silent in the body", in<Mode::StallInBody>},
    {"the reply drips", torn<Tear::Drip>},
    {"the body drips", in<Mode::Drip>},
    {"the headers drip", in<Mode::DripHeader>},

    // size
    {"blanks without end", [](Good, Target) { return ScriptedReply{.mode = Mode::Endless}; }},
    {"text without end",
        [](Good good, Target) {
            const std::string start = good.substr(0, good.find('>') + 1);
            return ScriptedReply{.body = start, .mode = Mode::Endless, .more = repeated("text ", 20'000)};
        }},
    {"elements without end",
        [](Good good, Target) {
            const std::string start = good.substr(0, good.find('>') + 1);
            return ScriptedReply{.body = start, .mode = Mode::Endless, .more = repeated("<a/>", 20'000)};
        }},
    {"one header of 20 MB",
        [](Good good, Target) {
            return ScriptedReply{.body = good, .headers = "X-Big: " + std::string(20'000'000, 'x') + "\r\n"};
        }},
    {"headers of 20 MB",
        [](Good good, Target) {
            return ScriptedReply{.body = good, .headers = repeated("X-Big: " + std::string(992, 'x') + "\r\n", 20'000)};
        }},
    {"a compressed body that nobody asked for",
        [](Good, Target) {
            return ScriptedReply{
                .body = std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\xec\xc1\x01\x01\0\0\0\x80\x90\xfe", 21),
                .headers = "Content-Encoding: gzip\r\n"};
        }},

    // redirects
    {"301 to another host",
        [](Good good, Target target) { return redirect(301, "http://" + elsewhere().host() + target, good); }},
    {"302 to the same place", [](Good good, Target target) { return redirect(302, target, good); }},
    {"303 to another scheme",
        [](Good good, Target target) { return redirect(303, "https://" + elsewhere().host() + target, good); }},
    {"307 to a file", [](Good good, Target) { return redirect(307, "file:///etc/passwd", good); }},
    {"308 to nowhere", [](Good good, Target) { return redirect(308, "", good); }},

    // status
    {"100 and nothing after it",
        [](Good, Target) { return ScriptedReply{.body = "HTTP/1.1 100 Continue\r\n\r\n", .mode = Mode::Bytes}; }},
    {"201", with<201>},
    {"204 without a body",
        [](Good, Target) { return ScriptedReply{.body = "HTTP/1.1 204 No Content\r\n\r\n", .mode = Mode::Bytes}; }},
    {"206", with<206>},
    {"400", with<400>},
    {"401", with<401>},
    {"403", with<403>},
    {"404", with<404>},
    {"407", with<407>},
    {"429", with<429>},
    {"500", with<500>},
    {"502", with<502>},
    {"503", with<503>},
    {"no HTTP at all",
        [](Good, Target) { return ScriptedReply{.body = "SSH-2.0-OpenSSH_9.2\r\n", .mode = Mode::Bytes}; }},
    {"a body without a status", [](Good good, Target) { return ScriptedReply{.body = good, .mode = Mode::Bytes}; }},
    {"a status without a number",
        [](Good good, Target) { return ScriptedReply{.body = raw("HTTP/1.1 OK\r\n", good), .mode = Mode::Bytes}; }},

    // what the body says; some quote the request, with its secrets, as pages of errors do
    {"a page that is no XML",
        [](Good, Target target) {
            return ScriptedReply{.body = "<!DOCTYPE html><html><body><p>Not found: " + target + "<br></html>"};
        }},
    {"the login page of a network",
        [](Good, Target) {
            return ScriptedReply{.body = "<html><head><title>Welcome</title></head><body><p>Log in</p></body></html>"};
        }},
    {"JSON", [](Good, Target) { return ScriptedReply{.body = R"({"tasks": [], "error": null})"}; }},
    {"nothing", [](Good, Target) { return ScriptedReply{}; }},
    {"a byte order mark", [](Good, Target) { return ScriptedReply{.body = "\xef\xbb\xbf"}; }},
    {"another reply of the service", [](Good, Target) { return ScriptedReply{.body = "<goals></goals>"}; }},
    {"an element that it does not have", [](Good, Target) { return ScriptedReply{.body = "<ok>1</ok>"}; }},
    {"a reply that is cut", in<Mode::Shortened>},
    {"a reply without its last byte",
        [](Good good, Target) { return ScriptedReply{.body = good.substr(0, good.size() - 1)}; }},
    {"a reply twice", [](Good good, Target) { return ScriptedReply{.body = good + good}; }},
    {"bytes that are not UTF-8", [](Good good, Target) { return ScriptedReply{.body = inside(good, "\xe9t\xe9")}; }},
    {"a wrong encoding",
        [](Good good, Target) { return ScriptedReply{.body = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + good}; }},
    {"a byte of value 0",
        [](Good good, Target) { return ScriptedReply{.body = inside(good, std::string("a\0b", 3))}; }},
    {"a bomb of entities",
        [](Good good, Target) {
            return ScriptedReply{.body = "<!DOCTYPE a [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
                                         "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
                    + inside(good, "&c;")};
        }},
    {"an entity that is a file",
        [](Good good, Target) {
            return ScriptedReply{
                .body = "<!DOCTYPE a [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>" + inside(good, "&a;")};
        }},
    {"elements nested 100,000 deep",
        [](Good good, Target) {
            return ScriptedReply{.body = inside(good, repeated("<a>", 100'000) + repeated("</a>", 100'000))};
        }},
    {"a name of 5,000 letters",
        [](Good good, Target) { return ScriptedReply{.body = inside(good, "<" + std::string(5000, 'n') + "/>")}; }},
    {"a refusal",
        [](Good, Target target) { return ScriptedReply{.body = "<error>Bad request: " + target + "</error>"}; }},
    {"a refused key", [](Good, Target) { return ScriptedReply{.body = "<error>key did not validate</error>"}; }},
    {"a refusal within the reply",
        [](Good good, Target) { return ScriptedReply{.body = inside(good, "<error id=\"2\">partly</error>")}; }},

    // true replies of a server that has lost its wits
    {"everything twice in one list",
        [](Good good, Target) {
            const std::size_t end = good.rfind("</");
            return ScriptedReply{.body = inside(good, good.substr(good.find('>') + 1, end - good.find('>') - 1))};
        },
        Fault::Kind::Odd},
    {"records without ids or with impossible ones",
        [](Good good, Target) {
            return ScriptedReply{
                .body = inside(good,
                    "<task/><task><id>-7</id></task><task><id>99999999999999999999</id></task><folder/>"
                    "<folder id=\"0\">x</folder><context id=\"-1\"/><note id=\"none\"/>")};
        },
        Fault::Kind::Odd},
};

template <Tear tear> Greeting tornGreeting()
{
    return {.tear = tear};
}

template <auto Identities::*identity> Greeting as()
{
    return {.identity = &(identities().*identity)};
}

constexpr Fault tlsTable[]{
    {"the greeting is cut", nullptr, Fault::Kind::Bad, tornGreeting<Tear::Close>},
    {"the connection is reset in the greeting", nullptr, Fault::Kind::Bad, tornGreeting<Tear::Reset>},
    {"the server falls silent in the greeting", nullptr, Fault::Kind::Bad, tornGreeting<Tear::Silence>},
    {"the greeting drips", nullptr, Fault::Kind::Bad, tornGreeting<Tear::Drip>},
    {"the greeting is garbled", nullptr, Fault::Kind::Bad, tornGreeting<Tear::Garble>},
    {"HTTP without TLS", nullptr, Fault::Kind::Bad,
        [] { return Greeting{.instead = "HTTP/1.1 200 OK\r\nContent-Length: 15\r\n\r\n<tasks></tasks>"}; }},
    {"an alert in place of a greeting", nullptr, Fault::Kind::Bad,
        [] { return Greeting{.instead = std::string("\x15\3\3\0\2\2\x28", 7)}; }},
    {"a record of a length that none has", nullptr, Fault::Kind::Bad,
        [] { return Greeting{.instead = "\x16\3\3\xff\xff" + repeated("x", 0xffff)}; }},
    {"a certificate that has expired", nullptr, Fault::Kind::Bad, as<&Identities::expired>},
    {"a certificate of another host", nullptr, Fault::Kind::Bad, as<&Identities::ofAnotherHost>},
    {"a certificate that nobody trusts", nullptr, Fault::Kind::Bad, as<&Identities::ofNobody>},
    {"a version of TLS that is broken", nullptr, Fault::Kind::Bad, as<&Identities::ofThePast>},
    {"a record of the reply is garbled", torn<Tear::Garble>},
    // whoever cuts the connection could have cut the end of such a reply off
    {"a whole reply without a length, and no goodbye",
        [](Good good, Target) {
            return ScriptedReply{
                .body = "HTTP/1.1 200 OK\r\n\r\n" + good, .mode = Mode::Bytes, .tear = Tear::NoGoodbye};
        }},
};

} // namespace

std::span<const Fault> faults()
{
    return table;
}

std::span<const Fault> tlsFaults()
{
    return tlsTable;
}

std::string Identities::authorities() const
{
    return good.pem() + goodForTls12.pem() + expired.pem() + ofAnotherHost.pem();
}

const Identities &identities()
{
    static const Identities made;
    return made;
}

const ScriptedHttpServer &elsewhere()
{
    static const ScriptedHttpServer server([](const std::string &) { return ScriptedReply{}; });
    return server;
}

} // namespace network
