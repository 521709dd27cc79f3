// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/gtd_task.h"
#include "toodledo/td_parser.h"

#include <functional>
#include <map>

namespace toodledo {

/// The id that the service knows the local context of this title by; 0 when there is no such context. It is called on
/// the thread that parses.
using ContextLookup = std::function<std::int64_t(std::string_view title)>;

/// Reads the replies to `getTasks` and `getDeleted`. Due and start dates come out as dates alone: the elements
/// `starttime` and `duetime` are not read, and the records' three "has" flags stay false.
class TDTasksParser final : public TDListParser<GtdTask>
{
public:
    /// Without a lookup, no task has a context.
    explicit TDTasksParser(ContextLookup contextByTitle = {}) : m_contextByTitle(std::move(contextByTitle)) { }

private:
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;
    [[nodiscard]] std::int64_t contextOf(std::string_view title);

    ContextLookup m_contextByTitle;
    std::map<std::string, std::int64_t, std::less<>> m_contexts; ///< titles that this reply has asked for
    GtdTask m_current;
    bool m_inTask = false;
};

} // namespace toodledo
