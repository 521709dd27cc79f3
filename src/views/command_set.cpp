// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/command_set.h"

#include "views/icons.h"

#include <QCoreApplication>
#include <array>

namespace views {

namespace {

using enum Command;

constexpr std::array<CommandDescription, 42> commands{{
    {NewTask, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "New Task"), "add", "Ctrl+N"},
    {CloneTask, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "Clone Task"), "", "Ctrl+D"},
    {QuickTask, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "Quick Entry"), "bolt", "Ctrl+Shift+T"},
    {NewFolder, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "New Folder"), "folder", "Ctrl+Shift+N", false, true},
    {NewContext, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "New Context"), "context", "Ctrl+Shift+C"},
    {NewSmartFolder, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "New Smart Folder"), "smartfolder",
        "Ctrl+Shift+F"},
    {Sync, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "Sync with Toodledo"), "sync", "F5", false, true},
    {Preferences, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "Preferences…"), "settings", "Ctrl+,", false, true},
    {Quit, CommandMenu::File, QT_TRANSLATE_NOOP("Commands", "Quit"), "", "Ctrl+Q", false, true},

    {Undo, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Undo"), "undo", "Ctrl+Z"},
    {Redo, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Redo"), "redo", "Ctrl+Shift+Z"},
    {EditTitle, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Edit Title"), "edit", "Ctrl+E", false, true},
    {ToggleComplete, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Complete"), "check", "Ctrl+Return"},
    {ToggleStar, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Star"), "star", "Ctrl+Shift+S"},
    {RemoveTask, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Move to Trash"), "trash", "Del"},
    {UndeleteTask, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Put Back"), "restore", "Ctrl+Backspace"},
    {ClearStartDate, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Clear Start Date"), "", "", false, true},
    {ClearDueDate, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Clear Due Date"), "", ""},
    {Find, CommandMenu::Edit, QT_TRANSLATE_NOOP("Commands", "Find"), "search", "Ctrl+F", false, true},

    {Rename, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Rename"), "edit", ""},
    {EditSmartFolder, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Edit Smart Folder…"), "smartfolder", ""},
    {Archive, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Archive"), "archive", ""},
    {Unarchive, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Unarchive"), "archive", ""},
    {DeleteList, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Delete"), "trash", ""},
    {EmptyTrash, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Empty Trash"), "", "Ctrl+Shift+Backspace", false,
        true},
    {ManageFolders, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Manage Folders"), "", "", false, true},
    {ManageContexts, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Manage Contexts"), "", ""},
    {ManageTags, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Manage Tags"), "", ""},
    {ManageSmartFolders, CommandMenu::Lists, QT_TRANSLATE_NOOP("Commands", "Manage Smart Folders"), "", ""},

    {ShowCompleted, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Completed Tasks"), "", "Ctrl+H", true},
    {FilterByLocation, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Only Tasks of This Location"), "location",
        "Ctrl+L", true},
    {TagBrowser, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Tag Browser"), "tag", "Ctrl+T", true},
    {ShowDetails, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Details"), "detail", "Ctrl+I", true, true},
    {ShowMenuBar, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Menu Bar"), "menu", "Ctrl+M", true},
    {GoToToday, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Today"), "calendar", "Ctrl+1", false, true},
    {GoToInbox, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Inbox"), "inbox", "Ctrl+2"},
    {GoToLocation, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Location"), "location", "Ctrl+3"},
    {GoToTrash, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Trash"), "trash", "Ctrl+4"},
    {FocusLists, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Move to the Lists"), "", "Alt+1", false, true},
    {FocusTasks, CommandMenu::View, QT_TRANSLATE_NOOP("Commands", "Move to the Tasks"), "", "Alt+2"},

    {Shortcuts, CommandMenu::Help, QT_TRANSLATE_NOOP("Commands", "Keyboard Shortcuts"), "keyboard", "Ctrl+?"},
    {About, CommandMenu::Help, QT_TRANSLATE_NOOP("Commands", "About Quelvin"), "", "", false, true},
}};

constexpr std::array<const char *, 5> menuTitles{QT_TRANSLATE_NOOP("Commands", "File"),
    QT_TRANSLATE_NOOP("Commands", "Edit"), QT_TRANSLATE_NOOP("Commands", "Lists"),
    QT_TRANSLATE_NOOP("Commands", "View"), QT_TRANSLATE_NOOP("Commands", "Help")};

QString translated(const char *text)
{
    return QCoreApplication::translate("Commands", text);
}

} // namespace

CommandSet::CommandSet(QWidget *window) : QObject(window)
{
    for (const CommandDescription &description : commands) {
        auto *action = new QAction(name(description), window);
        if (*description.icon)
            action->setIcon(icon(QString::fromLatin1(description.icon)));
        if (*description.shortcut)
            action->setShortcut(QKeySequence(QString::fromLatin1(description.shortcut)));
        action->setCheckable(description.isCheckable);
        window->addAction(action); // the shortcut holds while the menu bar is hidden, too
        m_actions.emplace(description.command, action);
    }
    action(Redo)->setShortcuts({QKeySequence(QStringLiteral("Ctrl+Shift+Z")), QKeySequence(QStringLiteral("Ctrl+Y"))});
    action(Sync)->setShortcuts({QKeySequence(QStringLiteral("F5")), QKeySequence(QStringLiteral("Ctrl+R"))});
}

QList<QMenu *> CommandSet::makeMenus(QWidget *parent) const
{
    QList<QMenu *> menus;
    for (std::size_t place = 0; place < menuTitles.size(); ++place) {
        auto *menu = new QMenu(menuTitle(static_cast<CommandMenu>(place)), parent);
        for (const CommandDescription &description : commands) {
            if (description.menu != static_cast<CommandMenu>(place))
                continue;
            if (description.startsGroup)
                menu->addSeparator();
            menu->addAction(action(description.command));
        }
        menus.append(menu);
    }
    return menus;
}

QString CommandSet::name(const CommandDescription &description)
{
    return translated(description.text);
}

QString CommandSet::menuTitle(CommandMenu menu)
{
    return translated(menuTitles[static_cast<std::size_t>(menu)]);
}

std::span<const CommandDescription> CommandSet::descriptions()
{
    return commands;
}

} // namespace views
