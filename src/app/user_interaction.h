// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <QString>

namespace app {

/// What the user answers to a reminder.
enum class ReminderAnswer { Seen, StopReminding };

/// How the program speaks to its user: alerts, questions and notifications. The windows show them; a test answers them.
/// Main thread only; whatever needs an answer returns when it is there.
class UserInteraction : public foundation::ErrorPresenter
{
public:
    /// Shows an alert with one button.
    virtual void displayAlert(const QString &title, const QString &message) = 0;
    /// Asks a question without a title; true when the user chose `confirm`, false for `cancel`.
    [[nodiscard]] virtual bool ask(const QString &message, const QString &confirm, const QString &cancel) = 0;
    /// Shows an alert about tasks that fall due, and beside it whatever else the desktop has for reminders.
    virtual ReminderAnswer remind(const QString &message)
    {
        displayAlert(message, {});
        return ReminderAnswer::Seen;
    }
    /// Shows a notification on the desktop, where there are any.
    virtual void displayNotification(const QString &title, const QString &description) = 0;
};

} // namespace app
