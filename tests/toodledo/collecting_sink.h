// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/http_transport.h"

namespace toodledo {

/// Keeps a reply.
struct CollectingSink final : BodySink {
    bool receive(std::string_view bytes) override
    {
        body += bytes;
        return true;
    }
    std::string body;
};

} // namespace toodledo
