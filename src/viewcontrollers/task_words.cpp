// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_words.h"

#include "foundation/log.h"
#include "model/task_queries.h"
#include "objectstore/object_context.h"
#include "objectstore/text_folding.h"
#include "objectstore/text_order.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace viewcontrollers {

using objectstore::ObjectID;
using objectstore::ValueView;

std::shared_ptr<const TaskWords> TaskWords::read(objectstore::Store &store)
{
    objectstore::ObjectContext moc(store, objectstore::MergePolicy::Rollback);
    const objectstore::TextOrder order;
    auto contents = std::make_shared<TaskWords>();
    std::vector<QCollatorSortKey> titles;
    std::string folded;
    const auto addWords = [&](const ValueView &text) {
        const auto begin = static_cast<std::uint32_t>(contents->m_words.size());
        contents->m_words += objectstore::foldInto(folded, objectstore::toText(text), folding);
        contents->m_words += '\0';
        return begin;
    };
    const auto read = moc.fetchValues(
        model::everyTask(), {"title", "notes"}, [&](const ObjectID &task, std::span<const ValueView> values) {
            const std::uint32_t title = addWords(values[0]);
            const std::uint32_t notes = addWords(values[1]);
            contents->m_entries.push_back({.key = task.key, .rank = 0, .title = title, .notes = notes});
            titles.push_back(order.key(objectstore::toText(values[0])));
        });
    if (!read) {
        foundation::logLine("The tasks could not be read ahead: " + read.error().message);
        return nullptr;
    }
    if (contents->m_words.size() > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    std::vector<std::size_t> places(titles.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::sort(
        places.begin(), places.end(), [&](std::size_t a, std::size_t b) { return titles[a].compare(titles[b]) < 0; });
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (i > 0 && titles[places[i - 1]].compare(titles[places[i]]) != 0)
            ++rank;
        contents->m_entries[places[i]].rank = rank;
    }
    return contents;
}

const TaskWords::Entry *TaskWords::entry(std::int64_t key, std::size_t &from) const
{
    std::size_t end = m_entries.size();
    if (from < end && m_entries[from].key <= key) {
        for (std::size_t step = 1; from + step < m_entries.size(); step *= 2) {
            if (m_entries[from + step].key > key) {
                end = from + step;
                break;
            }
        }
    } else {
        from = 0;
    }
    const auto found = std::lower_bound(m_entries.begin() + static_cast<std::ptrdiff_t>(from),
        m_entries.begin() + static_cast<std::ptrdiff_t>(end), key,
        [](const Entry &entry, std::int64_t wanted) { return entry.key < wanted; });
    from = static_cast<std::size_t>(found - m_entries.begin());
    return found != m_entries.end() && found->key == key ? &*found : nullptr;
}

std::size_t TaskWords::find(std::string_view folded, std::size_t from) const
{
    if (from >= m_entries.size())
        return m_entries.size();
    const std::size_t place = m_words.find(folded, m_entries[from].title);
    if (place == std::string::npos)
        return m_entries.size();
    while (from + 1 < m_entries.size() && m_entries[from + 1].title <= place)
        ++from;
    return from;
}

} // namespace viewcontrollers
