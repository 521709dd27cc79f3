// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/method.h"
#include "service/task_writer.h"
#include "service/text.h"

namespace service {

namespace {

constexpr std::array<std::string_view, 1> onlyId{"id"};
constexpr std::array<std::string_view, 1> onlyTitle{"title"};
constexpr std::array<std::string_view, 2> idAndTitle{"id", "title"};
constexpr std::array<std::string_view, 3> newFolder{"title", "private", "archived"};
constexpr std::array<std::string_view, 4> editedFolder{"id", "title", "private", "archived"};

std::string getFolders(Call &call)
{
    Statement folders = call.connection.prepare(
        "SELECT id, private, archived, position, title FROM folder WHERE user = ? ORDER BY position, id");
    folders.bind(call.session.user);
    std::string xml = "<folders>";
    while (folders.step()) {
        xml += "<folder";
        int column = 0;
        for (const char *name : {"id", "private", "archived", "order"}) {
            xml.append(" ").append(name).append("=\"");
            appendInteger(xml, folders.integer(column++));
            xml += '"';
        }
        xml += '>';
        appendText(xml, folders.text(column));
        xml += "</folder>";
    }
    return xml += "</folders>";
}

std::string addFolder(Call &call)
{
    const std::string_view title = titleOf(call.request);
    call.connection
        .prepare("INSERT INTO folder (user, title, private, archived, position) VALUES (?1, ?2, ?3, ?4,"
                 " (SELECT 1 + coalesce(max(position), 0) FROM folder WHERE user = ?1))")
        .bind(call.session.user)
        .bind(title)
        .bind(call.request.flag("private").value_or(false))
        .bind(call.request.flag("archived").value_or(false))
        .run();
    const std::int64_t id = call.connection.lastId();
    touchAccount(call, "folders_edited");
    return added(id);
}

std::string editFolder(Call &call)
{
    const std::int64_t id = call.request.id();
    Statement old = call.connection.prepare("SELECT title, private, archived FROM folder WHERE id = ? AND user = ?");
    if (!old.bind(id).bind(call.session.user).step())
        throw Refusal("no such folder");
    const std::string title(call.request.find("title") ? titleOf(call.request) : old.text(0));
    call.connection.prepare("UPDATE folder SET title = ?, private = ?, archived = ? WHERE id = ?")
        .bind(title)
        .bind(call.request.flag("private").value_or(old.integer(1) != 0))
        .bind(call.request.flag("archived").value_or(old.integer(2) != 0))
        .bind(id)
        .run();
    touchAccount(call, "folders_edited");
    return success();
}

std::string getContexts(Call &call)
{
    Statement contexts = call.connection.prepare("SELECT id, title FROM context WHERE user = ? ORDER BY id");
    contexts.bind(call.session.user);
    std::string xml = "<contexts>";
    while (contexts.step()) {
        xml += "<context id=\"";
        appendInteger(xml, contexts.integer(0));
        xml += "\">";
        appendText(xml, contexts.text(1));
        xml += "</context>";
    }
    return xml += "</contexts>";
}

std::string addContext(Call &call)
{
    const std::string_view title = titleOf(call.request);
    call.connection.prepare("INSERT INTO context (user, title) VALUES (?, ?)")
        .bind(call.session.user)
        .bind(title)
        .run();
    const std::int64_t id = call.connection.lastId();
    touchAccount(call, "contexts_edited");
    return added(id);
}

std::string editContext(Call &call)
{
    const std::int64_t id = call.request.id();
    const std::string_view title = titleOf(call.request);
    call.connection.prepare("UPDATE context SET title = ? WHERE id = ? AND user = ?")
        .bind(title)
        .bind(id)
        .bind(call.session.user)
        .run();
    if (call.connection.changes() == 0)
        throw Refusal("no such context");
    touchAccount(call, "contexts_edited");
    return success();
}

/// Deletes a folder or a context; its tasks stay without one. That is a change to them which other clients must see.
std::string deleteGroup(Call &call, const std::string &table, const char *edited)
{
    const std::int64_t id = call.request.id();
    call.connection.prepare("DELETE FROM " + table + " WHERE id = ? AND user = ?")
        .bind(id)
        .bind(call.session.user)
        .run();
    if (call.connection.changes() == 0)
        throw Refusal("no such " + table);
    releaseTasks(call, table, id);
    touchAccount(call, edited);
    return success();
}

std::string deleteFolder(Call &call)
{
    const std::string reply = deleteGroup(call, "folder", "folders_edited");
    call.connection.prepare("UPDATE note SET folder = 0 WHERE folder = ? AND user = ?")
        .bind(call.request.id())
        .bind(call.session.user)
        .run();
    return reply;
}

std::string deleteContext(Call &call)
{
    return deleteGroup(call, "context", "contexts_edited");
}

std::string getGoals(Call &)
{
    return "<goals></goals>";
}

constexpr std::array<Method, 9> table{{
    {"getFolders", Access::Read, noParameters, getFolders},
    {"addFolder", Access::Write, newFolder, addFolder},
    {"editFolder", Access::Write, editedFolder, editFolder},
    {"deleteFolder", Access::Write, onlyId, deleteFolder},
    {"getContexts", Access::Read, noParameters, getContexts},
    {"addContext", Access::Write, onlyTitle, addContext},
    {"editContext", Access::Write, idAndTitle, editContext},
    {"deleteContext", Access::Write, onlyId, deleteContext},
    {"getGoals", Access::Read, noParameters, getGoals},
}};

} // namespace

std::span<const Method> folderMethods()
{
    return table;
}

} // namespace service
