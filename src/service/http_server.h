// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/result.h"
#include "service/service.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace service {

/// How the service is reached, and how much of it a client may take up.
struct HttpOptions {
    std::string listenAt = "127.0.0.1:0"; ///< port 0 takes a free port
    std::string tlsCertificate; ///< PEM text with the whole chain; with it https is spoken as well
    std::string tlsKey; ///< PEM text
    bool isTlsOnly = false; ///< cuts connections that speak plain http
    std::size_t longestHead = 512 * 1024; ///< bytes of request line and headers
    std::size_t longestBody = 1024 * 1024; ///< bytes of what a POST brings
    unsigned mostConnections = 256;
    unsigned mostConnectionsOfAnAddress = 64;
    unsigned threads = 4; ///< for http, and as many for https
    std::chrono::seconds idleTime{30}; ///< without a byte
    std::chrono::milliseconds requestTime{60'000}; ///< for a whole request to arrive
    std::chrono::milliseconds replyTime{600'000}; ///< for a whole reply to be taken
};

/// Answers over HTTP what a Service answers, on threads of its own, from `start` until it is destroyed.
/// The service must outlive it.
class HttpServer
{
public:
    [[nodiscard]] static Result<std::unique_ptr<HttpServer>> start(Service &service, HttpOptions options = {});
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// Where it listens, such as "127.0.0.1:8080".
    [[nodiscard]] const std::string &address() const;

private:
    struct State;
    explicit HttpServer(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

} // namespace service
