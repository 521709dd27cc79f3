// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/known_tasks.h"

#include <xxhash.h>

namespace toodledo {

SourceMark KnownTasks::markOf(std::string_view bytes) const
{
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), m_meaning);
}

std::optional<std::int64_t> KnownTasks::find(SourceMark mark) const
{
    const auto found = m_ids.find(mark);
    return found == m_ids.end() ? std::nullopt : std::optional(found->second);
}

} // namespace toodledo
