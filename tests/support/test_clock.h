// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"

#include <stdexcept>
#include <string_view>

namespace support {

/// The instant that a local date such as "2026-12-01" or "2026-12-01 14:30" names.
inline foundation::Instant at(std::string_view text)
{
    if (const auto instant = foundation::fromIso8601(text))
        return *instant;
    throw std::invalid_argument("no date: " + std::string(text));
}

/// A clock that stands where the test sets it.
class TestClock final : public foundation::Clock
{
public:
    explicit TestClock(foundation::Instant now = at("2026-11-24 09:00")) : m_now(now) { }

    [[nodiscard]] foundation::Instant now() const override { return m_now; }
    void set(foundation::Instant now) { m_now = now; }
    void advance(double seconds) { m_now.seconds += seconds; }

private:
    foundation::Instant m_now;
};

} // namespace support
