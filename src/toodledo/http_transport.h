// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <stop_token>
#include <string>
#include <string_view>

namespace toodledo {

inline constexpr const char *httpErrorDomain = "HttpErrorDomain";

/// The codes of errors in `httpErrorDomain`.
enum class HttpErrorCode {
    Connection = 1, ///< no connection, or one that broke before the whole reply was there
    Deadline = 2,
    Cancelled = 3,
    Status = 4, ///< the status was not 200
    TooLarge = 5, ///< the reply went over the limit
    Certificate = 6,
    Unwanted = 7 ///< the sink wanted no more
};

/// What to ask for, and for how long to wait.
struct HttpRequest {
    std::string url; ///< http or https, already escaped
    double deadline = 30; ///< seconds for the whole exchange, from looking up the name to the last byte
    std::stop_token stop; ///< ends the exchange within a second
    /// It changes something, so that it must not be sent again when its connection goes before the reply.
    bool isSentOnce = false;
    std::string body = {}; ///< what to send by POST; empty: nothing, by GET
};

/// What came before the body.
struct HttpReply {
    int status = 0;
    std::string contentType;
};

/// Takes the body of a reply with status 200 as it arrives.
class BodySink
{
public:
    virtual ~BodySink() = default;

    /// Whether more is wanted. What was received counts only when `perform` then returns a reply.
    virtual bool receive(std::string_view bytes) = 0;
};

/// Performs one request at a time on the thread that asks; whatever goes wrong comes back as an error.
class HttpTransport
{
public:
    virtual ~HttpTransport() = default;
    [[nodiscard]] virtual foundation::Result<HttpReply> perform(const HttpRequest &request, BodySink &body) = 0;
};

} // namespace toodledo
