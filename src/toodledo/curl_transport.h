// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/http_transport.h"

#include <cstddef>
#include <memory>

namespace foundation {
class Settings;
}

namespace toodledo {

/// HTTP through libcurl with one connection that is kept alive. It follows no redirect, asks no proxy that the
/// environment names, keeps no cookie and takes no status but 200. For one thread at a time.
class CurlTransport final : public HttpTransport
{
public:
    struct Options {
        std::size_t replyLimit = std::size_t{128} << 20; ///< bytes of body, beyond which a reply is dropped
        std::string acceptedCertificateDomain = {}; ///< see `allowsAnyHttpsCertificate`
        std::string authorities = {}; ///< a file of the certificates to trust in place of the system's; empty: those
    };

    explicit CurlTransport(Options options);
    ~CurlTransport() override;

    [[nodiscard]] foundation::Result<HttpReply> perform(const HttpRequest &request, BodySink &body) override;

private:
    struct Handles;
    Options m_options;
    std::unique_ptr<Handles> m_handles;
};

/// The options that the settings `ReplyLimit` (MiB) and `AcceptedCertificateDomain` ask for.
[[nodiscard]] CurlTransport::Options transportOptions(const foundation::Settings &settings);

/// Whether certificate errors of `host` are to be overlooked: it is `domain` or ends with "." and `domain`. An empty
/// domain accepts none; a mere suffix ("evilexample.org" for "example.org") is not enough.
[[nodiscard]] bool allowsAnyHttpsCertificate(std::string_view host, std::string_view domain);

} // namespace toodledo
