// SPDX-License-Identifier: GPL-3.0-or-later
// Dates and numbers as replies, predicates and people write them. The first byte chooses the time zone. What is read
// and written again reads as the same.
#include "foundation/instant.h"
#include "fuzz/property.h"
#include "toodledo/td_text.h"

#include <cmath>
#include <cstring>
#include <ctime>

namespace {

void setZone(std::uint8_t choice)
{
    // with clocks that are set forward and back, half an hour at that, and a zone that left out a day
    constexpr std::array<const char *, 5> zones{
        "UTC", "Europe/Berlin", "Australia/Lord_Howe", "Pacific/Apia", "America/St_Johns"};
    static const char *current = nullptr;
    const char *zone = zones[choice % zones.size()];
    if (zone == current)
        return;
    current = zone;
    ::setenv("TZ", zone, 1);
    foundation::localZoneChanged();
}

/// What the C library makes of the number at the front of `text`.
std::int64_t referenceInteger(const std::string &text)
{
    return std::strtoll(text.c_str(), nullptr, 10);
}

void checkNumbers(const std::string &text)
{
    const std::int64_t number = toodledo::integerOf(text);
    fuzz::require(number == referenceInteger(text), "an integer is what the C library reads", text);
    fuzz::require(toodledo::integerOf(std::to_string(number)) == number, "an integer reads back", text);
    const auto low = static_cast<std::int32_t>(number);
    fuzz::require(toodledo::integerOf(toodledo::decimalText(number)) == low, "a parameter holds the low 32 bits", text);
    fuzz::require(std::isfinite(toodledo::secondsOf(text)), "seconds are a finite number", text);
    if (toodledo::isServiceId(number))
        fuzz::require(toodledo::decimalText(number) == std::to_string(number), "an id is sent as it is", text);
    static_cast<void>(toodledo::booleanOf(text));
}

void checkDates(const std::string &text)
{
    if (const auto date = toodledo::dateOf(text))
        fuzz::require(toodledo::dateOf(toodledo::dateText(*date)) == date, "a date reads back", text);
    if (const auto date = toodledo::dateTimeOf(text)) {
        const std::string written = toodledo::dateTimeText(*date);
        const bool last = date->seconds > 253'402'250'000; // after which there is no leap second, nor anything else
        fuzz::require(
            last || toodledo::dateTimeOf(written) == date, "a date and time reads back", text + " is " + written);
        fuzz::require(toodledo::timeText(*date).size() == 8, "a time has eight characters", text);
    }
    if (const auto instant = foundation::fromIso8601(text)) {
        const int year = foundation::toLocal(*instant).year;
        if (year == 0 || year == 9999)
            return; // there an offset may lead out of the years that have a date
        const std::string written = foundation::toIso8601(*instant);
        fuzz::require(foundation::fromIso8601(written) == instant, "an ISO date reads back", text + " is " + written);
        const foundation::Instant midnight = foundation::startOfLocalDay(*instant);
        fuzz::require(midnight <= *instant && foundation::startOfLocalDay(midnight) == midnight,
            "a day begins no later than any moment of it", text);
    }
}

/// Moments that no text leads to: any double.
void checkInstant(std::string_view bytes)
{
    foundation::Instant instant;
    if (bytes.size() < sizeof instant.seconds)
        return;
    std::memcpy(&instant.seconds, bytes.data(), sizeof instant.seconds);
    fuzz::require(foundation::isValid(foundation::toLocal(instant)), "every moment has a date");
    fuzz::require(foundation::fromIso8601(foundation::toIso8601(instant)).has_value(), "what is written can be read");
    fuzz::require(toodledo::dateTimeOf(toodledo::dateTimeText(instant)).has_value(), "what is sent can be read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    setZone(input.byte());
    const std::string text(input.rest());
    checkNumbers(text);
    checkDates(text);
    checkInstant(text);
    return 0;
}
