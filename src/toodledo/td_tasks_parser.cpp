// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_tasks_parser.h"

#include "toodledo/element_table.h"
#include "toodledo/td_text.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace toodledo {

namespace {

constexpr std::size_t longestTags = std::size_t{1} << 20; ///< in bytes; a list of empty names would take 32 times that

using Setter = void (*)(GtdTask &task, std::string_view text);

template <std::int64_t GtdTask::*Field> void setInteger(GtdTask &task, std::string_view text)
{
    task.*Field = integerOf(text);
}

template <std::optional<std::string> GtdTask::*Field> void setText(GtdTask &task, std::string_view text)
{
    (task.*Field).emplace(text);
}

template <std::optional<foundation::Instant> GtdTask::*Field> void setDate(GtdTask &task, std::string_view text)
{
    task.*Field = dateOf(text);
}

void setModified(GtdTask &task, std::string_view text)
{
    task.modifiedDate = dateTimeOf(text);
}

void setStar(GtdTask &task, std::string_view text)
{
    task.star = integerOf(text) != 0;
}

void setCompleted(GtdTask &task, std::string_view text)
{
    task.completedDate = dateOf(text);
    if (!text.empty())
        task.completed = true;
}

/// The names are kept as they stand between the commas.
void setTags(GtdTask &task, std::string_view text)
{
    task.tags.reset();
    if (text.empty())
        return;
    std::vector<std::string> &tags = task.tags.emplace();
    for (;;) {
        const std::size_t comma = text.find(',');
        tags.emplace_back(text.substr(0, comma));
        if (comma == std::string_view::npos)
            return;
        text.remove_prefix(comma + 1);
    }
}

using TaskTable = ElementTable<Setter, 22>;

constexpr TaskTable taskElements({
    {"id", setInteger<&GtdTask::taskId>}, {"uid", setInteger<&GtdTask::taskId>},
    {"parent", setInteger<&GtdTask::parentId>}, {"children", setInteger<&GtdTask::children>},
    {"title", setText<&GtdTask::title>}, {"tag", setTags}, {"folder", setInteger<&GtdTask::folder>},
    {"goal", setInteger<&GtdTask::goal>}, {"added", setDate<&GtdTask::addedDate>}, {"modified", setModified},
    {"reminder", setInteger<&GtdTask::reminder>}, {"startdate", setDate<&GtdTask::startDate>},
    {"duedate", setDate<&GtdTask::dueDate>}, {"status", setInteger<&GtdTask::status>},
    {"priority", setInteger<&GtdTask::priority>}, {"star", setStar}, {"repeat", setInteger<&GtdTask::repeat>},
    {"note", setText<&GtdTask::note>}, {"completed", setCompleted}, {"length", setInteger<&GtdTask::length>},
    {"timer", setInteger<&GtdTask::timer>}, {"context", nullptr}, // asks the caller's lookup, see didEndElement
});

constexpr std::string_view recordStart = "<task>";
constexpr std::string_view recordEnd = "</task>";
constexpr std::string_view blanks = " \t\r\n";
constexpr std::size_t longestRecord = std::size_t{1} << 20; ///< a longer one is read as it comes

/// The position of `text` in `bytes` at or after `from`.
std::size_t find(std::string_view bytes, std::string_view text, std::size_t from)
{
    const void *found = memmem(bytes.data() + from, bytes.size() - from, text.data(), text.size());
    return found ? static_cast<std::size_t>(static_cast<const char *>(found) - bytes.data()) : std::string_view::npos;
}

} // namespace

bool TDTasksParser::feed(std::string_view bytes) noexcept
{
    if (!m_known)
        return TDParser::feed(bytes);
    try {
        m_pending.erase(0, std::exchange(m_next, 0));
        m_pending.append(bytes);
        while (!error() && sift() == Sifted::Part) { }
    } catch (const std::exception &exception) {
        refuse(exception.what());
    }
    return !error();
}

bool TDTasksParser::finish() noexcept
{
    read(m_pending.size() - m_next);
    return TDParser::finish();
}

/// Deals with the next part of what is pending. Only where the parser is between two records, records are looked for:
/// the same bytes inside a comment, a text or another record are none.
TDTasksParser::Sifted TDTasksParser::sift()
{
    if (isBetweenRecords() && root() == "tasks")
        return siftRecord();
    const std::size_t start = find(m_pending, recordStart, m_next);
    if (start == m_next) {
        read(recordStart.size());
        return Sifted::Part;
    }
    const bool isFound = start != std::string_view::npos;
    const std::size_t size = m_pending.size() - m_next;
    // what is left may be the beginning of a record, or the blanks before one
    const std::string_view before = std::string_view(m_pending).substr(
        m_next, isFound ? start - m_next : size - std::min(size, recordStart.size() - 1));
    const std::size_t last = before.find_last_not_of(blanks);
    read(last == std::string_view::npos ? before.size() : last + 1);
    return isFound ? Sifted::Part : Sifted::NeedsMore;
}

TDTasksParser::Sifted TDTasksParser::siftRecord()
{
    const std::string_view pending = m_pending;
    const std::size_t start = pending.find_first_not_of(blanks, m_next);
    if (start == std::string_view::npos) {
        if (pending.size() - m_next > longestRecord)
            read(pending.size() - m_next);
        return Sifted::NeedsMore;
    }
    const std::string_view rest = pending.substr(start);
    if (!rest.starts_with(recordStart)) {
        if (rest.size() < recordStart.size() && recordStart.starts_with(rest))
            return Sifted::NeedsMore;
        read(start - m_next + 1);
        return Sifted::Part;
    }
    const std::size_t end = find(pending, recordEnd, start);
    if (end == std::string_view::npos) {
        if (rest.size() < longestRecord)
            return Sifted::NeedsMore;
        read(start - m_next + recordStart.size());
        return Sifted::Part;
    }
    const std::string_view record = pending.substr(start, end + recordEnd.size() - start);
    const SourceMark mark = m_known->markOf(record);
    if (const auto id = m_known->find(mark))
        m_unchanged.push_back(*id);
    else
        readRecord(record, mark);
    m_next = end + recordEnd.size();
    return Sifted::Part;
}

/// Reads what looks like one record. It gets its mark only when it was one, and nothing besides.
void TDTasksParser::readRecord(std::string_view record, SourceMark mark)
{
    const std::size_t before = m_results.size();
    TDParser::feed(record);
    if (isBetweenRecords() && m_results.size() == before + 1)
        m_results.back().source = mark;
}

void TDTasksParser::read(std::size_t size)
{
    TDParser::feed(std::string_view(m_pending).substr(m_next, size));
    m_next += size;
}

void TDTasksParser::didStartElement(std::string_view name, const Attributes &attributes)
{
    if (name == "context")
        m_current.listedContext = integerOf(attributes.value("id"));
    if (name != "task")
        return;
    m_current = GtdTask();
    m_inTask = true;
    if (const auto title = attributes.find("title"))
        m_current.title.emplace(*title);
    m_current.context = integerOf(attributes.value("id"));
}

void TDTasksParser::didEndElement(std::string_view name, std::string_view text)
{
    if (!m_inTask)
        return;
    if (const Setter *setter = taskElements.find(name)) {
        if (text.size() > longestTags && *setter == setTags)
            refuse("too many tags");
        else if (*setter)
            (*setter)(m_current, text);
        else
            m_current.context = contextOf(text);
    } else if (name == "task") {
        m_results.push_back(std::move(m_current));
        m_inTask = false;
    }
}

std::int64_t TDTasksParser::contextOf(std::string_view title)
{
    if (title.empty() || !m_contextByTitle)
        return 0;
    const auto known = m_contexts.find(title);
    if (known != m_contexts.end())
        return known->second;
    return m_contexts.emplace(title, m_contextByTitle(title)).first->second;
}

void TDDeletedParser::didStartElement(std::string_view name, const Attributes &)
{
    if (name != "task")
        return;
    m_currentId = 0;
    m_inTask = true;
}

void TDDeletedParser::didEndElement(std::string_view name, std::string_view text)
{
    if (!m_inTask)
        return;
    if (name == "id" || name == "uid") {
        m_currentId = integerOf(text);
    } else if (name == "task") {
        m_results.push_back(m_currentId);
        m_inTask = false;
    }
}

} // namespace toodledo
