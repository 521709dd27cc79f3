// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <array>
#include <string_view>

namespace viewcontrollers {

/// The columns of the task table, in the order in which they stand at first.
enum class TaskColumn {
    Title,
    Star,
    Folder,
    Context,
    State,
    Priority,
    StartDate,
    DueDate,
    Length,
    CreationDate,
    ModifiedDate,
    CurrentLocation
};

/// What a column is called, what it is sorted by, and which setting shows it.
struct TaskColumnDescription {
    TaskColumn column;
    const char *title;
    std::string_view sortKey;
    bool isText; ///< sorted as the user's locale does
    std::string_view setting; ///< empty where the location filter decides
    int width;
};

inline constexpr std::array<TaskColumnDescription, 12> taskColumns{{
    {TaskColumn::Title, QT_TRANSLATE_NOOP("TaskTable", "Title"), "title", true, "ShowTitleColumn", 320},
    {TaskColumn::Star, QT_TRANSLATE_NOOP("TaskTable", "Star"), "star", false, "ShowStarColumn", 36},
    {TaskColumn::Folder, QT_TRANSLATE_NOOP("TaskTable", "Folder"), "folders.title", true, "ShowFolderColumn", 116},
    {TaskColumn::Context, QT_TRANSLATE_NOOP("TaskTable", "Context"), "contexts.title", true, "ShowContextColumn", 92},
    {TaskColumn::State, QT_TRANSLATE_NOOP("TaskTable", "State"), "states.state", true, "ShowStateColumn", 100},
    {TaskColumn::Priority, QT_TRANSLATE_NOOP("TaskTable", "Priority"), "priorities.priority", false,
        "ShowPriorityColumn", 90},
    {TaskColumn::StartDate, QT_TRANSLATE_NOOP("TaskTable", "Start"), "startDate", false, "ShowStartDateColumn", 104},
    {TaskColumn::DueDate, QT_TRANSLATE_NOOP("TaskTable", "Due"), "dueDate", false, "ShowDueDateColumn", 104},
    {TaskColumn::Length, QT_TRANSLATE_NOOP("TaskTable", "Length"), "length", false, "ShowLengthColumn", 80},
    {TaskColumn::CreationDate, QT_TRANSLATE_NOOP("TaskTable", "Created"), "creationDate", false,
        "ShowCreationDateColumn", 110},
    {TaskColumn::ModifiedDate, QT_TRANSLATE_NOOP("TaskTable", "Modified"), "modifiedDate", false,
        "ShowModifiedDateColumn", 110},
    {TaskColumn::CurrentLocation, QT_TRANSLATE_NOOP("TaskTable", "Here"), "isCurrentLocation", false, "", 50},
}};

[[nodiscard]] constexpr const TaskColumnDescription &describe(TaskColumn column)
{
    return taskColumns[static_cast<std::size_t>(column)];
}

} // namespace viewcontrollers
