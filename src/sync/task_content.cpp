// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_content.h"

#include "toodledo/td_text.h"

#include <string_view>

namespace syncing {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// FNV-1a over the fields of a record, each ended so that no two lists of fields read alike.
class ContentHash
{
public:
    ContentHash &add(std::string_view text)
    {
        for (const char letter : trimmed(text)) {
            if (letter != '\r')
                step(static_cast<unsigned char>(letter));
        }
        step(0xff); // no byte of UTF-8
        return *this;
    }
    ContentHash &add(const std::optional<std::string> &text) { return add(std::string_view(text ? *text : "")); }
    ContentHash &add(std::int64_t number)
    {
        for (int byte = 0; byte < 4; ++byte) // no more of a number travels
            step(static_cast<unsigned char>(number >> (8 * byte)));
        return *this;
    }
    ContentHash &addDay(const std::optional<foundation::Instant> &date)
    {
        return add(date ? std::string_view(toodledo::dateText(*date)) : std::string_view());
    }
    [[nodiscard]] ContentMark mark() const { return static_cast<ContentMark>(m_hash); }

private:
    void step(unsigned char byte) { m_hash = (m_hash ^ byte) * 1099511628211U; }

    std::uint64_t m_hash = 14695981039346656037U;
};

/// The marks of the tags, added up: their order does not count, and an empty name is no tag.
std::int64_t tagsOf(const toodledo::GtdTask &task)
{
    std::uint64_t sum = 0;
    if (!task.tags)
        return 0;
    for (const std::string &tag : *task.tags) {
        // a comma in a name makes two of it on the way
        for (std::string_view rest = tag; !rest.empty();) {
            const std::string_view name = trimmed(rest.substr(0, rest.find(',')));
            rest.remove_prefix(
                std::min(rest.size(), rest.find(',') == std::string_view::npos ? rest.size() : rest.find(',') + 1));
            if (!name.empty())
                sum += static_cast<std::uint64_t>(ContentHash().add(name).mark());
        }
    }
    return static_cast<std::int64_t>(sum ^ (sum >> 32U));
}

std::uint64_t markOf(Place place, std::int64_t id)
{
    return static_cast<std::uint64_t>(ContentHash().add(place == Place::Folder ? 'f' : 'c').add(id).mark());
}

} // namespace

ContentMark leaving(Place place, std::int64_t id)
{
    return static_cast<ContentMark>(markOf(place, 0) - markOf(place, id));
}

ContentMark contentOf(const toodledo::GtdTask &task)
{
    // The places are added up, so that a mark can follow a task that is moved without knowing its other content.
    const ContentMark others = ContentHash()
                                   .add(task.title)
                                   .add(tagsOf(task))
                                   .add(task.parentId)
                                   .add(task.priority)
                                   .add(task.status)
                                   .add(task.star ? 1 : 0)
                                   .add(task.completed ? 1 : 0)
                                   .addDay(task.startDate)
                                   .addDay(task.dueDate)
                                   .add(task.length)
                                   .add(task.note)
                                   .mark();
    return static_cast<ContentMark>(
        static_cast<std::uint64_t>(others) + markOf(Place::Folder, task.folder) + markOf(Place::Context, task.context));
}

ContentMark contentOf(const toodledo::GtdFolder &folder)
{
    return ContentHash().add(folder.title).add(folder.isPrivate ? 1 : 0).add(folder.archived ? 1 : 0).mark();
}

ContentMark contentOf(const toodledo::GtdContext &context)
{
    return ContentHash().add(context.title).mark();
}

} // namespace syncing
