// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>
#include <map>
#include <span>

namespace views {

/// Everything that the user can ask of the main window.
enum class Command {
    NewTask,
    CloneTask,
    QuickTask,
    NewFolder,
    NewContext,
    NewSmartFolder,
    Sync,
    Preferences,
    Quit,
    Undo,
    Redo,
    EditTitle,
    ToggleComplete,
    ToggleStar,
    RemoveTask,
    UndeleteTask,
    ClearStartDate,
    ClearDueDate,
    Find,
    Rename,
    EditSmartFolder,
    DeleteList,
    Archive,
    Unarchive,
    EmptyTrash,
    ManageFolders,
    ManageContexts,
    ManageTags,
    ManageSmartFolders,
    ShowCompleted,
    FilterByLocation,
    TagBrowser,
    ShowDetails,
    ShowMenuBar,
    GoToToday,
    GoToInbox,
    GoToLocation,
    GoToTrash,
    FocusLists,
    FocusTasks,
    Shortcuts,
    About
};

enum class CommandMenu { File, Edit, Lists, View, Help };

/// One command as the menus show it. A line stands above it where `startsGroup`.
struct CommandDescription {
    Command command;
    CommandMenu menu;
    const char *text;
    const char *icon;
    const char *shortcut; ///< empty for none
    bool isCheckable = false;
    bool startsGroup = false;
};

/// The commands of a window as actions: the one definition that menus, buttons, shortcuts and tests use.
class CommandSet final : public QObject
{
    Q_OBJECT

public:
    /// The actions belong to `window`, in which their shortcuts hold.
    explicit CommandSet(QWidget *window);

    [[nodiscard]] QAction *action(Command command) const { return m_actions.at(command); }
    /// The five menus in order, each with its title.
    [[nodiscard]] QList<QMenu *> makeMenus(QWidget *parent) const;

    [[nodiscard]] static QString menuTitle(CommandMenu menu);
    /// What the command is called, whatever its action says at the moment, as of what it would undo.
    [[nodiscard]] static QString name(const CommandDescription &description);
    [[nodiscard]] static std::span<const CommandDescription> descriptions();

private:
    std::map<Command, QAction *> m_actions;
};

} // namespace views
