// SPDX-License-Identifier: GPL-3.0-or-later
#include "location/coordinate_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace location {

namespace {

using foundation::Error;
using foundation::Failure;

constexpr std::size_t longestText = 200;
constexpr std::array units{'*', '\'', '"'}; // of degrees, minutes and seconds, as `inPlainSigns` writes them

/// A latitude or a longitude as it is written: 52° 29.49' N.
struct Half {
    std::vector<double> parts; ///< degrees, perhaps minutes, perhaps seconds
    bool isNegative = false;
    char letter = 0; ///< N, S, E, W, or 0 for none

    friend bool operator==(const Half &, const Half &) = default;
};
using Halves = std::pair<Half, Half>;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

void replaceAll(std::string &text, std::string_view from, std::string_view to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

/// The text with one sign for each meaning.
std::string inPlainSigns(std::string text)
{
    constexpr std::pair<std::string_view, std::string_view> signs[] = {{"*", "?"}, {"\u00b0", "*"}, {"\u00ba", "*"},
        {"\u02da", "*"}, {"\u2032", "'"}, {"\u2019", "'"}, {"\u2033", "\""}, {"\u201d", "\""}, {"''", "\""},
        {"\u2212", "-"}, {"\u2013", "-"}, {"\u00a0", " "}, {"\u202f", " "}, {"\u2009", " "}, {"\t", " "}};
    for (const auto &[from, to] : signs)
        replaceAll(text, from, to);
    for (char &character : text) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    if (text.starts_with("GEO:")) { // an altitude and parameters may follow
        text = text.substr(4, text.find_first_of(";?") - 4);
        if (const auto comma = text.find(','); comma != std::string::npos)
            text.resize(std::min(text.size(), text.find(',', comma + 1)));
    }
    return text;
}

/// Where there is no point and two commas stand within numbers, these are decimal commas.
void replaceDecimalCommas(std::string &text)
{
    if (text.find('.') != std::string::npos)
        return;
    std::vector<std::size_t> commas;
    for (std::size_t at = 1; at + 1 < text.size(); ++at) {
        if (text[at] == ',' && isDigit(text[at - 1]) && isDigit(text[at + 1]))
            commas.push_back(at);
    }
    if (commas.size() != 2)
        return;
    for (const std::size_t comma : commas)
        text[comma] = '.';
}

/// Reads a half from left to right.
class HalfReader
{
public:
    explicit HalfReader(std::string_view text) : m_text(text) { }

    std::optional<Half> read()
    {
        Half half;
        half.letter = take("NSEW");
        const char sign = take("+-");
        half.isNegative = sign == '-';
        bool isLast = false;
        while (half.parts.size() < units.size() && !isLast) {
            const auto number = takeNumber(isLast);
            if (!number)
                break;
            half.parts.push_back(*number);
            const char unit = units[half.parts.size() - 1];
            if (take({&unit, 1}) == 0 && !isLast)
                take(":");
        }
        if (half.letter == 0)
            half.letter = take("NSEW");
        skipSpaces();
        if (!m_text.empty() || half.parts.empty() || (sign != 0 && half.letter != 0))
            return std::nullopt;
        return half;
    }

private:
    void skipSpaces() { m_text.remove_prefix(std::min(m_text.find_first_not_of(' '), m_text.size())); }

    /// The next character, taken if it is one of these; else 0.
    char take(std::string_view wanted)
    {
        skipSpaces();
        if (m_text.empty() || wanted.find(m_text.front()) == std::string_view::npos)
            return 0;
        const char taken = m_text.front();
        m_text.remove_prefix(1);
        return taken;
    }

    /// A number; one with decimals is the last of its half.
    std::optional<double> takeNumber(bool &hasDecimals)
    {
        skipSpaces();
        double number = 0;
        if (m_text.empty() || !isDigit(m_text.front()))
            return std::nullopt;
        const char *const begin = m_text.data();
        const auto read = std::from_chars(begin, begin + m_text.size(), number, std::chars_format::fixed);
        if (read.ec != std::errc())
            return std::nullopt;
        const auto length = static_cast<std::size_t>(read.ptr - begin);
        hasDecimals = m_text.substr(0, length).find('.') != std::string_view::npos;
        m_text.remove_prefix(length);
        return number;
    }

    std::string_view m_text;
};

bool isWithinNumber(std::string_view text, std::size_t at)
{
    const auto belongs = [](char character) { return isDigit(character) || character == '.'; };
    return belongs(text[at - 1]) && belongs(text[at]);
}

/// Every way to read the text as two halves.
std::vector<Halves> readings(std::string_view text)
{
    std::vector<Halves> all;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (isWithinNumber(text, at))
            continue;
        const bool isSeparator = text[at] == ',' || text[at] == ';';
        const auto first = HalfReader(text.substr(0, at)).read();
        const auto second = HalfReader(text.substr(isSeparator ? at + 1 : at)).read();
        if (!first || !second || (first->letter == 0) != (second->letter == 0))
            continue;
        Halves halves{*first, *second};
        if (std::find(all.begin(), all.end(), halves) == all.end())
            all.push_back(std::move(halves));
    }
    return all;
}

/// The one reading, or the one in which both halves are written alike.
std::optional<Halves> onlyReading(std::vector<Halves> all)
{
    if (all.size() > 1)
        std::erase_if(
            all, [](const Halves &halves) { return halves.first.parts.size() != halves.second.parts.size(); });
    if (all.size() != 1)
        return std::nullopt;
    return all.front();
}

Failure fail(CoordinateErrorCode code, std::string message)
{
    return Failure(Error{coordinateErrorDomain, static_cast<int>(code), std::move(message), {}});
}

Failure noCoordinate()
{
    return fail(CoordinateErrorCode::NoCoordinate,
        "This is no position. Write it as 52.4915, 13.4236 or as 52° 29.49' N, 13° 25.42' E.");
}

double degrees(const Half &half)
{
    double sum = 0;
    double share = 1;
    for (const double part : half.parts) {
        sum += part * share;
        share /= 60;
    }
    const bool isNegative = half.isNegative || half.letter == 'S' || half.letter == 'W';
    return isNegative && sum != 0 ? -sum : sum;
}

bool hasWholeMinutes(const Half &half)
{
    return std::all_of(half.parts.begin() + 1, half.parts.end(), [](double part) { return part < 60; });
}

} // namespace

foundation::Result<Coordinate> readCoordinate(std::string_view written)
{
    if (written.size() > longestText)
        return noCoordinate();
    std::string text = inPlainSigns(std::string(written));
    replaceDecimalCommas(text);
    auto halves = onlyReading(readings(text));
    if (!halves)
        return noCoordinate();
    auto &[latitude, longitude] = *halves;
    const auto isOf = [](const Half &half, std::string_view letters) {
        return half.letter == 0 || letters.find(half.letter) != std::string_view::npos;
    };
    if (!isOf(latitude, "NS"))
        std::swap(latitude, longitude);
    if (!isOf(latitude, "NS") || !isOf(longitude, "EW"))
        return noCoordinate();
    if (!hasWholeMinutes(latitude) || !hasWholeMinutes(longitude))
        return fail(CoordinateErrorCode::MinutesOutOfRange, "Minutes and seconds are below 60.");
    const Coordinate place{degrees(latitude), degrees(longitude)};
    if (!isOnEarth({place.latitude, 0}))
        return fail(CoordinateErrorCode::LatitudeOutOfRange, "The latitude lies between 90° south and 90° north.");
    if (!isOnEarth({0, place.longitude}))
        return fail(CoordinateErrorCode::LongitudeOutOfRange, "The longitude lies between 180° west and 180° east.");
    return place;
}

std::string coordinateText(const Coordinate &place)
{
    const auto decimal = [](double degrees) {
        std::array<char, 400> buffer; // the longest double has 309 digits before its point
        const auto end
            = std::to_chars(buffer.data(), buffer.data() + buffer.size(), degrees, std::chars_format::fixed, 6).ptr;
        std::string text(buffer.data(), end);
        text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.'))
            text.pop_back();
        return text == "-0" ? std::string("0") : text;
    };
    return decimal(place.latitude) + ", " + decimal(place.longitude);
}

} // namespace location
