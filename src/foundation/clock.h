// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

namespace foundation
{

/// Tells the time. Everything that asks for "now" is handed one, so that a test can set it. Any thread may ask.
class Clock
{
public:
    virtual ~Clock() = default;

    /// The current instant, in whole milliseconds.
    [[nodiscard]] virtual Instant now() const = 0;
};

/// The computer's own clock.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] Instant now() const override;
};

} // namespace foundation
