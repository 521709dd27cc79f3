// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/http_server.h"

#include "service/connection_limits.h"
#include "service/connection_sorter.h"
#include "service/listening_socket.h"
#include "service/request_deadlines.h"

#include <algorithm>
#include <cstdarg>
#include <microhttpd.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace service {

namespace {

constexpr std::string_view path = "/api.php";
constexpr std::chrono::seconds patienceAtTheEnd{2};

/// A request while it arrives. The library's own copy of the target is split at "&", so it is kept here whole.
struct Arriving {
    std::string target;
    std::string body;
    bool isAccepted = false;
    bool isTooLong = false;
};

struct StopDaemon {
    void operator()(MHD_Daemon *daemon) const { MHD_stop_daemon(daemon); }
};

/// Threads that answer the same kind of connection, plain or TLS. Each is a daemon of its own: the library's pools do
/// not go with sockets that were accepted elsewhere.
using Crew = std::vector<std::unique_ptr<MHD_Daemon, StopDaemon>>;

/// What is kept of each open connection.
struct Watch {
    RequestDeadlines deadlines;
    ConnectionLimits limits;
};

MHD_Result send(MHD_Connection *connection, unsigned status, std::string text, const char *type)
{
    // The response takes the text over, so that a long list is not copied.
    auto kept = std::make_unique<std::string>(std::move(text));
    MHD_Response *response = MHD_create_response_from_buffer_with_free_callback_cls(
        kept->size(), kept->data(), [](void *held) { delete static_cast<std::string *>(held); }, kept.get());
    if (!response)
        return MHD_NO;
    (void)kept.release();
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, type);
    MHD_add_response_header(response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    const MHD_Result queued = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return queued;
}

MHD_Result sendPlain(MHD_Connection *connection, unsigned status, const char *sentence)
{
    return send(connection, status, std::string(sentence) + "\n", "text/plain; charset=utf-8");
}

int descriptorOf(MHD_Connection *connection)
{
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

} // namespace

struct HttpServer::State {
    Service &service;
    HttpOptions options;
    std::string address;
    Watch watch;
    Crew plain;
    Crew secure;
    std::size_t turn = 0; // whose thread gets the next connection
    std::unique_ptr<ConnectionSorter> sorter; // last: it uses the others, as the crews use what stands before them

    State(Service &answering, HttpOptions chosen, std::string listening)
        : service(answering)
        , options(std::move(chosen))
        , address(std::move(listening))
        , watch{.deadlines{std::min<RequestDeadlines::Duration>(options.idleTime, options.requestTime),
                    options.requestTime, options.replyTime},
              .limits{options.mostConnections, options.mostConnectionsOfAnAddress}}
    { }
    [[nodiscard]] bool startThread(Crew &crew, bool isSecure);
    void take(const NewConnection &connection, bool isTls);
    [[nodiscard]] MHD_Result receive(MHD_Connection *connection, std::string_view url, std::string_view method,
        Arriving &request, const char *data, std::size_t *size);
    [[nodiscard]] MHD_Result reply(MHD_Connection *connection, const Arriving &request);
};

MHD_Result HttpServer::State::receive(MHD_Connection *connection, std::string_view url, std::string_view method,
    Arriving &request, const char *data, std::size_t *size)
{
    if (!std::exchange(request.isAccepted, true)) { // the head alone has arrived
        if (url != path)
            return sendPlain(connection, MHD_HTTP_NOT_FOUND, "There is nothing here.");
        if (method != "GET" && method != "POST")
            return sendPlain(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "Only GET and POST are answered.");
        return MHD_YES;
    }
    if (*size > 0) {
        request.isTooLong = request.isTooLong || request.body.size() + *size > options.longestBody;
        if (!request.isTooLong)
            request.body.append(data, *size);
        *size = 0;
        return MHD_YES;
    }
    if (request.isTooLong)
        return sendPlain(connection, MHD_HTTP_CONTENT_TOO_LARGE, "The request is too long.");
    return reply(connection, request);
}

MHD_Result HttpServer::State::reply(MHD_Connection *connection, const Arriving &request)
{
    const auto *client = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    std::string xml = service.answer(request.target, request.body, client ? hostOf(client->client_addr) : "");
    watch.deadlines.replying(descriptorOf(connection));
    return send(connection, MHD_HTTP_OK, std::move(xml), "text/xml; charset=utf-8");
}

namespace {

void *keepTarget(void *, const char *target, MHD_Connection *)
{
    auto *request = new Arriving;
    request->target = target;
    return request;
}

void forgetRequest(void *watch, MHD_Connection *connection, void **request, MHD_RequestTerminationCode)
{
    delete static_cast<Arriving *>(*request);
    *request = nullptr;
    static_cast<Watch *>(watch)->deadlines.waiting(descriptorOf(connection));
}

void noticeConnection(void *held, MHD_Connection *connection, void **, MHD_ConnectionNotificationCode code)
{
    auto *watch = static_cast<Watch *>(held);
    const int descriptor = descriptorOf(connection);
    if (code == MHD_CONNECTION_NOTIFY_STARTED) {
        watch->deadlines.waiting(descriptor);
    } else {
        watch->deadlines.closed(descriptor);
        watch->limits.closed(descriptor);
    }
}

void dropMessage(void *, const char *, std::va_list)
{
    // What the library complains of is what clients did wrong; it may quote a request line, which holds secrets.
}

} // namespace

bool HttpServer::State::startThread(Crew &crew, bool isSecure)
{
    const auto handler = [](void *held, MHD_Connection *connection, const char *url, const char *method, const char *,
                             const char *data, std::size_t *size, void **request) {
        return static_cast<State *>(held)->receive(
            connection, url, method, *static_cast<Arriving *>(*request), data, size);
    };
    std::vector<MHD_OptionItem> items{
        {MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<std::intptr_t>(&dropMessage), nullptr},
        {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<std::intptr_t>(&keepTarget), nullptr},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&forgetRequest), &watch},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<std::intptr_t>(&noticeConnection), &watch},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<std::intptr_t>(options.longestHead), nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, static_cast<std::intptr_t>(options.mostConnections), nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, static_cast<std::intptr_t>(options.idleTime.count()), nullptr},
    };
    unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_USE_ERROR_LOG | MHD_USE_NO_LISTEN_SOCKET | MHD_USE_ITC;
    if (isSecure) {
        flags |= MHD_USE_TLS;
        items.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, options.tlsCertificate.data()});
        items.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, options.tlsKey.data()});
    }
    items.push_back({MHD_OPTION_END, 0, nullptr});
    crew.emplace_back(
        MHD_start_daemon(flags, 0, nullptr, nullptr, handler, this, MHD_OPTION_ARRAY, items.data(), MHD_OPTION_END));
    return crew.back() != nullptr;
}

/// Gives the connection to the threads of its kind in turn; where there are none it is cut.
void HttpServer::State::take(const NewConnection &connection, bool isTls)
{
    Crew &crew = isTls ? secure : plain;
    if (crew.empty()) {
        watch.limits.closed(connection.descriptor);
        ::close(connection.descriptor);
        return;
    }
    MHD_Daemon *daemon = crew[turn++ % crew.size()].get();
    const auto *client = reinterpret_cast<const sockaddr *>(&connection.address);
    if (MHD_add_connection(daemon, connection.descriptor, client, connection.addressLength) != MHD_YES)
        watch.limits.closed(connection.descriptor); // the library has closed it
}

Result<std::unique_ptr<HttpServer>> HttpServer::start(Service &service, HttpOptions options)
{
    auto socket = ListeningSocket::open(options.listenAt);
    if (!socket)
        return Failure(socket.error());
    auto state = std::make_unique<State>(service, std::move(options), socket->address());
    State &made = *state;
    const bool isSecure = !made.options.tlsCertificate.empty();
    for (unsigned i = 0; i < made.options.threads; ++i) {
        if (!made.options.isTlsOnly && !made.startThread(made.plain, false))
            return Failure("The service could not be started at " + made.address + ".");
        if (isSecure && !made.startThread(made.secure, true))
            return Failure("The service could not be started at " + made.address
                + "; the certificate and the key may not be a pair in PEM form.");
    }
    try {
        made.sorter = std::make_unique<ConnectionSorter>(std::move(*socket), made.watch.limits, made.watch.deadlines,
            [&made](const NewConnection &connection, bool isTls) { made.take(connection, isTls); });
    } catch (const std::system_error &error) {
        return Failure("The service could not be started at " + made.address + ": " + error.what() + ".");
    }
    return std::unique_ptr<HttpServer>(new HttpServer(std::move(state)));
}

HttpServer::HttpServer(std::unique_ptr<State> state) : m_state(std::move(state)) { }

HttpServer::~HttpServer()
{
    // A daemon that is stopped just when it refuses a request reads a response that it did not keep, so every
    // connection ends first.
    m_state->sorter.reset();
    m_state->watch.limits.endAll(patienceAtTheEnd);
}

const std::string &HttpServer::address() const
{
    return m_state->address;
}

} // namespace service
