// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

namespace views {

/// Where one context is: whether it belongs to a place, which, and whether its tasks are shown everywhere. What is
/// typed and no position is refused with a sentence and stays in the field; the record keeps what it had.
///
/// Each change is one undoable step. Main thread.
class ContextPlaceView final : public QWidget
{
    Q_OBJECT

public:
    /// `delegate` must outlive the view.
    explicit ContextPlaceView(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

    /// The context to show, or null for none; it is the caller's to say when it goes.
    void setContext(model::Contexts *context);

private:
    void follow(const objectstore::ObjectsChange &change);
    void showContext();
    void showDistance();
    void locationCheckboxChanged(bool isOn);
    void alwaysShowChanged(bool isOn);
    void takeCoordinate();
    void getCurrentLocation();
    void store(const location::Coordinate &place);
    void say(const QString &sentence, bool isProblem);

    app::TMApplicationDelegate &m_delegate;
    model::Contexts *m_context = nullptr;
    QCheckBox *m_useLocation = nullptr;
    QLineEdit *m_coordinate = nullptr;
    QPushButton *m_usePosition = nullptr;
    QCheckBox *m_alwaysShow = nullptr;
    QLabel *m_message = nullptr;
};

} // namespace views
