// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/text.h"

#include <array>
#include <charconv>

namespace service {

namespace {

int hexadecimalDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// The length of the character of well-formed UTF-8 that `text` begins with, 0 when it begins with something else.
std::size_t characterLength(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto continues = [byte](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const unsigned first = byte(0);
    const unsigned second = byte(1);
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return continues(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const bool overlong = first == 0xE0 && second < 0xA0;
        const bool surrogate = first == 0xED && second > 0x9F;
        return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool overlong = first == 0xF0 && second < 0x90;
        const bool beyond = first == 0xF4 && second > 0x8F;
        return continues(1) && continues(2) && continues(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

bool isXmlCharacter(std::string_view character)
{
    if (character.size() == 1)
        return static_cast<unsigned char>(character[0]) >= 0x20 || character == "\t" || character == "\n"
            || character == "\r";
    return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF"; // U+FFFE and U+FFFF
}

void appendEscaped(std::string &xml, std::string_view text, std::string_view special)
{
    static constexpr auto escape = [](char character) -> std::string_view {
        switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        default:
            return "&#13;";
        }
    };
    for (std::size_t found; (found = text.find_first_of(special)) != std::string_view::npos;
         text.remove_prefix(found + 1))
        xml.append(text.substr(0, found)).append(escape(text[found]));
    xml.append(text);
}

} // namespace

std::string percentDecoded(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int high = hexadecimalDigit(text[i + 1]);
            const int low = hexadecimalDigit(text[i + 2]);
            if (high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                i += 2;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

std::string cleaned(std::string text)
{
    std::string result;
    std::size_t kept = 0; // everything before it is in `result`
    for (std::size_t i = 0; i < text.size();) {
        const std::string_view rest = std::string_view(text).substr(i);
        const std::size_t length = characterLength(rest);
        if (length > 0 && isXmlCharacter(rest.substr(0, length))) {
            i += length;
            continue;
        }
        result.append(text, kept, i - kept);
        if (length == 0)
            result.append(replacement);
        i += length == 0 ? 1 : length;
        kept = i;
    }
    if (kept == 0)
        return text;
    return result.append(text, kept);
}

std::optional<std::int64_t> integerOf(std::string_view text)
{
    std::int32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

void appendInteger(std::string &xml, std::int64_t number)
{
    std::array<char, 24> digits{};
    const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    xml.append(digits.data(), end);
}

void appendText(std::string &xml, std::string_view text)
{
    appendEscaped(xml, text, "&<>\r"); // a bare carriage return would be read as a line feed
}

void appendAttribute(std::string &xml, std::string_view text)
{
    appendEscaped(xml, text, "&<>\"\t\n\r"); // blanks of any kind would be read as plain blanks
}

std::string element(std::string_view name, std::string_view text)
{
    std::string xml;
    xml.reserve(2 * name.size() + text.size() + 8);
    xml.append("<").append(name).append(">");
    appendText(xml, text);
    return xml.append("</").append(name).append(">");
}

std::string element(std::string_view name, std::int64_t number)
{
    std::string digits;
    appendInteger(digits, number);
    return element(name, digits);
}

} // namespace service
