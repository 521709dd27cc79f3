// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/http_transport.h"

#include <map>
#include <string>

namespace bench {

/// What a service with so many tasks answers, by method. Of the tasks, the first `edited` have another title and were
/// edited a day after the others were read.
using Replies = std::map<std::string, std::string>;
[[nodiscard]] Replies repliesFor(int tasks, int edited = 0);

/// Answers each method with the same text, in the pieces that a network would bring.
class CannedTransport final : public toodledo::HttpTransport
{
public:
    /// `replies` must outlive this.
    explicit CannedTransport(const Replies &replies) : m_replies(replies) { }
    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override;

private:
    const Replies &m_replies;
};

} // namespace bench
