// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_list_parsers.h"

#include "toodledo/td_text.h"

namespace toodledo {

namespace {

/// Ends the record under construction with the element's text as its title.
template <typename Record>
void append(std::vector<Record> &results, std::optional<Record> &current, std::string_view text)
{
    if (!current)
        return;
    current->title = std::string(text);
    results.push_back(std::move(*current));
    current.reset();
}

} // namespace

void TDFoldersParser::didStartElement(std::string_view name, const Attributes &attributes)
{
    if (name != "folder")
        return;
    m_current.emplace();
    m_current->folderId = integerOf(attributes.value("id"));
    m_current->isPrivate = booleanOf(attributes.value("private"));
    m_current->archived = booleanOf(attributes.value("archived"));
    m_current->order = integerOf(attributes.value("order"));
}

void TDFoldersParser::didEndElement(std::string_view name, std::string_view text)
{
    if (name == "folder")
        append(m_results, m_current, text);
}

void TDContextsParser::didStartElement(std::string_view name, const Attributes &attributes)
{
    if (name != "context")
        return;
    m_current.emplace();
    m_current->contextId = integerOf(attributes.value("id"));
}

void TDContextsParser::didEndElement(std::string_view name, std::string_view text)
{
    if (name == "context")
        append(m_results, m_current, text);
}

void TDNotesParser::didStartElement(std::string_view name, const Attributes &attributes)
{
    if (name != "note")
        return;
    m_current.emplace();
    m_current->uid = integerOf(attributes.value("id"));
    m_current->isPrivate = attributes.value("private") == "1";
    m_current->folder = integerOf(attributes.value("folder"));
    m_current->dateCreated = dateTimeOf(attributes.value("added"));
    m_current->dateModified = dateTimeOf(attributes.value("modified"));
    m_current->text = attributes.find("text");
}

void TDNotesParser::didEndElement(std::string_view name, std::string_view text)
{
    if (name == "note") // its text replaces whatever an attribute `title` said
        append(m_results, m_current, text);
}

} // namespace toodledo
