// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/gtd_context.h"
#include "toodledo/gtd_folder.h"
#include "toodledo/gtd_note.h"

namespace toodledo {

namespace {

std::string attribute(std::string_view name, const std::string &value)
{
    return std::string(name).append("='").append(value).append("'");
}

std::string attribute(std::string_view name, const std::optional<std::string> &value)
{
    return attribute(name, value.value_or("(null)"));
}

std::string attribute(std::string_view name, std::int64_t value)
{
    return attribute(name, std::to_string(value));
}

} // namespace

std::string GtdFolder::description() const
{
    return "<GtdFolder " + attribute("folderId", folderId) + ' ' + attribute("title", title) + ' '
        + attribute("private", std::int64_t{isPrivate}) + ' ' + attribute("archived", std::int64_t{archived}) + ' '
        + attribute("order", order) + '>';
}

std::string GtdContext::description() const
{
    return "<GtdContext " + attribute("contextId", contextId) + ' ' + attribute("title", title) + '>';
}

std::string GtdNote::description() const
{
    return "<GtdNote " + attribute("uid", uid) + ' ' + attribute("note", text) + '>';
}

} // namespace toodledo
