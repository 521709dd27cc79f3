// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

namespace views {

/// The preferences on where the user is: whether the program may know it, and from what.
class LocationPane final : public QWidget
{
    Q_OBJECT

public:
    /// `delegate` must outlive the pane.
    explicit LocationPane(app::TMApplicationDelegate &delegate, QWidget *parent = nullptr);

private:
    void addSource(QFormLayout &form);
    void addBaudRate(QFormLayout &form);
    void chooseFile();
    void takeSource();
    void showFields();
    void showStatus();

    app::TMApplicationDelegate &m_delegate;
    QComboBox *m_source = nullptr;
    QLineEdit *m_file = nullptr;
    QPushButton *m_choose = nullptr;
    QComboBox *m_baudRate = nullptr;
    QLabel *m_status = nullptr;
};

} // namespace views
