// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/curl_transport.h"

#include "foundation/settings.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <curl/curl.h>
#include <openssl/ssl.h>
#include <utility>

namespace toodledo {

namespace {

constexpr std::size_t headerLimit = std::size_t{256} << 10;
constexpr int longestPause = 1000; // milliseconds; libcurl has timers of its own that end most pauses earlier

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

foundation::Error error(HttpErrorCode code, std::string detail)
{
    return {httpErrorDomain, static_cast<int>(code), {}, std::move(detail)};
}

std::string hostOf(const std::string &url)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parts(curl_url(), &curl_url_cleanup);
    char *text = nullptr;
    if (!parts || curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK
        || curl_url_get(parts.get(), CURLUPART_HOST, &text, 0) != CURLUE_OK)
        return {};
    std::string host(text);
    curl_free(text);
    return host;
}

/// libcurl takes a third slash for a typing mistake and the path after it for the host, which would get the password.
bool namesNoHost(std::string_view url)
{
    const std::size_t scheme = url.find("://");
    return scheme != std::string_view::npos && url.substr(scheme + 3).starts_with('/');
}

/// One exchange under way, as the callbacks see it.
struct Exchange {
    CURL *easy;
    BodySink &body;
    std::size_t bodyLimit;
    bool isSentOnce;
    bool isSent = false;
    std::size_t bodyBytes = 0;
    std::size_t headerBytes = 0;
    long status = 0;
    std::optional<HttpErrorCode> refusal = {}; ///< why a callback ended the exchange

    std::size_t refuse(HttpErrorCode code)
    {
        refusal = code;
        return 0;
    }

    std::size_t takeBody(std::string_view bytes)
    {
        if (bodyBytes == 0)
            curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        if (status != 200)
            return refuse(HttpErrorCode::Status);
        if (bytes.size() > bodyLimit - bodyBytes)
            return refuse(HttpErrorCode::TooLarge);
        bodyBytes += bytes.size();
        return body.receive(bytes) ? bytes.size() : refuse(HttpErrorCode::Unwanted);
    }

    std::size_t takeHeader(std::size_t size)
    {
        headerBytes += size;
        return headerBytes > headerLimit ? refuse(HttpErrorCode::TooLarge) : size;
    }
};

// libcurl hands the bytes over from C, through which no exception may pass.

std::size_t onBody(const char *bytes, std::size_t, std::size_t size, void *exchange) noexcept
{
    return static_cast<Exchange *>(exchange)->takeBody({bytes, size});
}

std::size_t onHeader(const char *, std::size_t, std::size_t size, void *exchange) noexcept
{
    return static_cast<Exchange *>(exchange)->takeHeader(size);
}

// libcurl does not tell whether a connection ended with TLS's goodbye, which nobody can forge who cuts it.

void onTlsEvent(const SSL *connection, int event, int value) noexcept
{
    if (event == SSL_CB_READ_ALERT && (value & 0xff) == SSL_AD_CLOSE_NOTIFY)
        *static_cast<bool *>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection))) = true;
}

/// libcurl sends a request again by itself where a connection that was kept open closes without a byte.
int onSending(void *exchange, char *, char *, int, int) noexcept
{
    auto &sent = *static_cast<Exchange *>(exchange);
    return std::exchange(sent.isSent, true) && sent.isSentOnce ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

CURLcode onTlsContext(CURL *, void *context, void *saidGoodbye) noexcept
{
    auto *tls = static_cast<SSL_CTX *>(context);
    SSL_CTX_set_app_data(tls, saidGoodbye);
    SSL_CTX_set_info_callback(tls, &onTlsEvent);
    return CURLE_OK;
}

/// Whether nothing but the end of the connection ends the reply.
bool endsWithItsConnection(CURL *easy)
{
    curl_header *header = nullptr;
    if (curl_easy_header(easy, "Content-Length", 0, CURLH_HEADER, -1, &header) == CURLHE_OK)
        return false;
    return curl_easy_header(easy, "Transfer-Encoding", 0, CURLH_HEADER, -1, &header) != CURLHE_OK
        || !equalIgnoringCase(header->value, "chunked");
}

HttpErrorCode codeFor(CURLcode code)
{
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return HttpErrorCode::Deadline;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return HttpErrorCode::Certificate;
    default:
        return HttpErrorCode::Connection;
    }
}

} // namespace

struct CurlTransport::Handles {
    bool hasFailed = false; ///< the last exchange, after which a server may close the connection at any moment
    bool saidGoodbye = false; ///< the server, in TLS's way, since the exchange began
    // The multi handle owns the connections; waiting on it, unlike within curl_easy_perform, can be ended at once.
    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi{curl_multi_init(), &curl_multi_cleanup};
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy{curl_easy_init(), &curl_easy_cleanup};

    [[nodiscard]] std::optional<CURLcode> run(const std::stop_token &stop) const;
};

/// Drives the easy handle to its end; nothing when it was cancelled.
std::optional<CURLcode> CurlTransport::Handles::run(const std::stop_token &stop) const
{
    const std::stop_callback wake(stop, [this] { curl_multi_wakeup(multi.get()); });
    if (curl_multi_add_handle(multi.get(), easy.get()) != CURLM_OK)
        return CURLE_FAILED_INIT;
    CURLcode result = CURLE_FAILED_INIT;
    int running = 1;
    while (running > 0 && !stop.stop_requested()) {
        if (curl_multi_perform(multi.get(), &running) != CURLM_OK)
            break;
        if (running > 0)
            curl_multi_poll(multi.get(), nullptr, 0, longestPause, nullptr);
    }
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(multi.get(), &left))
        result = message->data.result;
    curl_multi_remove_handle(multi.get(), easy.get());
    return running > 0 && stop.stop_requested() ? std::nullopt : std::optional(result);
}

CurlTransport::CurlTransport(Options options) : m_options(std::move(options))
{
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    static_cast<void>(ready);
    m_handles = std::make_unique<Handles>();
    CURL *easy = m_handles->easy.get();
    if (!easy)
        return;
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "Quelvin");
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &onBody);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &onHeader);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &onSending);
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &onTlsContext);
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_DATA, &m_handles->saidGoodbye);
    if (!m_options.authorities.empty()) {
        curl_easy_setopt(easy, CURLOPT_CAINFO, m_options.authorities.c_str());
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    }
}

CurlTransport::~CurlTransport() = default;

foundation::Result<HttpReply> CurlTransport::perform(const HttpRequest &request, BodySink &body)
{
    CURL *easy = m_handles->easy.get();
    if (!easy || !m_handles->multi)
        return foundation::Failure(error(HttpErrorCode::Connection, "libcurl could not be started"));
    if (namesNoHost(request.url))
        return foundation::Failure(error(HttpErrorCode::Connection, "the address names no host"));
    Exchange exchange{easy, body, m_options.replyLimit, request.isSentOnce};
    std::string message(CURL_ERROR_SIZE, '\0');
    const double milliseconds = std::clamp(std::ceil(request.deadline * 1000), 1.0, 86'400'000.0);
    const long verify = !m_options.acceptedCertificateDomain.empty()
            && allowsAnyHttpsCertificate(hostOf(request.url), m_options.acceptedCertificateDomain)
        ? 0L
        : 1L;
    curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L); // and no longer what the request before was
    if (!request.body.empty()) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.data());
    }
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(milliseconds));
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, verify);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, verify * 2);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &exchange);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, &exchange);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, &exchange);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, message.data());
    curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, std::exchange(m_handles->hasFailed, true) ? 1L : 0L);
    m_handles->saidGoodbye = false;
    const auto result = m_handles->run(request.stop);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, nullptr);

    if (!result)
        return foundation::Failure(error(HttpErrorCode::Cancelled, "cancelled"));
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &exchange.status);
    if (exchange.refusal && *exchange.refusal != HttpErrorCode::Status)
        return foundation::Failure(error(*exchange.refusal, "the reply was dropped"));
    if (exchange.refusal || (*result == CURLE_OK && exchange.status != 200))
        return foundation::Failure(error(HttpErrorCode::Status, "HTTP status " + std::to_string(exchange.status)));
    if (*result != CURLE_OK) {
        message.resize(message.find('\0'));
        return foundation::Failure(error(codeFor(*result), message.empty() ? curl_easy_strerror(*result) : message));
    }
    if (request.url.starts_with("https:") && endsWithItsConnection(easy) && !m_handles->saidGoodbye)
        return foundation::Failure(error(HttpErrorCode::Connection, "the connection ended before the reply did"));
    m_handles->hasFailed = false;
    char *contentType = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    return HttpReply{static_cast<int>(exchange.status), contentType ? contentType : ""};
}

CurlTransport::Options transportOptions(const foundation::Settings &settings)
{
    CurlTransport::Options options;
    const std::int64_t mebibytes = settings.integer("ReplyLimit");
    if (mebibytes > 0)
        options.replyLimit = static_cast<std::size_t>(std::min<std::int64_t>(mebibytes, 65'536)) << 20;
    options.acceptedCertificateDomain = settings.text("AcceptedCertificateDomain");
    return options;
}

bool allowsAnyHttpsCertificate(std::string_view host, std::string_view domain)
{
    if (domain.empty() || host.size() < domain.size())
        return false;
    const std::size_t front = host.size() - domain.size();
    return equalIgnoringCase(host.substr(front), domain) && (front == 0 || host[front - 1] == '.');
}

} // namespace toodledo
