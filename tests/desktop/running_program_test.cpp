// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktop/running_program.h"

#include <QDBusPendingCallWatcher>
#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

using support::patience;

namespace {

class RunningInstance : public support::RunningProgram
{
protected:
    /// Whether a program on the screen offers something to paste.
    bool somethingIsCopied() const
    {
        xcb_connection_t *connection = xcb_connect(screen.display().toLatin1().constData(), nullptr);
        const std::string_view name = "CLIPBOARD";
        auto *atom = xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr);
        auto *owner = xcb_get_selection_owner_reply(
            connection, xcb_get_selection_owner(connection, atom ? atom->atom : 0), nullptr);
        const bool isCopied = owner && owner->owner != XCB_NONE;
        std::free(owner);
        std::free(atom);
        xcb_disconnect(connection);
        return isCopied;
    }
};

const QString textService = QStringLiteral("org.quelvin.TextService");
const QString application = QStringLiteral("org.freedesktop.Application");

} // namespace

TEST_F(RunningInstance, F18_takesOverWhatASecondStartOnItsStoreWasFor)
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
    start({}, "other store");
    EXPECT_TRUE(comesUp("Today", 2));
}

TEST_F(RunningInstance, answersTheDesktopAndOtherProgramsOverTheBus)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    EXPECT_EQ(call(application, QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    call(application, QStringLiteral("ActivateAction"), {QStringLiteral("quick-task"), QVariantList(), QVariantMap()});
    EXPECT_TRUE(comesUp("Quick Entry"));

    const auto addTask = [this](const char *text) {
        return call(textService, QStringLiteral("AddTask"), {QString::fromUtf8(text)}).arguments().value(0).toString();
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
    screen.press(QStringLiteral("ctrl+a ctrl+c")); // by which it tells that it has read the keys before
    ASSERT_TRUE(QTest::qWaitFor([this] { return somethingIsCopied(); }, patience));
    program.terminate();
    ASSERT_TRUE(program.waitForFinished(patience));
    EXPECT_EQ(storedTasks(), QStringList{QStringLiteral("Plums")});
}

TEST_F(RunningInstance, F52_hostileCallsGetAnErrorAndTheWindowStaysLive)
{
    start();
    ASSERT_TRUE(comesUp("Today"));
    const auto isLive = [this] {
        QElapsedTimer time;
        time.start();
        const bool isAnswered
            = call(application, QStringLiteral("Activate"), {QVariantMap()}).type() == QDBusMessage::ReplyMessage;
        return isAnswered && time.elapsed() < 2000;
    };
    const QVariantList values{true, 7, -1LL, 1e300, QStringLiteral("text"), QByteArray(1000, '\xff'),
        QStringList{QStringLiteral("a")}, QVariantMap{{QStringLiteral("activation-token"), 7}},
        QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(1)))),
        QVariant::fromValue(QDBusObjectPath(QStringLiteral("/a")))};
    int errors = 0;
    for (const auto &[interface, method] :
        {std::pair(application, "Activate"), std::pair(application, "Open"), std::pair(application, "ActivateAction"),
            std::pair(textService, "AddTask"), std::pair(textService, "run"), std::pair(QString(), "deleteLater")}) {
        for (const QVariant &first : values) {
            for (const QVariantList &arguments :
                {QVariantList{}, QVariantList{first}, QVariantList{first, first}, QVariantList{first, first, first}})
                errors += call(interface, QString::fromLatin1(method), arguments).type() == QDBusMessage::ErrorMessage;
        }
    }
    EXPECT_GT(errors, 200) << "all but a few of them are wrong";
    EXPECT_TRUE(isLive());

    const QString huge(1'000'000, QLatin1Char('a'));
    const QVariantMap hugeToken{{QStringLiteral("activation-token"), huge}};
    EXPECT_EQ(call(application, QStringLiteral("ActivateAction"), {huge, QVariantList(), QVariantMap()}).type(),
        QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(application, QStringLiteral("ActivateAction"),
                  {QStringLiteral("quick-task"), QVariantList{huge.left(70'000)}, QVariantMap()})
                  .type(),
        QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(application, QStringLiteral("Activate"), {hugeToken}).type(), QDBusMessage::ReplyMessage);
    call(textService, QStringLiteral("AddTask"), {huge}); // what is too long for a title is cut
    EXPECT_TRUE(isLive());

    // Longer than libdbus keeps unread; the bus allows 64 MiB in a list or a map.
    const QString enormous(100'000'000, QLatin1Char('a'));
    call(textService, QStringLiteral("AddTask"), {enormous});
    EXPECT_TRUE(QTest::qWaitFor(isLive, patience));
    EXPECT_EQ(call(application, QStringLiteral("ActivateAction"),
                  {QStringLiteral("quick-task"), QVariantList{enormous.left(60'000'000)}, QVariantMap()})
                  .type(),
        QDBusMessage::ErrorMessage);
    call(application, QStringLiteral("Activate"),
        {QVariantMap{{QStringLiteral("activation-token"), enormous.left(50'000'000)}}});
    EXPECT_TRUE(QTest::qWaitFor(isLive, patience));
    call(
        textService, QStringLiteral("AddTask"), {QStringLiteral("before\0after")}); // no bus carries more than "before"
    EXPECT_TRUE(isLive());

    const QDBusConnection flood = bus.connection();
    const QString name = busName();
    const QString path = QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
    for (int i = 0; i < 3000; ++i) {
        auto message = QDBusMessage::createMethodCall(name, path, textService, QStringLiteral("AddTask"));
        message << QStringLiteral("Task %1").arg(i);
        flood.send(message);
        message = QDBusMessage::createMethodCall(name, path, application, QStringLiteral("ActivateAction"));
        message << QString::fromLatin1(i % 2 ? "quick-task" : "nonsense") << QVariantList() << QVariantMap();
        flood.send(message);
    }
    EXPECT_TRUE(QTest::qWaitFor(isLive, patience)) << "after the flood as before";
    EXPECT_LE(windows(QStringLiteral("Quick Entry")), 8);
}
