// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <openssl/types.h>
#include <string>

namespace testing_support {

/// What the certificate of a test's server says, and how new the server's TLS may be.
struct TestCertificate {
    std::string hosts = "DNS:localhost,IP:127.0.0.1";
    long validFor = 3600; ///< seconds from now; negative: it has expired
    int newestProtocol = 0; ///< as OpenSSL counts them; 0: the newest that there is
};

/// A certificate that signed itself, and its key. Any thread may use it.
class TlsIdentity
{
public:
    explicit TlsIdentity(const TestCertificate &wanted = {});
    ~TlsIdentity();
    TlsIdentity(const TlsIdentity &) = delete;
    TlsIdentity &operator=(const TlsIdentity &) = delete;

    /// The certificate, for clients that are to trust it.
    [[nodiscard]] std::string pem() const;
    [[nodiscard]] std::string keyPem() const;
    [[nodiscard]] SSL_CTX *context() const;

private:
    struct Secrets;
    std::unique_ptr<Secrets> m_secrets;
};

} // namespace testing_support
