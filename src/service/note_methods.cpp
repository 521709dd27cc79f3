// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/method.h"
#include "service/text.h"

namespace service {

namespace {

constexpr std::array<std::string_view, 1> onlyId{"id"};
constexpr std::array<std::string_view, 5> contents{"id", "title", "text", "folder", "private"};

std::string getNotes(Call &call)
{
    Statement notes = call.connection.prepare(
        "SELECT id, private, folder, added, modified, title, text FROM note WHERE user = ? ORDER BY id");
    notes.bind(call.session.user);
    std::string xml = "<notes>";
    while (notes.step()) {
        xml += "<note";
        int column = 0;
        const auto attribute = [&xml](const char *name, std::string_view text) {
            xml.append(" ").append(name).append("=\"");
            appendAttribute(xml, text);
            xml += '"';
        };
        for (const char *name : {"id", "private", "folder"})
            attribute(name, notes.text(column++));
        for (const char *name : {"added", "modified"})
            attribute(name, stampOf(notes.integer(column++)));
        for (const char *name : {"title", "text"})
            attribute(name, notes.text(column++));
        xml += '>';
        appendText(xml, notes.text(5));
        xml += "</note>";
    }
    return xml += "</notes>";
}

std::string newNote(Call &call)
{
    const std::string_view title = titleOf(call.request);
    call.connection
        .prepare("INSERT INTO note (user, title, text, folder, private, added, modified)"
                 " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?6)")
        .bind(call.session.user)
        .bind(title)
        .bind(call.request.text("text"))
        .bind(ownIdOrNone(call, "folder", call.request.integer("folder").value_or(0)))
        .bind(call.request.flag("private").value_or(false))
        .bind(call.now)
        .run();
    return added(call.connection.lastId());
}

std::string editNote(Call &call)
{
    const std::int64_t id = call.request.id();
    Statement old = call.connection.prepare("SELECT title, text, folder, private FROM note WHERE id = ? AND user = ?");
    if (!old.bind(id).bind(call.session.user).step())
        throw Refusal("no such note");
    const std::string title(call.request.find("title") ? titleOf(call.request) : old.text(0));
    const std::string text(call.request.find("text") ? call.request.text("text") : old.text(1));
    call.connection
        .prepare("UPDATE note SET title = ?1, text = ?2, folder = ?3, private = ?4, modified = max(?5, modified + 1)"
                 " WHERE id = ?6")
        .bind(title)
        .bind(text)
        .bind(ownIdOrNone(call, "folder", call.request.integer("folder").value_or(old.integer(2))))
        .bind(call.request.flag("private").value_or(old.integer(3) != 0))
        .bind(call.now)
        .bind(id)
        .run();
    return success();
}

/// The protocol has no method of its own to edit a note: `addNote` with an id does it.
std::string addNote(Call &call)
{
    return call.request.find("id") ? editNote(call) : newNote(call);
}

std::string deleteNote(Call &call)
{
    const std::int64_t id = call.request.id();
    call.connection.prepare("DELETE FROM note WHERE id = ? AND user = ?").bind(id).bind(call.session.user).run();
    if (call.connection.changes() == 0)
        throw Refusal("no such note");
    return success();
}

constexpr std::array<Method, 3> table{{
    {"getNotes", Access::Read, noParameters, getNotes},
    {"addNote", Access::Write, contents, addNote},
    {"deleteNote", Access::Write, onlyId, deleteNote},
}};

} // namespace

std::span<const Method> noteMethods()
{
    return table;
}

} // namespace service
