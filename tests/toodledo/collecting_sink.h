// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/http_transport.h"

namespace toodledo {

/// Keeps a reply, of which it wants no more than `limit` bytes.
struct CollectingSink final : BodySink {
    bool receive(std::string_view bytes) override
    {
        body += bytes;
        return body.size() <= limit;
    }
    std::string body;
    std::size_t limit = std::string::npos;
};

} // namespace toodledo
