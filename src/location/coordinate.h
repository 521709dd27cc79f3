// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace location {

/// A place in degrees; north and east are positive.
struct Coordinate {
    double latitude = 0;
    double longitude = 0;

    friend bool operator==(const Coordinate &, const Coordinate &) = default;
};

/// Whether the numbers are ones that a place can have.
[[nodiscard]] bool isOnEarth(const Coordinate &place);

/// The way over the ground in metres. The Earth counts as a ball, which is off by half a per cent at most.
[[nodiscard]] double metresBetween(const Coordinate &one, const Coordinate &other);

} // namespace location
