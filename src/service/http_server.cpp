// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/http_server.h"

#include "service/listening_socket.h"
#include "service/request_deadlines.h"

#include <cstdarg>
#include <microhttpd.h>

namespace service {

namespace {

constexpr std::string_view path = "/api.php";

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
    RequestDeadlines deadlines;
    std::unique_ptr<MHD_Daemon, StopDaemon> daemon; // last: its threads use the others

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
    deadlines.replying(descriptorOf(connection));
    return send(connection, MHD_HTTP_OK, std::move(xml), "text/xml; charset=utf-8");
}

namespace {

void *keepTarget(void *, const char *target, MHD_Connection *)
{
    auto *request = new Arriving;
    request->target = target;
    return request;
}

void forgetRequest(void *deadlines, MHD_Connection *connection, void **request, MHD_RequestTerminationCode)
{
    delete static_cast<Arriving *>(*request);
    *request = nullptr;
    static_cast<RequestDeadlines *>(deadlines)->waiting(descriptorOf(connection));
}

void noticeConnection(void *deadlines, MHD_Connection *connection, void **, MHD_ConnectionNotificationCode code)
{
    auto *watched = static_cast<RequestDeadlines *>(deadlines);
    if (code == MHD_CONNECTION_NOTIFY_STARTED)
        watched->waiting(descriptorOf(connection));
    else
        watched->closed(descriptorOf(connection));
}

void dropMessage(void *, const char *, std::va_list)
{
    // What the library complains of is what clients did wrong; it may quote a request line, which holds secrets.
}

} // namespace

Result<std::unique_ptr<HttpServer>> HttpServer::start(Service &service, HttpOptions options)
{
    auto socket = ListeningSocket::open(options.listenAt);
    if (!socket)
        return Failure(socket.error());
    auto state = std::unique_ptr<State>(
        new State{service, std::move(options), socket->address(), {options.requestTime, options.replyTime}, nullptr});
    const HttpOptions &chosen = state->options;

    const auto handler = [](void *held, MHD_Connection *connection, const char *url, const char *method, const char *,
                             const char *data, std::size_t *size, void **request) {
        return static_cast<State *>(held)->receive(
            connection, url, method, *static_cast<Arriving *>(*request), data, size);
    };
    std::vector<MHD_OptionItem> items{
        {MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<std::intptr_t>(&dropMessage), nullptr},
        {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<std::intptr_t>(&keepTarget), nullptr},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&forgetRequest), &state->deadlines},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<std::intptr_t>(&noticeConnection), &state->deadlines},
        {MHD_OPTION_LISTEN_SOCKET, socket->descriptor(), nullptr},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<std::intptr_t>(chosen.longestHead), nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, static_cast<std::intptr_t>(chosen.mostConnections), nullptr},
        {MHD_OPTION_PER_IP_CONNECTION_LIMIT, static_cast<std::intptr_t>(chosen.mostConnectionsOfAnAddress), nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, static_cast<std::intptr_t>(chosen.idleTime.count()), nullptr},
        {MHD_OPTION_THREAD_POOL_SIZE, static_cast<std::intptr_t>(chosen.threads), nullptr},
    };
    unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_USE_ERROR_LOG;
    if (!chosen.tlsCertificate.empty()) {
        flags |= MHD_USE_TLS;
        items.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, const_cast<char *>(chosen.tlsCertificate.c_str())});
        items.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, const_cast<char *>(chosen.tlsKey.c_str())});
    }
    items.push_back({MHD_OPTION_END, 0, nullptr});
    state->daemon.reset(MHD_start_daemon(
        flags, 0, nullptr, nullptr, handler, state.get(), MHD_OPTION_ARRAY, items.data(), MHD_OPTION_END));
    if (!state->daemon)
        return Failure(chosen.tlsCertificate.empty() ? "The service could not be started at " + state->address + "."
                                                     : "The service could not be started at " + state->address
                    + "; the certificate and the key may not be a pair in PEM form.");
    (void)socket->release();
    return std::unique_ptr<HttpServer>(new HttpServer(std::move(state)));
}

HttpServer::HttpServer(std::unique_ptr<State> state) : m_state(std::move(state)) { }

HttpServer::~HttpServer() = default;

const std::string &HttpServer::address() const
{
    return m_state->address;
}

} // namespace service
