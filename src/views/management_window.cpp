// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/management_window.h"

#include "app/text.h"
#include "viewcontrollers/undo_group.h"
#include "views/context_place_view.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>

namespace views {

using objectstore::ManagedObject;

namespace {

struct ManagedKind {
    const char *title;
    const char *entity;
    const char *predicate;
};

/// In the order of `Managed`. The two default records are not offered: the program finds them by their titles.
constexpr std::array<ManagedKind, 4> kinds{{
    {QT_TRANSLATE_NOOP("views::ManagementWindow", "Folders"), "Folders", "markedForDeletion=NO && title != 'Inbox'"},
    {QT_TRANSLATE_NOOP("views::ManagementWindow", "Contexts"), "Contexts", "markedForDeletion=NO && title != 'None'"},
    {QT_TRANSLATE_NOOP("views::ManagementWindow", "Tags"), "Tags", "TRUEPREDICATE"},
    {QT_TRANSLATE_NOOP("views::ManagementWindow", "Smart Folders"), "SmartFolder", "TRUEPREDICATE"},
}};

} // namespace

ManagementWindow::ManagementWindow(
    Managed kind, app::TMApplicationDelegate &delegate, viewcontrollers::MainMenuController &commands, QWidget *parent)
    : QDialog(parent), m_kind(kind), m_delegate(delegate), m_commands(commands)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr(kinds[static_cast<std::size_t>(kind)].title));
    m_records = new QListWidget;
    m_records->setObjectName(QStringLiteral("records"));
    m_records->setAccessibleName(windowTitle());
    m_records->setSelectionMode(QAbstractItemView::SingleSelection);
    auto *add = new QPushButton(tr("Add"));
    auto *remove = new QPushButton(tr("Delete"));
    for (QPushButton *button : {add, remove})
        button->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(remove);
    if (m_kind == Managed::SmartFolders) {
        auto *edit = new QPushButton(tr("Edit…"));
        edit->setAutoDefault(false);
        buttons->addWidget(edit);
        connect(edit, &QPushButton::clicked, this, [this] {
            if (auto *selected = model::as<model::SmartFolder>(record(m_records->currentItem())))
                Q_EMIT editRequested(*selected);
        });
    }
    buttons->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(12);
    layout->addWidget(m_records);
    layout->addLayout(buttons);
    resize(380, 460);
    if (m_kind == Managed::Contexts) {
        m_place = new ContextPlaceView(m_delegate);
        layout->addSpacing(4);
        layout->addWidget(m_place);
        resize(500, 560);
        connect(m_records, &QListWidget::currentItemChanged, m_place,
            [this](const QListWidgetItem *item) { m_place->setContext(model::as<model::Contexts>(record(item))); });
    }
    connect(add, &QPushButton::clicked, this, &ManagementWindow::add);
    connect(remove, &QPushButton::clicked, this, &ManagementWindow::removeSelected);
    connect(m_records, &QListWidget::itemChanged, this, &ManagementWindow::rename);
    reload();
}

void ManagementWindow::reload()
{
    const ManagedKind &kind = kinds[static_cast<std::size_t>(m_kind)];
    const auto found = m_delegate.managedObjectContext().fetch({
        .entity = kind.entity,
        .predicate = objectstore::Predicate::format(kind.predicate),
        .sortDescriptors = {{.key = "title", .ascending = true, .localized = true}},
    });
    if (!found) {
        m_delegate.user().presentError(found.error());
        return;
    }
    const QSignalBlocker blocker(m_records);
    const ManagedObject *current = record(m_records->currentItem());
    m_records->clear();
    for (const ManagedObject *record : *found) {
        auto *item = new QListWidgetItem(app::toQString(record->text("title")), m_records);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setData(Qt::UserRole, app::toQString(m_delegate.managedObjectContext().uri(*record)));
        if (record == current)
            m_records->setCurrentItem(item);
    }
    if (m_place)
        m_place->setContext(model::as<model::Contexts>(record(m_records->currentItem())));
}

ManagedObject *ManagementWindow::record(const QListWidgetItem *item) const
{
    return item ? m_delegate.managedObjectContext().objectWithURI(app::toUtf8(item->data(Qt::UserRole).toString()))
                : nullptr;
}

void ManagementWindow::rename(const QListWidgetItem *item)
{
    ManagedObject *renamed = record(item);
    const QString title = item->text().simplified();
    if (renamed && !title.isEmpty()) {
        const viewcontrollers::UndoGroup group(m_delegate.managedObjectContext(), tr("Rename"));
        renamed->setValue("title", app::toUtf8(title));
    }
    QMetaObject::invokeMethod(this, &ManagementWindow::reload, Qt::QueuedConnection);
}

void ManagementWindow::add()
{
    ManagedObject *added = nullptr;
    switch (m_kind) {
    case Managed::Folders:
        added = &m_commands.newFolder();
        break;
    case Managed::Contexts:
        added = &m_commands.newContext();
        break;
    case Managed::SmartFolders:
        added = &m_commands.newSmartFolder();
        break;
    case Managed::Tags: {
        const viewcontrollers::UndoGroup group(m_delegate.managedObjectContext(), tr("New Tag"));
        added = &m_delegate.managedObjectContext().insert("Tags");
        added->setValue("title", app::toUtf8(tr("new tag")));
        break;
    }
    }
    reload();
    for (int row = 0; row < m_records->count(); ++row) {
        if (record(m_records->item(row)) == added) {
            m_records->setCurrentRow(row);
            m_records->editItem(m_records->item(row));
        }
    }
}

void ManagementWindow::removeSelected()
{
    ManagedObject *removed = record(m_records->currentItem());
    if (!removed)
        return;
    if (m_kind == Managed::Tags) {
        const viewcontrollers::UndoGroup group(m_delegate.managedObjectContext(), tr("Delete Tag"));
        m_delegate.managedObjectContext().remove(*removed);
    } else {
        m_commands.deleteRecord(*removed);
    }
    reload();
}

} // namespace views
