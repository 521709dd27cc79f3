// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/tls_identity.h"

#include <atomic>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace testing_support {

namespace {

template <auto Free> struct Freed {
    template <typename T> void operator()(T *thing) const { Free(thing); }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using Context = std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>>;

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
    static std::atomic<long> made = 0;
    const long serial = ++made;
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -7200);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), wanted.validFor);
    X509_NAME *name = X509_get_subject_name(certificate.get());
    // a name of its own, so that clients that trust several find the right one
    const std::string own = "test server " + std::to_string(serial);
    const auto *text = reinterpret_cast<const unsigned char *>(own.c_str());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text, -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    X509_set_pubkey(certificate.get(), key);
    addExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), NID_subject_alt_name, wanted.hosts);
    if (X509_sign(certificate.get(), key, EVP_sha256()) == 0)
        throw std::runtime_error("no signature");
    return certificate;
}

template <typename Write> std::string textOf(const Write &write)
{
    const std::unique_ptr<BIO, Freed<BIO_free_all>> memory(BIO_new(BIO_s_mem()));
    write(memory.get());
    char *bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

} // namespace

struct TlsIdentity::Secrets {
    Key key{EVP_EC_gen("P-256")};
    Certificate certificate;
    Context context{SSL_CTX_new(TLS_server_method())};
};

TlsIdentity::TlsIdentity(const TestCertificate &wanted) : m_secrets(std::make_unique<Secrets>())
{
    m_secrets->certificate = selfSigned(m_secrets->key.get(), wanted);
    SSL_CTX *made = context();
    SSL_CTX_set_max_proto_version(made, wanted.newestProtocol);
    if (wanted.newestProtocol != 0 && wanted.newestProtocol < TLS1_2_VERSION) {
        SSL_CTX_set_security_level(made, 0);
        SSL_CTX_set_min_proto_version(made, TLS1_VERSION);
    }
    if (SSL_CTX_use_certificate(made, m_secrets->certificate.get()) != 1
        || SSL_CTX_use_PrivateKey(made, m_secrets->key.get()) != 1)
        throw std::runtime_error("no TLS server");
}

TlsIdentity::~TlsIdentity() = default;

std::string TlsIdentity::pem() const
{
    return textOf([this](BIO *text) { PEM_write_bio_X509(text, m_secrets->certificate.get()); });
}

std::string TlsIdentity::keyPem() const
{
    return textOf([this](BIO *text) {
        PEM_write_bio_PrivateKey(text, m_secrets->key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
}

SSL_CTX *TlsIdentity::context() const
{
    return m_secrets->context.get();
}

} // namespace testing_support
