// SPDX-License-Identifier: GPL-3.0-or-later
#include "location/coordinate.h"

#include <cmath>
#include <numbers>

namespace location {

bool isOnEarth(const Coordinate &place)
{
    return std::abs(place.latitude) <= 90 && std::abs(place.longitude) <= 180; // false for what is no number
}

double metresBetween(const Coordinate &one, const Coordinate &other)
{
    constexpr double earthRadius = 6'371'008.8; // the mean one
    constexpr double radians = std::numbers::pi / 180;
    const auto halfChord = [](double degrees) { return std::pow(std::sin(degrees * radians / 2), 2); };
    const double chord = halfChord(other.latitude - one.latitude)
        + std::cos(one.latitude * radians) * std::cos(other.latitude * radians)
            * halfChord(other.longitude - one.longitude);
    return 2 * earthRadius * std::asin(std::sqrt(std::fmin(1, chord))); // rounding may lead past the antipode
}

} // namespace location
