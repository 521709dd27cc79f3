// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/user_interaction.h"
#include "platform/desktop_notifications.h"

#include <QPointer>
#include <QWidget>

namespace views {

/// Speaks to the user by alerts over the main window, or over nothing while there is none, and by notifications on the
/// desktop. Main thread.
class WindowUserInteraction final : public app::UserInteraction
{
public:
    /// `notifications` must outlive it.
    explicit WindowUserInteraction(platform::DesktopNotifications &notifications) : m_notifications(notifications) { }

    void setWindow(QWidget *window) { m_window = window; }

    void presentError(const foundation::Error &error) override;
    void displayAlert(const QString &title, const QString &message) override;
    [[nodiscard]] bool ask(const QString &message, const QString &confirm, const QString &cancel) override;
    app::ReminderAnswer remind(const QString &message) override;
    void displayNotification(const QString &title, const QString &description) override;

private:
    platform::DesktopNotifications &m_notifications;
    QPointer<QWidget> m_window;
};

} // namespace views
