// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace objectstore {

/// A number that no other process is likely to draw. Any thread may ask: all share one generator, since to seed one of
/// its own costs a thread more than a small save.
[[nodiscard]] std::uint64_t randomNumber();

} // namespace objectstore
