// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/window_user_interaction.h"

#include "app/error_text.h"
#include "app/text.h"
#include "foundation/log.h"

#include <QMessageBox>
#include <QPushButton>

namespace views {

namespace {

/// The message box of one alert: the heading in bold, the sentence below it.
int show(QMessageBox &box)
{
    box.setWindowTitle(QStringLiteral("Quelvin"));
    box.setTextFormat(Qt::PlainText); // what a server sends must not become markup
    return box.exec();
}

} // namespace

void WindowUserInteraction::presentError(const foundation::Error &error)
{
    foundation::logLine(error.message + (error.detail.empty() ? "" : " " + error.detail));
    QMessageBox box(m_window);
    box.setIcon(QMessageBox::Warning);
    box.setText(error.message.empty() ? QCoreApplication::translate("Alerts", "Something went wrong (%1 %2).")
                                            .arg(app::toQString(error.domain))
                                            .arg(error.code)
                                      : app::errorText(error));
    show(box);
}

void WindowUserInteraction::displayAlert(const QString &title, const QString &message)
{
    QMessageBox box(m_window);
    box.setText(title);
    box.setInformativeText(message);
    show(box);
}

bool WindowUserInteraction::ask(const QString &message, const QString &confirm, const QString &cancel)
{
    QMessageBox box(m_window);
    box.setIcon(QMessageBox::Question);
    box.setText(message);
    const QPushButton *yes = box.addButton(confirm, QMessageBox::AcceptRole);
    QPushButton *no = box.addButton(cancel, QMessageBox::RejectRole);
    box.setEscapeButton(no);
    show(box);
    return box.clickedButton() == yes;
}

void WindowUserInteraction::displayNotification(const QString &title, const QString &description)
{
    foundation::logLine(app::toUtf8(title + QStringLiteral(": ") + description));
}

} // namespace views
