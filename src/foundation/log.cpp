// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace foundation
{

namespace
{

constexpr std::array<std::string_view, 4> secretParameters{"pass", "key", "token", "userid"};
constexpr std::string_view mask = "***";

std::function<void(std::string_view)> &sink()
{
    static std::function<void(std::string_view)> theSink;
    return theSink;
}

bool isNameCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
        || (character >= '0' && character <= '9') || character == '_';
}

bool endsValue(char character)
{
    return character == ';' || character == '&' || character == '"' || character == '\'' || character == '<'
        || character == '>' || character == '#' || static_cast<unsigned char>(character) <= ' ';
}

/// The end of a secret parameter's "name=" that begins at `position`, or npos.
std::size_t endOfSecretName(std::string_view text, std::size_t position)
{
    if (position > 0 && isNameCharacter(text[position - 1]))
        return std::string_view::npos;
    for (const std::string_view name : secretParameters) {
        const std::size_t end = position + name.size();
        if (end < text.size() && text[end] == '=' && text.substr(position, name.size()) == name)
            return end + 1;
    }
    return std::string_view::npos;
}

/// The end of a `token` element's start tag that begins at `position`, or npos.
std::size_t endOfTokenTag(std::string_view text, std::size_t position)
{
    constexpr std::string_view tag = "<token";
    const std::string_view rest = text.substr(position);
    if (!rest.starts_with(tag) || rest.size() == tag.size() || isNameCharacter(rest[tag.size()]))
        return std::string_view::npos;
    const std::size_t close = text.find('>', position);
    return close == std::string_view::npos ? text.size() : close + 1;
}

} // namespace

std::string redacted(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (position < text.size()) {
        std::size_t secretBegin = endOfSecretName(text, position);
        const bool isParameter = secretBegin != std::string_view::npos;
        if (!isParameter && text[position] == '<')
            secretBegin = endOfTokenTag(text, position);
        if (secretBegin == std::string_view::npos) {
            result += text[position++];
            continue;
        }
        result += text.substr(position, secretBegin - position);
        const auto isEnd = [isParameter](char c) { return isParameter ? endsValue(c) : c == '<'; };
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(secretBegin);
        position = static_cast<std::size_t>(std::find_if(begin, text.end(), isEnd) - text.begin());
        result += mask;
    }
    return result;
}

void logLine(std::string_view line)
{
    std::string text = redacted(line);
    // A server's text must not be able to begin a line of its own.
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
    if (sink()) {
        sink()(text);
        return;
    }
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void setLogSink(std::function<void(std::string_view)> newSink)
{
    sink() = std::move(newSink);
}

} // namespace foundation
