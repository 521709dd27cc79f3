// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "location/coordinate.h"

#include <string>
#include <string_view>

namespace location {

inline constexpr const char *coordinateErrorDomain = "CoordinateErrorDomain";
enum class CoordinateErrorCode { NoCoordinate = 1, MinutesOutOfRange, LatitudeOutOfRange, LongitudeOutOfRange };

/// Reads a place as people and maps write it: degrees with decimals, degrees with minutes, and with seconds, signs or
/// the letters N, S, E and W, latitude first unless the letters say otherwise, and `geo:` addresses. What can be read
/// in two ways is refused.
[[nodiscard]] foundation::Result<Coordinate> readCoordinate(std::string_view text);

/// Degrees with up to six decimals, some ten centimetres: "52.4915, 13.4236".
[[nodiscard]] std::string coordinateText(const Coordinate &place);

} // namespace location
