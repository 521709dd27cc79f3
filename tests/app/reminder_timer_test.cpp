// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/reminder_timer.h"

#include "support/test_application.h"

using support::at;
using support::aTask;

namespace {

/// Answers reminders, and may do something while one is on the screen.
class RemindedUser final : public support::TestUser
{
public:
    app::ReminderAnswer remind(const QString &message) override
    {
        messages.push_back(message.toStdString());
        if (meanwhile)
            meanwhile();
        return answer;
    }

    std::vector<std::string> messages;
    app::ReminderAnswer answer = app::ReminderAnswer::Seen;
    std::function<void()> meanwhile;
};

class Reminders : public testing::Test
{
protected:
    std::vector<std::string> pollAt(const char *time)
    {
        application.clock.set(at(time));
        user.messages.clear();
        timer.remindUser();
        return user.messages;
    }

    support::TestApplication application;
    RemindedUser user;
    app::ReminderTimer timer{
        application.moc(), application.clock, user, [this] { application.delegate().saveAction(); }};
    std::vector<std::string> nothing;
};

using Messages = std::vector<std::string>;

} // namespace

TEST_F(Reminders, comeInOneAlertAtTheirMinuteAndAgainAtEveryPollUntilChanged)
{
    auto &task = application.add(aTask().titled("A").due("2026-11-24 14:00").reminding(15));
    EXPECT_EQ(pollAt("2026-11-24 13:44:59"), nothing);
    const Messages alert{"Upcoming event(s): \nA "};
    EXPECT_EQ(pollAt("2026-11-24 13:45"), alert);
    EXPECT_FALSE(application.moc().hasChanges()) << "a poll saves first";
    EXPECT_EQ(pollAt("2026-11-24 13:45:30"), alert);
    EXPECT_EQ(pollAt("2026-12-24 09:00"), alert) << "long after it was due, too";
    application.add(aTask().titled("B").due("2026-11-24 14:00").reminding(1));
    EXPECT_EQ(pollAt("2026-12-24 09:00"), Messages{"Upcoming event(s): \nA \nB "});
    task.setDueDate(at("2027-01-01"));
    EXPECT_EQ(pollAt("2026-12-24 09:00"), Messages{"Upcoming event(s): \nB "});
}

TEST_F(Reminders, areForOpenAndCompletedTasksThatHaveOneAndAreNotInTheTrash)
{
    application.add(aTask().titled("no reminder").due("2026-11-01"));
    application.add(aTask().titled("no date").reminding(15));
    application.add(aTask().titled("deleted").due("2026-11-01").reminding(15).inTheTrash());
    EXPECT_EQ(pollAt("2026-11-24 09:00"), nothing);
    application.add(aTask().titled("done").due("2026-11-01").reminding(15).completed("2026-11-02"));
    EXPECT_EQ(pollAt("2026-11-24 09:00"), Messages{"Upcoming event(s): \ndone "});
}

TEST_F(Reminders, noPollBeginsWhileAnAlertIsUp)
{
    application.add(aTask().titled("A").due("2026-11-01").reminding(15));
    user.meanwhile = [&] { timer.remindUser(); };
    EXPECT_EQ(pollAt("2026-11-24 09:00").size(), 1U);
    EXPECT_EQ(pollAt("2026-11-24 09:01").size(), 1U) << "and the next one comes after it";
}

TEST_F(Reminders, stopForTheTasksThatWereShownAndStillAreThere)
{
    auto &first = application.add(aTask().titled("A").due("2026-11-01").reminding(15));
    application.add(aTask().titled("B").due("2026-11-01").reminding(15));
    user.answer = app::ReminderAnswer::StopReminding;
    user.meanwhile = [&] {
        application.moc().remove(first);
        application.add(aTask().titled("C").due("2026-11-01").reminding(15));
        user.meanwhile = {};
    };
    EXPECT_EQ(pollAt("2026-11-24 09:00"), Messages{"Upcoming event(s): \nA \nB "});
    EXPECT_EQ(pollAt("2026-11-24 09:01"), Messages{"Upcoming event(s): \nC "});
}

TEST_F(Reminders, comeOfWhatAnotherProgramChangedSinceThereWereNone)
{
    EXPECT_EQ(pollAt("2026-11-24 09:00"), nothing);
    const auto other = application.openStore();
    auto &task = model::insert<model::Tasks>(other->managedObjectContext());
    task.setTitle("A");
    task.setDueDate(at("2026-11-01"));
    task.setReminder(15);
    ASSERT_TRUE(other->managedObjectContext().save());
    application.delegate().mergeExternalChanges();
    EXPECT_EQ(pollAt("2026-11-24 09:00:30"), Messages{"Upcoming event(s): \nA "});
}
