// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>
#include <tl/expected.hpp>

namespace service {

/// A value, or one sentence that tells the service's owner why there is none.
template <typename Value> using Result = tl::expected<Value, std::string>;
using Failure = tl::unexpected<std::string>;

/// What a method throws when it does not do what a client asked; the text becomes the reply's `error` element.
/// It never leaves the room.
class Refusal : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace service
