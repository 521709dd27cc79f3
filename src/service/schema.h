// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace service {

constexpr int applicationId = 0x51767353; // "QvsS" in the file's header tells what the file is
constexpr int schemaVersion = 1;

/// AUTOINCREMENT: a client remembers ids for years, so none may ever come to name another record. Dates are
/// "YYYY-MM-DD" or empty, times of day minutes or -1, instants seconds since 1970.
constexpr const char *schema = R"(
CREATE TABLE user (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    userid TEXT NOT NULL UNIQUE,
    email TEXT NOT NULL COLLATE NOCASE UNIQUE,
    password_md5 TEXT NOT NULL,
    tasks_edited INTEGER NOT NULL,
    tasks_deleted INTEGER NOT NULL,
    folders_edited INTEGER NOT NULL,
    contexts_edited INTEGER NOT NULL
) STRICT;
CREATE TABLE token (
    key_digest TEXT PRIMARY KEY,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    issued INTEGER NOT NULL
) STRICT, WITHOUT ROWID;
CREATE INDEX token_user ON token (user);
CREATE TABLE folder (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    title TEXT NOT NULL,
    private INTEGER NOT NULL DEFAULT 0,
    archived INTEGER NOT NULL DEFAULT 0,
    position INTEGER NOT NULL
) STRICT;
CREATE INDEX folder_user ON folder (user);
CREATE TABLE context (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    title TEXT NOT NULL
) STRICT;
CREATE INDEX context_user ON context (user);
CREATE TABLE task (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    title TEXT NOT NULL,
    tag TEXT NOT NULL DEFAULT '',
    folder INTEGER NOT NULL DEFAULT 0,
    context INTEGER NOT NULL DEFAULT 0,
    goal INTEGER NOT NULL DEFAULT 0,
    parent INTEGER NOT NULL DEFAULT 0,
    added TEXT NOT NULL,
    modified INTEGER NOT NULL,
    startdate TEXT NOT NULL DEFAULT '',
    starttime INTEGER NOT NULL DEFAULT -1,
    duedate TEXT NOT NULL DEFAULT '',
    duetime INTEGER NOT NULL DEFAULT -1,
    reminder INTEGER NOT NULL DEFAULT 0,
    completed TEXT NOT NULL DEFAULT '',
    repeat INTEGER NOT NULL DEFAULT 0,
    rep_advanced TEXT NOT NULL DEFAULT '',
    status INTEGER NOT NULL DEFAULT 0,
    star INTEGER NOT NULL DEFAULT 0,
    priority INTEGER NOT NULL DEFAULT 0,
    length INTEGER NOT NULL DEFAULT 0,
    timer INTEGER NOT NULL DEFAULT 0,
    note TEXT NOT NULL DEFAULT ''
) STRICT;
CREATE INDEX task_user ON task (user);
CREATE INDEX task_folder ON task (folder) WHERE folder <> 0;
CREATE INDEX task_context ON task (context) WHERE context <> 0;
CREATE INDEX task_parent ON task (parent) WHERE parent <> 0;
CREATE TABLE deleted_task (
    id INTEGER PRIMARY KEY,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    stamp INTEGER NOT NULL
) STRICT;
CREATE INDEX deleted_task_user ON deleted_task (user);
CREATE TABLE note (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    title TEXT NOT NULL,
    text TEXT NOT NULL DEFAULT '',
    folder INTEGER NOT NULL DEFAULT 0,
    private INTEGER NOT NULL DEFAULT 0,
    added INTEGER NOT NULL,
    modified INTEGER NOT NULL
) STRICT;
CREATE INDEX note_user ON note (user);
)";

/// Which task came of an add that its client had marked. By itself, since files from before have no such table.
constexpr const char *markSchema = R"(
CREATE TABLE IF NOT EXISTS marked_add (
    user INTEGER NOT NULL REFERENCES user ON DELETE CASCADE,
    mark TEXT NOT NULL,
    task INTEGER NOT NULL,
    PRIMARY KEY (user, mark)
) STRICT, WITHOUT ROWID;
)";

} // namespace service
