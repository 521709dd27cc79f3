// SPDX-License-Identifier: GPL-3.0-or-later
// The window left open for days, on a clock that is set: every tick of its timers, reminders, midnights with their
// backups and new lists, and a user who does a little every hour. Nothing may pile up. A case is an hour.
#include "app/reminder_timer.h"
#include "faults/growth.h"
#include "faults/harness.h"
#include "model/smart_folder.h"
#include "support/test_application.h"
#include "views/main_window.h"
#include "views/source_list_view.h"

#include <stdexcept>

using namespace faults;

namespace {

constexpr std::int64_t warmUp = 48; ///< hours after which caches and pools have the size that they keep
constexpr int taskCount = 200;
constexpr int ticks = 1800; ///< of two seconds
constexpr int ticksOfAPoll = 15; ///< for reminders

class Days
{
public:
    Days()
    {
        for (int i = 0; i < taskCount; ++i) {
            auto &task = m_application.add(support::aTask()
                                               .titled("Task " + std::to_string(i))
                                               .in(i % 3 == 0 ? "Garden" : "House")
                                               .due(i % 2 == 0 ? "2026-11-25 10:00" : "2026-12-05"));
            m_tasks.push_back(&task);
        }
        for (int i = 0; i < 10; ++i)
            m_application.addRecord<model::SmartFolder>("Week " + std::to_string(i))
                .setPredicate(objectstore::Predicate::format("dueDate <= RELATIVE(604800.0, 8e8, 0, YES)"));
        delegate().saveAction();
        m_window.showMainApplicationWindow();
        delegate().applicationDidFinishLaunching();
    }
    ~Days() { delegate().applicationWillTerminate(); }

    std::optional<std::string> run(std::int64_t hour)
    {
        edit(hour);
        for (int tick = 0; tick < ticks; ++tick) {
            m_application.clock.advance(2);
            if (!m_application.moc().mergeExternalChanges())
                return "another program's changes could not be read";
            delegate().checkSecondActions();
            if (tick % ticksOfAPoll == 0)
                m_reminders.remindUser();
            QCoreApplication::processEvents();
        }
        if (!m_application.user.errors.empty())
            return m_application.user.errors[0].message;
        m_reminded += m_application.user.alerts.size();
        m_application.user.alerts.clear();
        m_midnights += delegate().today() != m_day ? 1 : 0;
        m_day = delegate().today();
        Growth::leak();
        return m_growth.judge(hour);
    }

    [[nodiscard]] std::string seen() const
    {
        if (m_reminded == 0 || m_midnights == 0)
            throw std::runtime_error("no reminder, or no midnight");
        return std::to_string(m_reminded) + " reminders, " + std::to_string(m_midnights) + " midnights; "
            + m_growth.seen();
    }

private:
    [[nodiscard]] app::TMApplicationDelegate &delegate() { return m_application.delegate(); }

    /// A task is renamed, another ticked off or taken up again, a third reminds within the hour; a list is chosen.
    void edit(std::int64_t hour)
    {
        const auto task = [&](std::int64_t number) -> model::Tasks & {
            return *m_tasks[static_cast<std::size_t>((hour * 7 + number) % taskCount)];
        };
        task(0).setTitle("Task of hour " + std::to_string(hour % 100));
        task(1).setValue("complete", hour % 2 == 0);
        task(2).setDueDate(foundation::Instant{m_application.clock.now().seconds + 1800});
        task(2).setReminder(10);
        if (m_reminding)
            m_reminding->setReminder(0);
        m_reminding = &task(2);
        delegate().saveAction();
        auto &list = *m_window.findChild<views::FoldersOutlineView *>();
        list.selectRow(list.model()->index(static_cast<int>(hour % 3), 0));
    }

    support::TestApplication m_application;
    views::MainWindow m_window{delegate()};
    app::ReminderTimer m_reminders{
        m_application.moc(), m_application.clock, m_application.user, [this] { delegate().saveAction(); }};
    std::vector<model::Tasks *> m_tasks;
    model::Tasks *m_reminding = nullptr;
    foundation::Instant m_day{};
    std::int64_t m_midnights = 0;
    std::int64_t m_reminded = 0;
    Growth m_growth{warmUp};
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int qtArguments = 1;
    const app::TMApplication application(qtArguments, argv);
    return runOnEnd<Days>(argc, argv, "harness_days");
}
