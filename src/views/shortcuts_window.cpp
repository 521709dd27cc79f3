// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/shortcuts_window.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace views {

namespace {

QLabel *keyLabel(const QString &keys)
{
    auto *label = new QLabel(keys);
    label->setObjectName(QStringLiteral("keys"));
    return label;
}

/// A page of rows "name – keys" below a heading.
QLayout *column(const QString &heading, const QList<std::pair<QString, QString>> &rows)
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(7);
    auto *title = new QLabel(heading);
    title->setObjectName(QStringLiteral("sectionTitle"));
    grid->addWidget(title, 0, 0, 1, 2);
    for (const auto &[name, keys] : rows) {
        const int row = grid->rowCount();
        grid->addWidget(new QLabel(name), row, 0);
        grid->addWidget(keyLabel(keys), row, 1, Qt::AlignRight);
    }
    return grid;
}

} // namespace

ShortcutsWindow::ShortcutsWindow(const CommandSet &commands, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Keyboard Shortcuts"));
    setAttribute(Qt::WA_DeleteOnClose);
    QMap<CommandMenu, QList<std::pair<QString, QString>>> rows;
    for (const CommandDescription &description : CommandSet::descriptions()) {
        const QAction *action = commands.action(description.command);
        if (!action->shortcut().isEmpty())
            rows[description.menu].append(
                {CommandSet::name(description), action->shortcut().toString(QKeySequence::NativeText)});
    }
    rows[CommandMenu::Edit].append({tr("Complete, in the list"), tr("Space")});
    rows[CommandMenu::Edit].append({tr("Edit in the list"), QStringLiteral("F2")});

    auto *left = new QVBoxLayout;
    auto *right = new QVBoxLayout;
    left->setSpacing(0);
    right->setSpacing(0);
    for (const CommandMenu menu :
        {CommandMenu::File, CommandMenu::Edit, CommandMenu::Lists, CommandMenu::View, CommandMenu::Help}) {
        QVBoxLayout *side = menu == CommandMenu::File || menu == CommandMenu::Edit ? left : right;
        if (!rows[menu].isEmpty()) {
            side->addLayout(column(CommandSet::menuTitle(menu), rows[menu]));
            side->addSpacing(24);
        }
    }
    left->addStretch(1);
    right->addStretch(1);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(28, 24, 28, 16);
    layout->setSpacing(48);
    layout->addLayout(left);
    layout->addLayout(right);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace views
