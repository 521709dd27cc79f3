// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <array>

namespace views {

class DateField;
class Picker;

/// The small window that takes down one task without going to the main window. It lives until the task is saved or
/// the window is closed; several can be open. Main thread; a save that fails is shown, and the task is kept.
class QuickTaskController final : public QDialog
{
    Q_OBJECT

public:
    /// Where a task can be put; each is one relationship of it.
    enum Place { Folder, Context, State, Priority };

    /// Opens with the places of a new task. `delegate` must outlive the window.
    explicit QuickTaskController(app::TMApplicationDelegate &delegate, const QString &title = {});

    /// Shows the window in front of all others, ready to type.
    void showWindow();
    [[nodiscard]] QLineEdit &taskTitleField() { return *m_title; }
    /// Chooses a record, or none: the task is then outside of every folder, context, state or priority.
    void setPlace(Place place, const objectstore::ManagedObject *record);

    /// Adds the task as the fields say, and closes.
    void saveAction();
    /// Closes without adding anything.
    void dontSaveAction();
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void addTask();
    QLayout *makeFields();
    QLayout *makeButtons();
    void choose(Place place, const QString &uri);

    app::TMApplicationDelegate &m_delegate;
    QLineEdit *m_title = nullptr;
    QLabel *m_notice = nullptr;
    std::array<Picker *, 4> m_pickers{};
    std::array<QString, 4> m_chosen; ///< URIs, since a record may go while the window is open; empty for none
    DateField *m_due = nullptr;
    std::optional<foundation::Instant> m_dueDate;
    bool m_isAnswered = false;
};

/// Opens quick-entry windows, and is the service that makes a task of a text from another program. Main thread.
class QuickEntry final : public QObject
{
    Q_OBJECT

public:
    explicit QuickEntry(app::TMApplicationDelegate &delegate);

    /// False where so many windows are open that the last of them comes to the front instead.
    bool quickTask(const QString &title = {});
    /// Opens a window with `text`, if there is any. The answer is always the sentence of a failure, which the desktop
    /// is to show only where the service could not be reached.
    QString addTaskService(const QString &text);
    /// The same with the text that is selected anywhere on the desktop, or an empty window.
    void addSelectedText();

private:
    app::TMApplicationDelegate &m_delegate;
    QList<QPointer<QuickTaskController>> m_open;
};

} // namespace views
