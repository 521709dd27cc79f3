// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_request.h"

#include <array>

namespace toodledo {

namespace {

using CharacterSet = std::array<bool, 256>;

constexpr CharacterSet charactersOf(std::string_view others)
{
    CharacterSet set{};
    for (unsigned c = '0'; c <= 'z'; ++c)
        set[c] = c <= '9' || (c >= 'A' && c <= 'Z') || c >= 'a';
    for (const char c : others)
        set[static_cast<unsigned char>(c)] = true;
    return set;
}

constexpr CharacterSet keptInValues = charactersOf("-._~");
constexpr CharacterSet keptInTexts = charactersOf("-._~!$&'()*+,/:;=?@");

void appendEscaped(std::string &result, std::string_view text, const CharacterSet &kept)
{
    constexpr std::string_view figures = "0123456789ABCDEF";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (kept[byte])
            result += character;
        else
            (((result += '%') += figures[byte >> 4]) += figures[byte & 15]);
    }
}

/// Makes room for all parameters at once: a text of megabytes is to be copied no more often than it must.
void reserveFor(std::string &url, const Parameters &parameters)
{
    std::size_t size = url.size() + 128;
    for (const auto &[name, value] : parameters)
        size += name.size() + 2 + value.size() * 3;
    url.reserve(size);
}

void appendPair(std::string &url, std::string_view name, std::string_view value, bool escape)
{
    (url += name) += '=';
    if (escape)
        appendEscaped(url, value, keptInValues);
    else
        url += value;
    url += ';';
}

} // namespace

std::string escapedValue(std::string_view value)
{
    std::string result;
    appendEscaped(result, value, keptInValues);
    return result;
}

std::string escapedText(std::string_view text)
{
    std::string result;
    appendEscaped(result, text, keptInTexts);
    return result;
}

std::string plainUrl(std::string_view urlText, const Parameters &parameters)
{
    std::string url("http://");
    url += urlText;
    reserveFor(url, parameters);
    for (const auto &[name, value] : parameters)
        appendPair(url, name, value, true);
    return url;
}

std::string authenticatedUrl(
    std::string_view urlText, const Authentication &authentication, const Parameters &parameters)
{
    std::string url(authentication.secure ? "https://" : "http://");
    url += urlText;
    reserveFor(url, parameters);
    appendPair(url, "key", authentication.key, authentication.escapeValues);
    for (const auto &[name, value] : parameters)
        appendPair(url, name, value, authentication.escapeValues);
    return authentication.escapeValues ? url : escapedText(url);
}

std::string callLine(std::string_view method, const Parameters &parameters)
{
    std::string line;
    reserveFor(line, parameters);
    appendPair(line, "method", method, true);
    for (const auto &[name, value] : parameters)
        appendPair(line, name, value, true);
    return line += '\n';
}

bool isLoopback(std::string_view host)
{
    if (host.starts_with("[::1]"))
        return true;
    host = host.substr(0, host.find(':'));
    return host == "localhost" || host.ends_with(".localhost")
        || (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

} // namespace toodledo
