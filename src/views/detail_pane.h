// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "views/typing_pause.h"

#include <QWidget>
#include <vector>

class QGridLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStackedWidget;
class QToolButton;

namespace views {

class DateField;
class GrowingTextEdit;
class Picker;
class TickBox;
class TokenField;

/// Everything about the selected task, to be read and changed. There is no Save button: what is typed goes into the
/// task in pauses of typing, when the field is left, and before anything that shows another task, synchronises or
/// quits. A change that comes from elsewhere is shown at once, but never over text that is being typed.
class DetailPane final : public QWidget
{
    Q_OBJECT

public:
    /// `delegate` must outlive the pane.
    explicit DetailPane(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

    /// Shows one task, or says how many are selected.
    void setTasks(const std::vector<model::Tasks *> &tasks);
    [[nodiscard]] model::Tasks *task() const { return m_task; }
    /// Puts what is being typed into the task.
    void commitEditing();
    /// Begins to edit the title, all of it selected.
    void editTitle();

private:
    QWidget *makeForm();
    QLayout *makeTitleRow();
    QLayout *makeFields();
    void addField(QGridLayout &grid, const QString &name, QWidget *field);
    void connectFields();
    void setUpPickers();
    void showTask();
    void follow(const objectstore::ObjectsChange &change);
    void change(const QString &undoName, const std::function<void(model::Tasks &)> &edit);
    void storeTokens(const QStringList &titles);
    void setRelated(const QString &undoName, std::string_view relationship, const QVariant &uri);

    app::TMApplicationDelegate &m_delegate;
    model::Tasks *m_task = nullptr;
    TypingPause m_typing;

    QStackedWidget *m_pages = nullptr;
    QLabel *m_emptyText = nullptr;
    TickBox *m_complete = nullptr;
    GrowingTextEdit *m_title = nullptr;
    QToolButton *m_star = nullptr;
    Picker *m_folder = nullptr;
    Picker *m_context = nullptr;
    Picker *m_state = nullptr;
    Picker *m_priority = nullptr;
    DateField *m_startDate = nullptr;
    DateField *m_dueDate = nullptr;
    Picker *m_reminder = nullptr;
    Picker *m_repeat = nullptr;
    QLineEdit *m_length = nullptr;
    TokenField *m_tags = nullptr;
    QPlainTextEdit *m_notes = nullptr;
    QLabel *m_stamp = nullptr;
};

} // namespace views
