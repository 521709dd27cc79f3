// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "location/coordinate.h"

#include <functional>

namespace location {

inline constexpr const char *locationErrorDomain = "LocationErrorDomain";
enum class LocationErrorCode {
    Unavailable = 1, ///< there is nothing that knows the position, or it went away; it may come back
    Denied, ///< the user or the desktop does not allow it; asking again would annoy
};

/// What knows where the computer is. Main thread; nothing waits, so that every failure comes through the handler.
/// Ends with the object. A handler must not delete it.
class LocationManager
{
public:
    struct Handlers {
        std::function<void(const Coordinate &)> didUpdateToLocation;
        /// The position is unknown from now until another update.
        std::function<void(const foundation::Error &)> didFailWithError;
    };

    virtual ~LocationManager() = default;

    /// To be called once.
    virtual void startUpdatingLocation(Handlers handlers) = 0;
};

} // namespace location
