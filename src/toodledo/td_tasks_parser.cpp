// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_tasks_parser.h"

#include "toodledo/element_table.h"
#include "toodledo/td_text.h"

#include <algorithm>

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

} // namespace

void TDTasksParser::didStartElement(std::string_view name, const Attributes &attributes)
{
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

} // namespace toodledo
