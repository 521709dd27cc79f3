// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/clock.h"

#include <chrono>

namespace foundation
{

Instant SystemClock::now() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(sinceEpoch).count();
    return Instant{static_cast<double>(milliseconds) / 1000.0};
}

} // namespace foundation
