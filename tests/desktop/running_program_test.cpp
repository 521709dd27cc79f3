// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktop/running_program.h"

using support::patience;

namespace {

using RunningInstance = support::RunningProgram;

const QString application = QStringLiteral("org.freedesktop.Application");

} // namespace

TEST_F(RunningInstance, takesOverWhatASecondStartWasFor)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    QProcess &second = start({QStringLiteral("--add"), QStringLiteral("Milk & honey")});
    ASSERT_TRUE(second.waitForFinished(patience));
    EXPECT_EQ(second.exitCode(), 0);
    ASSERT_TRUE(comesUp("Quick Entry"));
    EXPECT_TRUE(acceptQuickEntry());
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Milk & honey")});
    EXPECT_TRUE(comesUp("Quick Entry", 0));
    QProcess &third = start();
    ASSERT_TRUE(third.waitForFinished(patience));
    EXPECT_EQ(third.exitCode(), 0);
    EXPECT_EQ(windows(QStringLiteral("Today")), 1) << "no second window";
}

TEST_F(RunningInstance, isOneForEachStore)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    start({}, "other store");
    EXPECT_TRUE(comesUp("Today", 2));
}

TEST_F(RunningInstance, aFirstStartOpensTheQuickEntryToo)
{
    start({QStringLiteral("--add"), QStringLiteral("Bread")});
    ASSERT_TRUE(comesUp("Quick Entry"));
    ASSERT_TRUE(takesKeys("Quick Entry"));
    EXPECT_TRUE(pressUntil(QStringLiteral("Escape"), [this] { return windows(QStringLiteral("Quick Entry")) == 0; }));
}

TEST_F(RunningInstance, answersTheDesktopAndOtherProgramsOverTheBus)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    EXPECT_EQ(call(application, QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    call(application, QStringLiteral("ActivateAction"), {QStringLiteral("quick-task"), QVariantList(), QVariantMap()});
    EXPECT_TRUE(comesUp("Quick Entry"));

    const auto addTask = [this](const char *text) {
        return call(QStringLiteral("org.quelvin.TextService"), QStringLiteral("AddTask"), {QString::fromUtf8(text)})
            .arguments()
            .value(0)
            .toString();
    };
    const QString failure = QStringLiteral("Error: could not add task.");
    EXPECT_EQ(addTask(""), failure);
    EXPECT_EQ(addTask("Pears\nand plums"), failure) << "also where it is no failure";
    EXPECT_TRUE(comesUp("Quick Entry", 2)) << "one for the action, one for the text, none for the lack of one";
    EXPECT_TRUE(acceptQuickEntry(1));
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Pears and plums")});

    // Nothing to synchronise with is set, and a window says so.
    ASSERT_TRUE(comesUp("^Quelvin$", 0));
    call(application, QStringLiteral("ActivateAction"), {QStringLiteral("sync"), QVariantList(), QVariantMap()});
    EXPECT_TRUE(comesUp("^Quelvin$"));
}

TEST_F(RunningInstance, worksAloneWithoutASessionBus)
{
    busAddress = QStringLiteral("unix:path=/nowhere");
    QProcess &program = start({QStringLiteral("--add"), QStringLiteral("Milk")});
    ASSERT_TRUE(comesUp("Quick Entry"));
    EXPECT_TRUE(acceptQuickEntry());
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Milk")});
    program.terminate();
    ASSERT_TRUE(program.waitForFinished(patience));
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
}

TEST_F(RunningInstance, opensTheQuickEntryByItsHotKeyWhateverIsInFront)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    ASSERT_TRUE(
        pressUntil(QStringLiteral("ctrl+super+t"), [this] { return windows(QStringLiteral("Quick Entry")) == 1; }));
    ASSERT_TRUE(takesKeys("Quick Entry"));
    screen.xdotool(QStringLiteral("type Apples"));
    EXPECT_TRUE(acceptQuickEntry());
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Apples")});
}

TEST_F(RunningInstance, keepsWhatWasBeingTypedWhenItEnds)
{
    QProcess &program = start({QStringLiteral("--add"), QStringLiteral("Only offered")});
    ASSERT_TRUE(takesKeys("Quick Entry"));
    const QString first = screen.xdotool(QStringLiteral("getwindowfocus"));
    ASSERT_TRUE(pressUntil(QStringLiteral("ctrl+super+t"), [&] {
        return windows(QStringLiteral("Quick Entry")) == 2 && screen.xdotool(QStringLiteral("getwindowfocus")) != first;
    }));
    screen.xdotool(QStringLiteral("type Plums"));
    QTest::qWait(1500); // nothing outside the program tells that it has read its keys, and it may have to wait its turn
    program.terminate();
    ASSERT_TRUE(program.waitForFinished(patience));
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Plums")});
}
