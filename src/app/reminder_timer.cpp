// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/reminder_timer.h"

#include "app/text.h"
#include "foundation/log.h"
#include "model/task_queries.h"

#include <QScopedValueRollback>
#include <chrono>
#include <limits>

namespace app {

using namespace std::chrono_literals;

ReminderTimer::ReminderTimer(
    objectstore::ObjectContext &moc, const foundation::Clock &clock, UserInteraction &user, std::function<void()> save)
    : m_moc(moc), m_clock(clock), m_user(user), m_save(std::move(save))
{
    m_timer.setInterval(30s);
    connect(&m_timer, &QTimer::timeout, this, &ReminderTimer::remindUser);
    m_changes = m_moc.onObjectsDidChange([this](const objectstore::ObjectsChange &) { m_next.reset(); });
}

void ReminderTimer::startTimer()
{
    m_timer.start();
}

void ReminderTimer::stopTimer()
{
    m_timer.stop();
}

void ReminderTimer::remindUser()
{
    if (m_isReminding)
        return;
    const QScopedValueRollback reminding(m_isReminding, true);
    m_save();
    const foundation::Instant now = m_clock.now();
    if (m_next && now < *m_next)
        return;
    const auto found = m_moc.fetch(model::tasksToRemindOf(now));
    if (!found || found->empty()) {
        m_next = nextReminder();
        return;
    }
    foundation::logLine("Reminder the following tasks:");
    QString message = tr("Upcoming event(s): ");
    std::vector<objectstore::ObjectID> reminded;
    for (const objectstore::ManagedObject *object : *found) {
        const auto &task = *model::as<model::Tasks>(object);
        foundation::logLine(task.title());
        foundation::logLine(task.startDate() ? foundation::toIso8601(*task.startDate()) : "(null)");
        message += QStringLiteral("\n%1 ").arg(toQString(task.title()));
        reminded.push_back(task.objectID());
    }
    if (m_user.remind(message) == ReminderAnswer::StopReminding)
        removeReminders(reminded, now);
}

/// When the first reminder is due, of which none is now.
foundation::Instant ReminderTimer::nextReminder() const
{
    foundation::Instant next{std::numeric_limits<double>::infinity()};
    const auto read = m_moc.fetchValues(model::tasksToRemindOf(next), {"dueDate", "reminder"},
        [&next](const objectstore::ObjectID &, std::span<const objectstore::ValueView> values) {
            const double due = objectstore::toDouble(values[0]) - 60 * objectstore::toDouble(values[1]);
            next.seconds = std::min(next.seconds, due);
        });
    return read ? next : m_clock.now();
}

/// Looks the tasks up anew, since much may have happened under the alert.
void ReminderTimer::removeReminders(const std::vector<objectstore::ObjectID> &tasks, foundation::Instant now)
{
    for (objectstore::ManagedObject *object :
        m_moc.fetch(model::tasksToRemindOf(now)).value_or(std::vector<objectstore::ManagedObject *>())) {
        if (std::find(tasks.begin(), tasks.end(), object->objectID()) != tasks.end())
            model::as<model::Tasks>(object)->setReminder(0);
    }
}

} // namespace app
