// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/quick_task_controller.h"

#include "app/text.h"
#include "foundation/log.h"
#include "platform/window_activation.h"
#include "viewcontrollers/foreign_text.h"
#include "viewcontrollers/task_choices.h"
#include "viewcontrollers/undo_group.h"
#include "views/date_field.h"
#include "views/picker.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace views {

using app::toQString;
using app::toUtf8;
using viewcontrollers::TaskColumn;

namespace {

constexpr qsizetype mostWindows = 8; // what a person can have open; a program may ask for thousands

struct PlaceDescription {
    TaskColumn column;
    const char *relationship;
    const char *name;
    const char *none;
};

constexpr std::array<PlaceDescription, 4> places{{
    {TaskColumn::Folder, "folders", QT_TRANSLATE_NOOP("views::QuickTaskController", "Folder"),
        QT_TRANSLATE_NOOP("views::QuickTaskController", "No Folder")},
    {TaskColumn::Context, "contexts", QT_TRANSLATE_NOOP("views::QuickTaskController", "Context"),
        QT_TRANSLATE_NOOP("views::QuickTaskController", "None")},
    {TaskColumn::State, "states", QT_TRANSLATE_NOOP("views::QuickTaskController", "State"),
        QT_TRANSLATE_NOOP("views::QuickTaskController", "None")},
    {TaskColumn::Priority, "priorities", QT_TRANSLATE_NOOP("views::QuickTaskController", "Priority"),
        QT_TRANSLATE_NOOP("views::QuickTaskController", "None")},
}};

} // namespace

QuickTaskController::QuickTaskController(app::TMApplicationDelegate &delegate, const QString &title)
    : m_delegate(delegate)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Quick Entry"));
    const auto taken = viewcontrollers::ForeignText::line(title);
    m_title = new QLineEdit(taken.text);
    m_title->setAccessibleName(tr("Title"));
    m_title->setPlaceholderText(tr("What is to be done?"));
    QFont font = m_title->font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    m_title->setFont(font);
    m_title->setMinimumWidth(500);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(14);
    layout->addWidget(m_title);
    m_notice = new QLabel(tr("The text was too long for a title; its beginning was taken."));
    m_notice->setObjectName(QStringLiteral("subline"));
    m_notice->setVisible(taken.isCut);
    connect(m_title, &QLineEdit::inputRejected, m_notice, &QLabel::show); // pasted, and longer than a field takes
    layout->addWidget(m_notice);
    layout->addLayout(makeFields());
    layout->addLayout(makeButtons());
    layout->setSizeConstraint(QLayout::SetFixedSize);

    const model::DataUtilities records = m_delegate.records();
    setPlace(Folder, records.getFolderById(0));
    setPlace(Context, records.getContextById(0));
    setPlace(State, records.getStateById(0));
    setPlace(Priority, records.getPriorityByName("0"));
}

QLayout *QuickTaskController::makeFields()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(2);
    const auto add = [grid](int row, int column, const QString &name, QWidget *field) {
        auto *label = new QLabel(name);
        label->setObjectName(QStringLiteral("fieldName"));
        label->setBuddy(field);
        field->setAccessibleName(name);
        grid->addWidget(label, row, 2 * column);
        grid->addWidget(field, row, 2 * column + 1);
        grid->setColumnStretch(2 * column + 1, 1);
    };
    for (std::size_t place = 0; place < places.size(); ++place) {
        auto *picker = m_pickers[place] = new Picker;
        picker->setChoices([this, place] {
            auto choices = viewcontrollers::choices(m_delegate.records(), places[place].column);
            if (place == Folder)
                choices.insert(choices.begin(), {tr(places[place].none), QString()});
            return choices;
        });
        connect(picker, &Picker::picked, this,
            [this, place](const QVariant &uri) { choose(static_cast<Place>(place), uri.toString()); });
        add(static_cast<int>(place) / 2, static_cast<int>(place) % 2, tr(places[place].name), picker);
    }
    add(2, 0, tr("Due"), m_due = new DateField(m_delegate.clock()));
    connect(m_due, &DateField::dateEdited, this, [this](std::optional<foundation::Instant> date) {
        m_dueDate = date;
        m_due->setDate(date);
    });
    return grid;
}

QLayout *QuickTaskController::makeButtons()
{
    auto *cancel = new QPushButton(tr("Cancel"));
    auto *add = new QPushButton(tr("Add Task"));
    cancel->setAutoDefault(false);
    add->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QuickTaskController::dontSaveAction);
    connect(add, &QPushButton::clicked, this, &QuickTaskController::saveAction);
    auto *row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(cancel);
    row->addWidget(add);
    return row;
}

void QuickTaskController::setPlace(Place place, const objectstore::ManagedObject *record)
{
    choose(place, record ? toQString(m_delegate.managedObjectContext().uri(*record)) : QString());
}

void QuickTaskController::choose(Place place, const QString &uri)
{
    m_chosen[place] = uri;
    QString shown;
    for (const viewcontrollers::Choice &choice : viewcontrollers::choices(m_delegate.records(), places[place].column)) {
        if (choice.value.toString() == uri)
            shown = choice.text;
    }
    m_pickers[place]->showValue(shown, tr(places[place].none));
}

void QuickTaskController::showWindow()
{
    show();
    platform::bringToFront(*windowHandle());
    m_title->setFocus();
}

void QuickTaskController::saveAction()
{
    addTask();
    m_isAnswered = true;
    close();
}

void QuickTaskController::addTask()
{
    m_due->commit();
    objectstore::ObjectContext &moc = m_delegate.managedObjectContext();
    {
        const viewcontrollers::UndoGroup group(moc, tr("Add Task"));
        auto &task = model::insert<model::Tasks>(moc);
        task.setTitle(toUtf8(m_title->text()));
        task.setDueDate(m_dueDate);
        for (std::size_t place = 0; place < places.size(); ++place)
            task.setRelated(places[place].relationship,
                m_chosen[place].isEmpty() ? nullptr : moc.objectWithURI(toUtf8(m_chosen[place])));
    }
    m_delegate.saveAction();
}

void QuickTaskController::dontSaveAction()
{
    m_isAnswered = true;
    close();
}

void QuickTaskController::reject()
{
    m_isAnswered = true;
    QDialog::reject();
}

/// A close by neither the user nor us is the end of the program: what was being typed becomes a task, not nothing.
void QuickTaskController::closeEvent(QCloseEvent *event)
{
    if (!event->spontaneous() && !m_isAnswered && m_title->isModified() && !m_title->text().isEmpty())
        addTask();
    m_isAnswered = true;
    QDialog::closeEvent(event);
}

QuickEntry::QuickEntry(app::TMApplicationDelegate &delegate) : m_delegate(delegate)
{
    connect(&m_delegate, &app::TMApplicationDelegate::quickTaskRequested, this, &QuickEntry::quickTask);
}

bool QuickEntry::quickTask(const QString &title)
{
    m_open.removeAll(nullptr);
    if (m_open.size() >= mostWindows) {
        m_open.last()->showWindow();
        foundation::logLine("No further quick entry is opened before one of the many is answered.");
        return false;
    }
    auto *entry = new QuickTaskController(m_delegate, title);
    m_open.append(entry);
    entry->showWindow();
    return true;
}

QString QuickEntry::addTaskService(const QString &text)
{
    if (!text.isEmpty() && !quickTask(text))
        return tr("Too many quick entries are open.");
    return tr("Error: could not add task.");
}

void QuickEntry::addSelectedText()
{
    const QClipboard *clipboard = QGuiApplication::clipboard();
    quickTask(clipboard->text(clipboard->supportsSelection() ? QClipboard::Selection : QClipboard::Clipboard));
}

} // namespace views
