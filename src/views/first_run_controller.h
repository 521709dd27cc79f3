// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/connection_test.h"
#include "app/tm_application_delegate.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace views {

/// The first window of a new user: the account to synchronise with, which may as well be left for later.
class FirstRunController final : public QDialog
{
    Q_OBJECT

public:
    /// `delegate` must outlive the window.
    explicit FirstRunController(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

private:
    QLineEdit *field(std::string_view key, const QString &name);
    void connectButtons();
    void showWhatCanBeDone();

    app::TMApplicationDelegate &m_delegate;
    app::ConnectionTest m_connectionTest;
    QLineEdit *m_server;
    QLineEdit *m_email;
    QLineEdit *m_password;
    QPushButton *m_create;
    QPushButton *m_test;
    QPushButton *m_done;
    QLabel *m_status;
};

} // namespace views
