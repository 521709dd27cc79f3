// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/gtd_task.h"

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace toodledo {

/// Tasks of earlier replies, each by a mark of the very bytes that stood for it. Where the same bytes stand again
/// between the records of a reply, they say the same, and need not be read again.
class KnownTasks
{
public:
    /// `meaning` stands for what the bytes do not hold but their meaning hangs on, the ids of the contexts that they
    /// name: marks made under another one are of other bytes.
    explicit KnownTasks(SourceMark meaning) : m_meaning(meaning) { }

    /// The mark of a record's bytes, or of whatever else, from its first byte to its last.
    [[nodiscard]] SourceMark markOf(std::string_view bytes) const;
    void add(SourceMark mark, std::int64_t taskId) { m_ids.emplace(mark, taskId); }
    /// The id of the task for which the bytes of this mark stood; nothing where it is not known.
    [[nodiscard]] std::optional<std::int64_t> find(SourceMark mark) const;

private:
    SourceMark m_meaning;
    std::unordered_map<SourceMark, std::int64_t> m_ids;
};

/// The service's tasks.
struct TaskList {
    std::vector<GtdTask> tasks; ///< in the order of the reply
    std::vector<std::int64_t> unchanged; ///< the ids of those that were known
};

} // namespace toodledo
