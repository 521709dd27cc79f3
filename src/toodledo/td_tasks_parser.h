// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/known_tasks.h"
#include "toodledo/td_parser.h"

#include <functional>
#include <map>

namespace toodledo {

/// The id that the service knows the local context of this title by; 0 when there is no such context. It is called on
/// the thread that parses.
using ContextLookup = std::function<std::int64_t(std::string_view title)>;

/// Reads the replies to `getTasks`. Due and start dates come out as dates alone: the elements `starttime` and `duetime`
/// are not read, and the records' three "has" flags stay false.
class TDTasksParser final : public TDListParser<GtdTask>
{
public:
    /// Without a lookup, no task has a context. `known`, which must outlive the parser, are the tasks to pass over;
    /// with it, the others get their marks.
    explicit TDTasksParser(ContextLookup contextByTitle = {}, const KnownTasks *known = nullptr)
        : m_contextByTitle(std::move(contextByTitle)), m_known(known)
    { }

    bool feed(std::string_view bytes) noexcept override;
    bool finish() noexcept override;

    /// The ids of the tasks that were passed over. They are handed over, so ask once.
    [[nodiscard]] std::vector<std::int64_t> takeUnchanged() { return std::move(m_unchanged); }

protected:
    [[nodiscard]] std::size_t recordCount() const override { return m_results.size() + m_unchanged.size(); }

private:
    enum class Sifted { Part, NeedsMore };

    [[nodiscard]] Sifted sift();
    [[nodiscard]] Sifted siftRecord();
    void readRecord(std::string_view record, SourceMark mark);
    void read(std::size_t size);
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;
    [[nodiscard]] std::int64_t contextOf(std::string_view title);

    ContextLookup m_contextByTitle;
    std::map<std::string, std::int64_t, std::less<>> m_contexts; ///< titles that this reply has asked for
    GtdTask m_current;
    bool m_inTask = false;

    const KnownTasks *m_known;
    std::string m_pending; ///< bytes that are neither read nor passed over yet, from `m_next` on
    std::size_t m_next = 0;
    std::vector<std::int64_t> m_unchanged;
};

/// Reads the replies to `getDeleted`: the ids of the tasks, and nothing else of them, as the list only grows over the
/// years. A task without a readable id has the id 0.
class TDDeletedParser final : public TDListParser<std::int64_t>
{
private:
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;

    std::int64_t m_currentId = 0;
    bool m_inTask = false;
};

} // namespace toodledo
