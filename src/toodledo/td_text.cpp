// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_text.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <openssl/evp.h>

namespace toodledo {

namespace {

bool isBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

void skipBlanks(std::string_view &text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
}

/// Takes one to `most` digits from the front of `text`, then the separator if there is one.
bool takeNumber(std::string_view &text, std::size_t most, char separator, int &number)
{
    std::size_t count = 0;
    int value = 0;
    for (; count < most && count < text.size() && isDigit(text[count]); ++count)
        value = value * 10 + (text[count] - '0');
    if (count == 0)
        return false;
    text.remove_prefix(count);
    number = value;
    if (separator == '\0')
        return true;
    if (text.empty() || text.front() != separator)
        return false;
    text.remove_prefix(1);
    return true;
}

bool takeDate(std::string_view &text, foundation::CivilTime &time)
{
    const bool fourDigits = text.size() > 4 && text[4] == '-';
    return fourDigits && takeNumber(text, 4, '-', time.year) && takeNumber(text, 2, '-', time.month)
        && takeNumber(text, 2, '\0', time.day);
}

} // namespace

std::int64_t integerOf(std::string_view text)
{
    skipBlanks(text);
    if (text.starts_with('+') && text.size() > 1 && isDigit(text[1]))
        text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure == std::errc::result_out_of_range)
        return text.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                     : std::numeric_limits<std::int64_t>::max();
    return number;
}

bool booleanOf(std::string_view text)
{
    skipBlanks(text);
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    while (text.starts_with('0'))
        text.remove_prefix(1);
    if (text.empty())
        return false;
    const char first = text.front();
    return first == 'Y' || first == 'y' || first == 'T' || first == 't' || isDigit(first);
}

double secondsOf(std::string_view text)
{
    skipBlanks(text);
    double number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc{} && number > -1e12 && number < 1e12;
    return isNumber ? number : 0;
}

std::optional<foundation::Instant> dateOf(std::string_view text)
{
    foundation::CivilTime time;
    return takeDate(text, time) && text.empty() ? foundation::fromLocal(time) : std::nullopt;
}

std::optional<foundation::Instant> dateTimeOf(std::string_view text)
{
    foundation::CivilTime time;
    if (!takeDate(text, time) || !text.starts_with(' '))
        return std::nullopt;
    text.remove_prefix(1);
    const bool read = takeNumber(text, 2, ':', time.hour) && takeNumber(text, 2, ':', time.minute)
        && takeNumber(text, 2, '\0', time.second);
    return read && text.empty() ? foundation::fromLocal(time) : std::nullopt;
}

std::string dateText(foundation::Instant instant)
{
    const foundation::CivilTime time = foundation::toLocal(instant);
    std::array<char, 48> text{};
    const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", time.year, time.month, time.day);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

std::string dateTimeText(foundation::Instant instant)
{
    const foundation::CivilTime time = foundation::toLocal(instant);
    std::array<char, 48> text{};
    const int length = std::snprintf(text.data(), text.size(), " %02d:%02d:%02d", time.hour, time.minute, time.second);
    return dateText(instant).append(text.data(), static_cast<std::size_t>(length));
}

std::string timeText(foundation::Instant instant)
{
    const foundation::CivilTime time = foundation::toLocal(instant);
    const int hour = time.hour % 12 == 0 ? 12 : time.hour % 12;
    std::array<char, 48> text{};
    const int length
        = std::snprintf(text.data(), text.size(), "%02d:%02d %s", hour, time.minute, time.hour < 12 ? "am" : "pm");
    return std::string(text.data(), static_cast<std::size_t>(length));
}

std::string decimalText(std::int64_t number)
{
    return std::to_string(static_cast<std::int32_t>(number));
}

std::string md5Hex(std::string_view text)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_md5(), nullptr) != 1)
        return {};
    constexpr std::string_view figures = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < size; ++i) {
        hex += figures[digest[i] >> 4];
        hex += figures[digest[i] & 15];
    }
    return hex;
}

} // namespace toodledo
