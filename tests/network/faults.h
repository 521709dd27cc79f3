// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/scripted_http_server.h"

#include <span>
#include <string>

namespace network {

/// What a network or a server can do instead of answering.
struct Fault {
    enum class Kind {
        Bad, ///< nothing of the reply may be believed
        Odd ///< a true reply with records that make no sense: what they are worth is for others to judge
    };

    const char *name;
    /// Makes the reply from the good one and the request's target; a null one refuses the connection.
    testing_support::ScriptedReply (*reply)(const std::string &good, const std::string &target);
    Kind kind = Kind::Bad;
};

[[nodiscard]] std::span<const Fault> faults();

/// An address that redirects lead to, and that nothing may ever ask.
[[nodiscard]] const testing_support::ScriptedHttpServer &elsewhere();

} // namespace network
