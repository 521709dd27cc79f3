// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/task_choices.h"

#include <QToolButton>
#include <functional>

class QFrame;
class QLineEdit;
class QListWidget;

namespace views {

/// A value that is picked from a list: a flat button that opens the choices, with a field to narrow them where they are
/// many. The choices are asked for when the list opens.
class Picker final : public QToolButton
{
    Q_OBJECT

public:
    using Choices = std::function<std::vector<viewcontrollers::Choice>()>;

    explicit Picker(QWidget *parent = nullptr);

    void setChoices(Choices choices) { m_choices = std::move(choices); }
    /// Shows `text`, or `placeholder` in a fainter colour where there is none.
    void showValue(const QString &text, const QString &placeholder = {});
    /// Opens the choices, as a click does.
    void open();

Q_SIGNALS:
    void picked(const QVariant &value);
    void closed(); ///< the choices are gone, whether one was picked or not

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void narrow(const QString &text);
    void pickCurrent();
    void step(int rows);

    Choices m_choices;
    bool m_isPlaceholder = false;
    QFrame *m_popup = nullptr;
    QLineEdit *m_filter = nullptr;
    QListWidget *m_list = nullptr;
};

} // namespace views
