// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <arpa/inet.h>
#include <cerrno>
#include <curl/curl.h>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace calling {

/// One kept-alive connection of a client.
class HttpClient
{
public:
    struct Reply {
        long status = 0; ///< 0 where there was no reply at all
        std::string type;
        std::string body;
    };

    HttpClient() : m_easy(::curl_easy_init())
    {
        ::curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &append);
        ::curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
        ::curl_easy_setopt(m_easy, CURLOPT_TIMEOUT, 60L);
    }
    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;
    ~HttpClient() { ::curl_easy_cleanup(m_easy); }

    void trust(const std::string &certificate) { ::curl_easy_setopt(m_easy, CURLOPT_CAINFO, certificate.c_str()); }

    Reply get(const std::string &url)
    {
        ::curl_easy_setopt(m_easy, CURLOPT_HTTPGET, 1L);
        return perform(url);
    }
    Reply post(const std::string &url, const std::string &body)
    {
        ::curl_easy_setopt(m_easy, CURLOPT_POST, 1L);
        ::curl_easy_setopt(m_easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
        ::curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, body.data());
        return perform(url);
    }

private:
    static std::size_t append(const char *data, std::size_t, std::size_t size, void *body)
    {
        static_cast<std::string *>(body)->append(data, size);
        return size;
    }
    Reply perform(const std::string &url)
    {
        Reply reply;
        ::curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, &reply.body);
        ::curl_easy_setopt(m_easy, CURLOPT_URL, url.c_str());
        if (::curl_easy_perform(m_easy) != CURLE_OK)
            return reply;
        ::curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &reply.status);
        const char *type = nullptr;
        ::curl_easy_getinfo(m_easy, CURLINFO_CONTENT_TYPE, &type);
        reply.type = type ? type : "";
        return reply;
    }

    CURL *m_easy;
};

/// A bare connection, for what no decent client sends.
class RawSocket
{
public:
    /// `from` is the address of this end, where it is not to be that of everybody else here.
    explicit RawSocket(const std::string &address, const char *from = nullptr)
        : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (from) {
            sockaddr_in own{};
            own.sin_family = AF_INET;
            ::inet_pton(AF_INET, from, &own.sin_addr);
            if (::bind(m_descriptor, reinterpret_cast<const sockaddr *>(&own), sizeof own) != 0)
                throw std::runtime_error(std::string("cannot speak from ") + from);
        }
        const std::size_t colon = address.rfind(':');
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = ::htons(static_cast<std::uint16_t>(std::stoi(address.substr(colon + 1))));
        ::inet_pton(AF_INET, address.substr(0, colon).c_str(), &place.sin_addr);
        const timeval patience{10, 0};
        ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        if (::connect(m_descriptor, reinterpret_cast<const sockaddr *>(&place), sizeof place) != 0)
            throw std::runtime_error("cannot connect to " + address);
    }
    RawSocket(const RawSocket &) = delete;
    RawSocket &operator=(const RawSocket &) = delete;
    ~RawSocket() { ::close(m_descriptor); }

    bool send(const std::string &bytes) // NOLINT: false once the other end has closed
    {
        return ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }
    /// Whether the other end closes the connection without a word, within ten seconds.
    bool isCut()
    {
        char byte = 0;
        const ssize_t size = ::recv(m_descriptor, &byte, 1, 0);
        return size == 0 || (size < 0 && errno == ECONNRESET);
    }
    /// What arrives until `end` has, or the connection ends.
    std::string receiveUntil(const std::string &end)
    {
        std::string text;
        char buffer[4096];
        while (text.find(end) == std::string::npos) {
            const ssize_t size = ::recv(m_descriptor, buffer, sizeof buffer, 0);
            if (size <= 0)
                break;
            text.append(buffer, static_cast<std::size_t>(size));
        }
        return text;
    }

private:
    int m_descriptor;
};

} // namespace calling
