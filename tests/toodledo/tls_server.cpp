// SPDX-License-Identifier: GPL-3.0-or-later
#include "tls_server.h"

#include <arpa/inet.h>
#include <array>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace toodledo {

namespace {

template <auto Free> struct Freed {
    template <typename T> void operator()(T *thing) const { Free(thing); }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using Context = std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>>;
using Connection = std::unique_ptr<SSL, Freed<SSL_free>>;

void addExtension(X509 *certificate, int kind, const std::string &value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    if (!extension || X509_add_ext(certificate, extension, -1) != 1)
        throw std::runtime_error("no certificate extension");
    X509_EXTENSION_free(extension);
}

Certificate selfSigned(EVP_PKEY *key, const TestCertificate &wanted)
{
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -7200);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), wanted.validFor);
    X509_NAME *name = X509_get_subject_name(certificate.get());
    const auto *text = reinterpret_cast<const unsigned char *>(wanted.name.c_str());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text, -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    X509_set_pubkey(certificate.get(), key);
    addExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), NID_subject_alt_name, "DNS:" + wanted.name);
    if (X509_sign(certificate.get(), key, EVP_sha256()) == 0)
        throw std::runtime_error("no signature");
    return certificate;
}

} // namespace

struct TlsServer::Secrets {
    Key key;
    Certificate certificate;
    Context context;
};

TlsServer::TlsServer(const TestCertificate &certificate)
    : m_secrets(std::make_unique<Secrets>()), m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    m_secrets->key.reset(EVP_EC_gen("P-256"));
    m_secrets->certificate = selfSigned(m_secrets->key.get(), certificate);
    m_secrets->context.reset(SSL_CTX_new(TLS_server_method()));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (SSL_CTX_use_certificate(m_secrets->context.get(), m_secrets->certificate.get()) != 1
        || SSL_CTX_use_PrivateKey(m_secrets->context.get(), m_secrets->key.get()) != 1
        || ::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 8) != 0
        || ::getsockname(m_listener, generic, &size) != 0)
        throw std::runtime_error("no TLS server");
    m_port = ntohs(address.sin_port);
    m_thread = std::jthread([this](const std::stop_token &stop) { serve(stop); });
}

TlsServer::~TlsServer()
{
    m_thread.request_stop();
    m_thread.join();
    ::close(m_listener);
}

void TlsServer::speakOnlyOldProtocols()
{
    SSL_CTX_set_security_level(m_secrets->context.get(), 0);
    SSL_CTX_set_min_proto_version(m_secrets->context.get(), TLS1_VERSION);
    SSL_CTX_set_max_proto_version(m_secrets->context.get(), TLS1_1_VERSION);
}

void TlsServer::serve(const std::stop_token &stop)
{
    while (!stop.stop_requested()) {
        pollfd state{m_listener, POLLIN, 0};
        if (::poll(&state, 1, 20) <= 0)
            continue;
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        const timeval limit{2, 0}; // a client that falls silent must not stop the test
        ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        answer(socket);
        ::close(socket);
    }
}

void TlsServer::answer(int socket)
{
    const Connection connection(SSL_new(m_secrets->context.get()));
    SSL_set_fd(connection.get(), socket);
    std::array<char, 4096> request{};
    if (SSL_accept(connection.get()) != 1 || SSL_read(connection.get(), request.data(), request.size()) <= 0)
        return;
    ++m_requests;
    constexpr std::string_view reply = "HTTP/1.1 200 OK\r\nContent-Length: 8\r\nConnection: close\r\n\r\n<tasks/>";
    SSL_write(connection.get(), reply.data(), static_cast<int>(reply.size()));
    SSL_shutdown(connection.get());
}

} // namespace toodledo
