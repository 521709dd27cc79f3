// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/window_user_interaction.h"

#include "app/error_text.h"
#include "app/text.h"
#include "foundation/log.h"
#include "platform/window_activation.h"
#include "views/icons.h"
#include "views/theme.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QWindow>

namespace views {

namespace {

/// Stays above the dialog of the main window that was in front, which would cover it. That one is not made its parent,
/// as it may be closed and deleted first.
class Alert final : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

protected:
    void showEvent(QShowEvent *event) override
    {
        const QWidget *front = QApplication::activeWindow();
        if (front && parentWidget() && front->parentWidget() == parentWidget())
            windowHandle()->setTransientParent(front->windowHandle());
        QMessageBox::showEvent(event);
    }
};

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
    Alert box(m_window);
    box.setIcon(QMessageBox::Warning);
    box.setText(error.message.empty() ? QCoreApplication::translate("Alerts", "Something went wrong (%1 %2).")
                                            .arg(app::toQString(error.domain))
                                            .arg(error.code)
                                      : app::errorText(error));
    show(box);
}

void WindowUserInteraction::displayAlert(const QString &title, const QString &message)
{
    Alert box(m_window);
    box.setText(title);
    box.setInformativeText(message);
    box.setStyleSheet(
        QStringLiteral("#qt_msgbox_label { font-weight: 600; } #qt_msgbox_informativelabel { min-width: 320px; }"));
    show(box);
}

bool WindowUserInteraction::ask(const QString &message, const QString &confirm, const QString &cancel)
{
    Alert box(m_window);
    box.setIcon(QMessageBox::Question);
    box.setText(message);
    const QPushButton *yes = box.addButton(confirm, QMessageBox::AcceptRole);
    QPushButton *no = box.addButton(cancel, QMessageBox::RejectRole);
    box.setEscapeButton(no);
    show(box);
    return box.clickedButton() == yes;
}

app::ReminderAnswer WindowUserInteraction::remind(const QString &message)
{
    Alert box(m_window);
    box.setWindowModality(Qt::WindowModal); // a task can still be taken down meanwhile
    box.setIconPixmap(iconPixmap(QStringLiteral("bell"), Theme::current().accent, 36, box.devicePixelRatioF()));
    box.setText(message);
    auto answer = app::ReminderAnswer::Seen;
    const auto chosen = [this, &box, &answer](const QString &action) {
        if (action == QStringLiteral("default")) {
            for (QWidget *window : {m_window.data(), static_cast<QWidget *>(&box)}) {
                if (window) {
                    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
                    platform::bringToFront(*window->windowHandle());
                }
            }
            return;
        }
        if (action == QStringLiteral("stop"))
            answer = app::ReminderAnswer::StopReminding;
        box.accept();
    };
    const int notification = m_notifications.show(
        {.title = message.section(QLatin1Char('\n'), 0, 0).trimmed(),
            .body = message.section(QLatin1Char('\n'), 1).trimmed(),
            .actions = {{QStringLiteral("default"), QCoreApplication::translate("Alerts", "Show")},
                {QStringLiteral("seen"), QCoreApplication::translate("Alerts", "OK")},
                {QStringLiteral("stop"), QCoreApplication::translate("Alerts", "No Reminder")}}},
        chosen);
    show(box);
    m_notifications.close(notification); // after which `chosen` is not called any more
    return answer;
}

void WindowUserInteraction::displayNotification(const QString &title, const QString &description)
{
    m_notifications.show({.title = title, .body = description});
}

} // namespace views
