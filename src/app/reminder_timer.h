// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/user_interaction.h"
#include "foundation/clock.h"
#include "objectstore/object_context.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace app {

/// Reminds the user of tasks that fall due: every 30 seconds one alert with all of them, again and again, until their
/// reminders are taken away, moved or in the Trash.
///
/// Main thread. A poll lasts until its alert is dismissed, and no other begins in between. A failed fetch finds
/// nothing. While nothing is due and nothing changes, a poll looks at the clock alone.
class ReminderTimer final : public QObject
{
    Q_OBJECT

public:
    /// All of them must outlive the timer. `save` saves `moc` and shows what goes wrong.
    ReminderTimer(objectstore::ObjectContext &moc, const foundation::Clock &clock, UserInteraction &user,
        std::function<void()> save);

    void startTimer();
    void stopTimer();
    [[nodiscard]] QTimer &timer() { return m_timer; }

    /// One poll.
    void remindUser();

private:
    [[nodiscard]] foundation::Instant nextReminder() const;
    void removeReminders(const std::vector<objectstore::ObjectID> &tasks, foundation::Instant now);

    objectstore::ObjectContext &m_moc;
    const foundation::Clock &m_clock;
    UserInteraction &m_user;
    std::function<void()> m_save;
    QTimer m_timer;
    bool m_isReminding = false;
    std::optional<foundation::Instant> m_next; ///< before which nobody is reminded; unknown after a change
    objectstore::Subscription m_changes;
};

} // namespace app
