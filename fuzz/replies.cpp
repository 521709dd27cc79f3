// SPDX-License-Identifier: GPL-3.0-or-later
// Replies of the to-do service. The first byte chooses the parser, the second how many bytes arrive at a time; the
// rest is the reply. Whatever the bytes are, a parser ends in results or in an error, and how they arrive makes no
// difference.
#include "fuzz/property.h"
#include "toodledo/td_list_parsers.h"
#include "toodledo/td_tasks_parser.h"
#include "toodledo/td_user_info_parser.h"

namespace toodledo {

// Only here are two records ever compared as a whole.

bool operator==(const GtdTask &a, const GtdTask &b)
{
    const auto fields = [](const GtdTask &task) {
        return std::tie(task.taskId, task.title, task.tags, task.folder, task.context, task.goal, task.addedDate,
            task.modifiedDate, task.startDate, task.dueDate, task.completedDate, task.completed, task.star, task.status,
            task.reminder, task.repeat, task.length, task.timer, task.priority, task.parentId, task.children,
            task.note);
    };
    return fields(a) == fields(b);
}

bool operator==(const GtdFolder &a, const GtdFolder &b)
{
    return a.folderId == b.folderId && a.title == b.title && a.isPrivate == b.isPrivate && a.archived == b.archived
        && a.order == b.order;
}

bool operator==(const GtdContext &a, const GtdContext &b)
{
    return a.contextId == b.contextId && a.title == b.title;
}

bool operator==(const GtdNote &a, const GtdNote &b)
{
    return a.uid == b.uid && a.title == b.title && a.text == b.text && a.folder == b.folder
        && a.isPrivate == b.isPrivate && a.dateCreated == b.dateCreated && a.dateModified == b.dateModified;
}

} // namespace toodledo

namespace {

using namespace toodledo;

template <typename Record> bool sameRecord(const Record &a, const Record &b)
{
    return a == b;
}

bool sameRecord(const std::shared_ptr<const AccountInfo> &a, const std::shared_ptr<const AccountInfo> &b)
{
    return *a == *b;
}

/// Expat lets nothing else through; what comes out here is shown, stored and sent back.
bool isCleanText(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r')
            return false;
        const std::size_t following = byte < 0x80 ? 0 : byte < 0xc2 ? 9 : byte < 0xe0 ? 1 : byte < 0xf0 ? 2 : 3;
        if (following > 3 || i + following >= text.size() + (following == 0 ? 1 : 0))
            return false;
        for (std::size_t k = 0; k < following; ++k)
            if ((static_cast<unsigned char>(text[++i]) & 0xc0U) != 0x80)
                return false;
    }
    return true;
}

bool isCleanText(const std::optional<std::string> &text)
{
    return !text || isCleanText(std::string_view(*text));
}

bool isClean(const GtdTask &task)
{
    return isCleanText(task.title) && isCleanText(task.note)
        && (!task.tags || std::all_of(task.tags->begin(), task.tags->end(), [](const std::string &tag) {
               return isCleanText(std::string_view(tag));
           }));
}

bool isClean(const GtdFolder &folder)
{
    return isCleanText(folder.title);
}

bool isClean(const GtdContext &context)
{
    return isCleanText(context.title);
}

bool isClean(const GtdNote &note)
{
    return isCleanText(note.title) && isCleanText(note.text);
}

bool isClean(std::int64_t)
{
    return true;
}

bool isClean(const std::string &text)
{
    return isCleanText(std::string_view(text));
}

bool isClean(const std::shared_ptr<const AccountInfo> &info)
{
    return std::all_of(
        info->begin(), info->end(), [](const auto &entry) { return isCleanText(std::string_view(entry.second)); });
}

template <typename MakeParser> void check(std::string_view reply, std::size_t chunk, MakeParser makeParser)
{
    auto whole = makeParser();
    const bool wellFormed = whole.parse(reply);
    fuzz::require(wellFormed == !whole.error(), "a refused reply has an error, and no other has one");

    auto piecewise = makeParser();
    bool goesOn = true;
    for (std::string_view rest = reply; !rest.empty() && goesOn; rest.remove_prefix(std::min(chunk, rest.size())))
        goesOn = piecewise.feed(rest.substr(0, chunk));
    piecewise.finish();

    fuzz::require(wellFormed == !piecewise.error(), "a reply is as good in pieces as it is whole");
    fuzz::require(whole.root() == piecewise.root(), "the root hangs on no piece", whole.root());
    fuzz::require(whole.errorTexts() == piecewise.errorTexts(), "nor do the texts of errors");
    fuzz::require(wellFormed || whole.errorTexts().empty(), "a broken reply said nothing");

    TDError error;
    const auto results = whole.parseResults(&error);
    const auto others = piecewise.parseResults();
    fuzz::require(results.has_value() == wellFormed && others.has_value() == wellFormed && wellFormed == !error,
        "a broken reply has no results");
    if (!results)
        return;
    fuzz::require(std::equal(results->begin(), results->end(), others->begin(), others->end(),
                      [](const auto &a, const auto &b) { return sameRecord(a, b); }),
        "the records hang on no piece");
    fuzz::require(std::all_of(results->begin(), results->end(), [](const auto &record) { return isClean(record); }),
        "every text is UTF-8 without control characters");
}

std::int64_t contextOf(std::string_view title)
{
    return static_cast<std::int64_t>(title.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::uint8_t parser = input.byte();
    const std::size_t chunk = std::max<std::size_t>(input.byte(), 1);
    const std::string_view reply = input.rest();
    switch (parser % 7) {
    case 0:
        check(reply, chunk, [] { return TDTasksParser(contextOf); });
        break;
    case 1:
        check(reply, chunk, [] { return TDFoldersParser(); });
        break;
    case 2:
        check(reply, chunk, [] { return TDContextsParser(); });
        break;
    case 3:
        check(reply, chunk, [] { return TDNotesParser(); });
        break;
    case 4:
        check(reply, chunk, [] { return TDUserInfoParser(); });
        break;
    case 5:
        check(reply, chunk, [] { return TDSimpleParser("added"); });
        break;
    default:
        check(reply, chunk, [] { return TDDeletedParser(); });
    }
    return 0;
}
