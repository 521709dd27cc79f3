// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/task_changes.h"

namespace cli {

CommandDescription syncCommand(foundation::Result<void> (*run)(Workplace &, const Arguments &))
{
    return {"sync", "Synchronise with the service", {},
        {{"accept-deletions", "", "Carry out deletions even if the service says that most records are gone"}}, run};
}

CommandDescription settingsCommand()
{
    return {"settings", "Show or change settings",
        {{"KEY", "The setting", false}, {"VALUE", "Its new value; - reads a password from standard input", false}}, {},
        showOrSetSettings};
}

std::span<const CommandDescription> commandTable()
{
    static const OptionDescription json{"json", "", "Print JSON"};
    static const OperandDescription task{"TASK", "The URI of a task, or the ID that list shows"};
    static const OperandDescription tasks{"TASK", "The URI of a task, or the ID that list shows", true, true};
    static const std::vector<CommandDescription> table{
        {"add", "Add a task and print its URI", {{"TITLE", "The title"}}, taskOptions(), addTask},
        {"list", "Show tasks",
            {{"WHAT", "today, inbox, trash, all, folder or context; all unless given", false},
                {"NAME", "The folder or context", false}},
            {{"where", "PREDICATE", "Only tasks for which this holds"},
                {"sort", "KEY", "Order by an attribute; with a minus sign before it downwards (--sort=-dueDate)"},
                json},
            listTasks},
        {"show", "Show all of a task", {task}, {json}, showTask},
        {"edit", "Change a task", {task}, editOptions(), editTask},
        {"done", "Complete tasks", {tasks}, {{"undo", "", "Open completed tasks again"}}, completeTasks},
        {"delete", "Move tasks to the Trash", {tasks}, {}, deleteTasks},
        {"undelete", "Take tasks out of the Trash", {tasks}, {}, undeleteTasks},
        {"empty-trash", "Delete for good what is in the Trash", {}, {}, emptyTrash},
        {"folders", "Show folders", {}, {json}, listFolders},
        {"contexts", "Show contexts", {}, {json}, listContexts},
        {"tags", "Show tags", {}, {json}, listTags},
        {"states", "Show states", {}, {json}, listStates},
        {"folder", "Change folders",
            {{"ACTION", "add, rename, delete, archive or unarchive"}, {"NAME", "The folder"},
                {"NEW-NAME", "For rename", false}},
            {}, changeFolder},
        {"context", "Change contexts",
            {{"ACTION", "add, rename or delete"}, {"NAME", "The context"}, {"NEW-NAME", "For rename", false}}, {},
            changeContext},
        syncCommand(startSyncProgram),
        settingsCommand(),
        {"import", "Add everything that a file holds", {{"FILE", "What export wrote; - is standard input"}}, {},
            importFile},
        {"export", "Write everything to standard output", {}, {{"format", "json|csv", "The form; json unless given"}},
            exportStore},
    };
    return table;
}

} // namespace cli
