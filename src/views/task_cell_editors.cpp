// SPDX-License-Identifier: GPL-3.0-or-later
// The editors that the task table opens in its cells.
#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/value_transformers.h"
#include "views/cell_draft.h"
#include "views/cell_painting.h"
#include "views/date_field.h"
#include "views/picker.h"
#include "views/task_cell.h"

#include <QTimer>

namespace views {

using viewcontrollers::TaskColumn;

namespace {

TaskColumn columnOf(const QModelIndex &index)
{
    return static_cast<TaskColumn>(index.column());
}

void takeBackDraft(const QWidget *editor)
{
    if (auto *draft = editor->findChild<CellDraft *>())
        draft->takeBack();
}

} // namespace

TaskCell::TaskCell(viewcontrollers::TasksArrayController &tasks, QObject *parent)
    : QStyledItemDelegate(parent), m_tasks(tasks)
{
    connect(this, &QAbstractItemDelegate::closeEditor, this, [](const QWidget *editor, EndEditHint hint) {
        if (hint == RevertModelCache)
            takeBackDraft(editor);
    });
}

QWidget *TaskCell::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const QString name = m_tasks.headerData(index.column(), Qt::Horizontal, Qt::DisplayRole).toString();
    switch (columnOf(index)) {
    case TaskColumn::Folder:
    case TaskColumn::Context:
    case TaskColumn::State:
    case TaskColumn::Priority: {
        auto *editor = new Picker(parent);
        editor->setObjectName(QStringLiteral("cellPicker"));
        editor->setAccessibleName(name);
        editor->setChoices([this, column = columnOf(index)] { return m_tasks.choices(column); });
        auto *self = const_cast<TaskCell *>(this); // the signals of a delegate are not const
        connect(editor, &Picker::picked, self, [self, cell = QPersistentModelIndex(index)](const QVariant &value) {
            self->m_tasks.setData(cell, value, Qt::EditRole);
        });
        connect(editor, &Picker::closed, self, [self, editor] { Q_EMIT self->closeEditor(editor); });
        QTimer::singleShot(0, editor, &Picker::open);
        return editor;
    }
    case TaskColumn::StartDate:
    case TaskColumn::DueDate: {
        auto *editor = new DateField(m_tasks.clock(), parent);
        editor->setProperty("isFlat", false);
        auto *self = const_cast<TaskCell *>(this);
        connect(editor, &DateField::dateEdited, self, [self, editor] {
            Q_EMIT self->commitData(editor);
            Q_EMIT self->closeEditor(editor);
        });
        return editor;
    }
    default: {
        auto *editor = new QLineEdit(parent);
        editor->setAccessibleName(name);
        if (auto *task = m_tasks.task(index); task && columnOf(index) == TaskColumn::Title)
            new CellDraft(*editor, *task);
        return editor;
    }
    }
}

void TaskCell::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    const auto *task = m_tasks.task(index);
    if (!task)
        return;
    if (auto *picker = qobject_cast<Picker *>(editor)) {
        picker->showValue(index.data().toString());
    } else if (auto *date = qobject_cast<DateField *>(editor)) {
        date->setDate(columnOf(index) == TaskColumn::DueDate ? task->dueDate() : task->startDate());
    } else if (auto *line = qobject_cast<QLineEdit *>(editor); line && !line->isModified()) {
        // refreshed while it is open, an editor keeps what was typed
        const QString text
            = index.data(columnOf(index) == TaskColumn::Length ? Qt::DisplayRole : Qt::EditRole).toString();
        if (line->text() != text) // the same text set again would lose the selection
            line->setText(text);
    }
}

void TaskCell::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    if (auto *date = qobject_cast<DateField *>(editor)) {
        date->commit();
        model->setData(index, date->date() ? QVariant(viewcontrollers::toDateTime(*date->date())) : QVariant());
    } else if (const auto *line = qobject_cast<QLineEdit *>(editor)) {
        if (columnOf(index) == TaskColumn::Title) {
            takeBackDraft(editor);
            model->setData(index, line->text());
        } else if (const auto minutes = viewcontrollers::parseLength(line->text())) {
            model->setData(index, static_cast<qlonglong>(*minutes));
        }
    }
}

void TaskCell::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QRect room = option.rect.adjusted(0, 2, 0, -2);
    if (columnOf(index) == TaskColumn::Title)
        room = placed(option, room, room.adjusted(titleInset() - 8, 0, 0, 0));
    if (qobject_cast<DateField *>(editor))
        room.setWidth(std::max(room.width(), 190));
    if (editor->parentWidget() && room.right() > editor->parentWidget()->width())
        room.moveRight(editor->parentWidget()->width() - 2);
    editor->setGeometry(room);
}

} // namespace views
