// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/detail_pane.h"

#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/task_choices.h"
#include "viewcontrollers/undo_group.h"
#include "viewcontrollers/value_transformers.h"
#include "views/date_field.h"
#include "views/growing_text_edit.h"
#include "views/icons.h"
#include "views/picker.h"
#include "views/theme.h"
#include "views/tick_box.h"
#include "views/token_field.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace views {

using app::toQString;
using app::toUtf8;
using foundation::Instant;
using model::Tasks;
using viewcontrollers::TaskColumn;

namespace {

constexpr int margin = 20;

} // namespace

DetailPane::DetailPane(app::TMApplicationDelegate &delegate, QWidget *parent) : QWidget(parent), m_delegate(delegate)
{
    setObjectName(QStringLiteral("detail"));
    setAttribute(Qt::WA_StyledBackground);
    setMinimumWidth(260);
    m_pages = new QStackedWidget;
    m_emptyText = new QLabel;
    m_emptyText->setObjectName(QStringLiteral("subline"));
    m_emptyText->setAlignment(Qt::AlignCenter);
    m_emptyText->setWordWrap(true);
    m_emptyText->setContentsMargins(margin, margin, margin, margin);
    m_pages->addWidget(m_emptyText);
    m_pages->addWidget(makeForm());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);

    connect(&m_typing, &TypingPause::paused, this, &DetailPane::commitEditing);
    connect(&m_delegate, &app::TMApplicationDelegate::commitEditing, this, &DetailPane::commitEditing);
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, this, &DetailPane::follow);
    setUpPickers();
    connectFields();
    setTasks({});
}

QWidget *DetailPane::makeForm()
{
    auto *content = new QWidget;
    content->setObjectName(QStringLiteral("detailContent"));
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(margin, 18, margin - 2, 14);
    layout->setSpacing(10);
    layout->addLayout(makeTitleRow());
    layout->addLayout(makeFields());
    m_notes = new QPlainTextEdit;
    m_notes->setObjectName(QStringLiteral("notes"));
    m_notes->setAccessibleName(tr("Notes"));
    m_notes->setPlaceholderText(tr("Notes"));
    m_notes->setTabChangesFocus(true);
    m_notes->setMinimumHeight(120);
    layout->addWidget(m_notes, 1);
    m_stamp = new QLabel;
    m_stamp->setObjectName(QStringLiteral("subline"));
    m_stamp->setWordWrap(true);
    layout->addWidget(m_stamp);

    auto *area = new QScrollArea;
    area->setObjectName(QStringLiteral("detailContent"));
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus); // its fields scroll into sight when they take the focus
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(content);
    return area;
}

QLayout *DetailPane::makeTitleRow()
{
    m_complete = new TickBox;
    m_complete->setAccessibleName(tr("Completed"));
    m_title = new GrowingTextEdit;
    m_title->setObjectName(QStringLiteral("titleField"));
    m_title->setAccessibleName(tr("Title"));
    QFont font = m_title->font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    font.setWeight(QFont::Bold);
    m_title->setFont(font);
    m_star = new QToolButton;
    m_star->setCheckable(true);
    m_star->setObjectName(QStringLiteral("starButton"));
    m_star->setAccessibleName(tr("Star"));
    m_star->setToolTip(tr("Star"));
    m_star->setIconSize({20, 20});
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(m_complete, 0, Qt::AlignTop);
    row->addWidget(m_title, 1);
    row->addWidget(m_star, 0, Qt::AlignTop);
    row->setContentsMargins(0, 0, 0, 4);
    return row;
}

void DetailPane::addField(QGridLayout &grid, const QString &name, QWidget *field)
{
    auto *label = new QLabel(name);
    label->setObjectName(QStringLiteral("fieldName"));
    label->setBuddy(field);
    field->setAccessibleName(name);
    if (QWidget *typedInto = field->focusProxy())
        typedInto->setAccessibleName(name);
    const int row = grid.rowCount();
    const bool mayGrow = qobject_cast<TokenField *>(field) != nullptr;
    label->setContentsMargins(0, mayGrow ? 6 : 0, 0, 0);
    grid.addWidget(label, row, 0, Qt::AlignLeft | (mayGrow ? Qt::AlignTop : Qt::AlignVCenter));
    grid.addWidget(field, row, 1);
}

QLayout *DetailPane::makeFields()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(1);
    grid->setColumnStretch(1, 1);
    addField(*grid, tr("Folder"), m_folder = new Picker);
    addField(*grid, tr("Context"), m_context = new Picker);
    addField(*grid, tr("State"), m_state = new Picker);
    addField(*grid, tr("Priority"), m_priority = new Picker);
    addField(*grid, tr("Start"), m_startDate = new DateField(m_delegate.clock()));
    addField(*grid, tr("Due"), m_dueDate = new DateField(m_delegate.clock()));
    addField(*grid, tr("Reminder"), m_reminder = new Picker);
    addField(*grid, tr("Repeat"), m_repeat = new Picker);
    addField(*grid, tr("Length"), m_length = new QLineEdit);
    addField(*grid, tr("Tags"), m_tags = new TokenField);
    m_length->setProperty("isFlat", true);
    m_length->setPlaceholderText(tr("None"));
    return grid;
}

void DetailPane::setUpPickers()
{
    const auto records = [this](TaskColumn column) {
        return [this, column] { return viewcontrollers::choices(m_delegate.records(), column); };
    };
    m_folder->setChoices(records(TaskColumn::Folder));
    m_context->setChoices(records(TaskColumn::Context));
    m_state->setChoices(records(TaskColumn::State));
    m_priority->setChoices(records(TaskColumn::Priority));
    m_reminder->setChoices([] {
        std::vector<viewcontrollers::Choice> choices;
        for (const QString &label : viewcontrollers::reminderLabels())
            choices.push_back({label, label});
        return choices;
    });
    m_repeat->setChoices([] {
        std::vector<viewcontrollers::Choice> choices;
        for (const std::int64_t code : viewcontrollers::repeatCodes())
            choices.push_back({viewcontrollers::repeatLabel(code), static_cast<qlonglong>(code)});
        return choices;
    });
    m_tags->setCompletions([this](const QString &prefix) {
        QStringList titles;
        for (const model::Tags *tag :
            m_delegate.records().getTagsBySubstring(toUtf8(prefix)).value_or(std::vector<model::Tags *>()))
            titles.append(toQString(tag->title()));
        titles.removeAll(QString());
        return titles;
    });
}

void DetailPane::connectFields()
{
    connect(m_title, &QPlainTextEdit::textChanged, &m_typing, &TypingPause::typed);
    connect(m_notes, &QPlainTextEdit::textChanged, &m_typing, &TypingPause::typed);
    connect(m_title, &GrowingTextEdit::returnPressed, this, [this] {
        commitEditing();
        m_notes->setFocus();
    });
    connect(m_complete, &QAbstractButton::clicked, this, [this](bool isComplete) {
        change(isComplete ? tr("Complete") : tr("Reopen"), [this, isComplete](Tasks &task) {
            viewcontrollers::setComplete(task, isComplete, m_delegate.clock().now());
        });
    });
    connect(m_star, &QToolButton::clicked, this, [this](bool isStarred) {
        change(isStarred ? tr("Add Star") : tr("Remove Star"), [isStarred](Tasks &task) { task.setStar(isStarred); });
    });
    connect(m_folder, &Picker::picked, this,
        [this](const QVariant &uri) { setRelated(tr("Move to Folder"), "folders", uri); });
    connect(m_context, &Picker::picked, this,
        [this](const QVariant &uri) { setRelated(tr("Change Context"), "contexts", uri); });
    connect(
        m_state, &Picker::picked, this, [this](const QVariant &uri) { setRelated(tr("Change State"), "states", uri); });
    connect(m_priority, &Picker::picked, this,
        [this](const QVariant &uri) { setRelated(tr("Change Priority"), "priorities", uri); });
    connect(m_startDate, &DateField::dateEdited, this, [this](std::optional<Instant> date) {
        change(tr("Change Start Date"), [date](Tasks &task) { task.setStartDate(date); });
    });
    connect(m_dueDate, &DateField::dateEdited, this, [this](std::optional<Instant> date) {
        change(tr("Change Due Date"), [date](Tasks &task) { task.setDueDate(date); });
    });
    connect(m_reminder, &Picker::picked, this, [this](const QVariant &label) {
        change(tr("Change Reminder"),
            [minutes = viewcontrollers::reminderMinutes(label.toString())](Tasks &task) { task.setReminder(minutes); });
    });
    connect(m_repeat, &Picker::picked, this, [this](const QVariant &code) {
        change(tr("Change Repeat"), [code](Tasks &task) { task.setRepeat(code.toLongLong()); });
    });
    connect(m_length, &QLineEdit::editingFinished, this, &DetailPane::commitEditing);
    connect(m_tags, &TokenField::tokensEdited, this, &DetailPane::storeTokens);
}

void DetailPane::setTasks(const std::vector<Tasks *> &tasks)
{
    Tasks *const task = tasks.size() == 1 ? tasks.front() : nullptr;
    if (task != m_task)
        commitEditing();
    const bool isOther = task != m_task;
    m_task = task;
    m_pages->setCurrentIndex(task ? 1 : 0);
    m_emptyText->setText(tasks.empty() ? tr("Select a task to see its details.")
                                       : tr("%1 tasks selected").arg(QLocale().toString(tasks.size())));
    if (!task || !isOther)
        return;
    for (QPlainTextEdit *text : {static_cast<QPlainTextEdit *>(m_title), m_notes})
        text->document()->setModified(false);
    m_length->setModified(false);
    m_startDate->resetDate(task->startDate());
    m_dueDate->resetDate(task->dueDate());
    m_title->setPlainText({}); // so that the undo of typing does not reach back into another task
    m_notes->setPlainText({});
    showTask();
}

void DetailPane::showTask()
{
    if (!m_task)
        return;
    const auto showText = [](QPlainTextEdit &edit, std::string_view text) {
        const QString wanted = toQString(text);
        if (edit.document()->isModified() || edit.toPlainText() == wanted)
            return; // what is being typed stays
        const QSignalBlocker blocker(edit);
        const int position = edit.textCursor().position();
        edit.setPlainText(wanted);
        QTextCursor cursor = edit.textCursor();
        cursor.setPosition(std::min(position, static_cast<int>(wanted.size())));
        edit.setTextCursor(cursor);
        edit.document()->setModified(false);
    };
    showText(*m_title, m_task->title());
    showText(*m_notes, m_task->notes());
    m_title->fitHeight();
    m_complete->setChecked(m_task->complete());
    m_star->setChecked(m_task->star());
    m_star->setIcon(
        m_task->star() ? icon(QStringLiteral("star-filled"), Theme::current().star) : icon(QStringLiteral("star")));
    const Instant now = m_delegate.clock().now();
    const std::pair<Picker *, TaskColumn> pickers[] = {{m_folder, TaskColumn::Folder}, {m_context, TaskColumn::Context},
        {m_state, TaskColumn::State}, {m_priority, TaskColumn::Priority}};
    for (const auto &[picker, column] : pickers)
        picker->showValue(viewcontrollers::cellText(*m_task, column, now), tr("None"));
    m_startDate->setDate(m_task->startDate());
    m_dueDate->setDate(m_task->dueDate());
    m_reminder->showValue(viewcontrollers::reminderLabel(m_task->reminder()));
    m_repeat->showValue(viewcontrollers::repeatLabel(m_task->repeat()));
    if (!m_length->isModified())
        m_length->setText(viewcontrollers::lengthText(m_task->length()));
    QStringList tags;
    for (const model::ManagedObject *tag : m_task->tags())
        tags.append(toQString(tag->text("title")));
    tags.sort(Qt::CaseInsensitive);
    m_tags->setTokens(tags);
    m_stamp->setText(tr("Added %1").arg(viewcontrollers::nearDate(m_task->creationDate(), now)));
}

void DetailPane::follow(const objectstore::ObjectsChange &change)
{
    if (!m_task)
        return;
    if (m_task->isDeleted()) {
        m_task = nullptr; // nothing is left to put the text into
        setTasks({});
        return;
    }
    const auto concerns
        = [this](const model::ManagedObject *object) { return object == m_task || !model::as<Tasks>(object); };
    if (std::any_of(change.updated.begin(), change.updated.end(), concerns))
        showTask();
}

void DetailPane::change(const QString &undoName, const std::function<void(Tasks &)> &edit)
{
    if (!m_task)
        return;
    const viewcontrollers::UndoGroup group(m_delegate.managedObjectContext(), undoName);
    edit(*m_task);
}

void DetailPane::setRelated(const QString &undoName, std::string_view relationship, const QVariant &uri)
{
    model::ManagedObject *target = m_delegate.managedObjectContext().objectWithURI(toUtf8(uri.toString()));
    if (target)
        change(undoName, [&](Tasks &task) { task.setRelated(relationship, target); });
}

void DetailPane::storeTokens(const QStringList &titles)
{
    change(tr("Change Tags"),
        [&](Tasks &task) { task.setTags(viewcontrollers::tagsWithTitles(m_delegate.records(), titles)); });
}

void DetailPane::commitEditing()
{
    m_typing.stop();
    if (!m_task)
        return;
    if (m_title->document()->isModified()) {
        m_title->document()->setModified(false);
        change(tr("Edit Title"), [this](Tasks &task) { task.setTitle(toUtf8(m_title->toPlainText())); });
    }
    if (m_notes->document()->isModified()) {
        m_notes->document()->setModified(false);
        change(tr("Edit Notes"), [this](Tasks &task) { task.setNotes(toUtf8(m_notes->toPlainText())); });
    }
    m_startDate->commit();
    m_dueDate->commit();
    m_tags->commit();
    if (m_length->isModified()) {
        m_length->setModified(false);
        if (const auto minutes = viewcontrollers::parseLength(m_length->text()))
            change(tr("Change Length"), [minutes](Tasks &task) { task.setLength(*minutes); });
        showTask();
    }
}

void DetailPane::editTitle()
{
    m_title->setFocus();
    m_title->selectAll();
}

} // namespace views
