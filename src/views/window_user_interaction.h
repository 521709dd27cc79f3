// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/user_interaction.h"

#include <QPointer>
#include <QWidget>

namespace views {

/// Speaks to the user by alerts over the main window, or over nothing while there is none. Main thread.
class WindowUserInteraction final : public app::UserInteraction
{
public:
    void setWindow(QWidget *window) { m_window = window; }

    void presentError(const foundation::Error &error) override;
    void displayAlert(const QString &title, const QString &message) override;
    [[nodiscard]] bool ask(const QString &message, const QString &confirm, const QString &cancel) override;
    void displayNotification(const QString &title, const QString &description) override;

private:
    QPointer<QWidget> m_window;
};

} // namespace views
