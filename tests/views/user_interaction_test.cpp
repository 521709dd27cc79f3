// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/notification_server.h"
#include "support/private_bus.h"
#include "views/window_user_interaction.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <gtest/gtest.h>

namespace {

class Reminder : public testing::Test
{
protected:
    /// Reminds, and runs `when` once both the alert and the notification are up.
    app::ReminderAnswer remind(const std::function<void(QMessageBox &)> &when)
    {
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || server.shown.empty())
                return;
            poll.stop();
            QTimer::singleShot(50, box, [box, when] { when(*box); });
        });
        poll.start(10);
        return user.remind(QStringLiteral("Upcoming event(s): \nMilk \n<i>Bread</i> "));
    }

    support::PrivateBus bus;
    support::NotificationServer server{bus.connection()};
    platform::DesktopNotifications notifications{
        bus.connection(), QStringLiteral("Quelvin"), QStringLiteral("quelvin")};
    views::WindowUserInteraction user{notifications};
};

} // namespace

TEST_F(Reminder, isAnAlertWithANotificationBesideItThatGoesWithIt)
{
    QString text;
    EXPECT_EQ(remind([&](QMessageBox &box) {
        text = box.text();
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        box.accept();
    }),
        app::ReminderAnswer::Seen);
    EXPECT_EQ(text, QStringLiteral("Upcoming event(s): \nMilk \n<i>Bread</i> "));
    ASSERT_EQ(server.shown.size(), 1U);
    EXPECT_EQ(server.shown[0].title, QStringLiteral("Upcoming event(s):"));
    EXPECT_EQ(server.shown[0].body, QStringLiteral("Milk \n<i>Bread</i>"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.closed.size() == 1; }));
}

TEST_F(Reminder, isAnsweredByTheNotificationToo)
{
    EXPECT_EQ(remind([&](QMessageBox &) { Q_EMIT server.ActionInvoked(100, QStringLiteral("stop")); }),
        app::ReminderAnswer::StopReminding);
    server.shown.clear();
    EXPECT_EQ(remind([&](QMessageBox &box) {
        Q_EMIT server.ActionInvoked(100, QStringLiteral("default"));
        QTimer::singleShot(100, &box, [&] {
            EXPECT_TRUE(box.isVisible()) << "shown, and still to be answered";
            Q_EMIT server.ActionInvoked(100, QStringLiteral("seen"));
        });
    }),
        app::ReminderAnswer::Seen);
}

TEST_F(Reminder, staysAboveTheDialogThatWasInFrontAndOutlivesIt)
{
    QWidget window;
    auto *preferences = new QDialog(&window);
    window.show();
    preferences->show();
    preferences->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(preferences));
    user.setWindow(&window);
    const auto answer = remind([&](QMessageBox &box) {
        EXPECT_EQ(box.windowHandle()->transientParent(), preferences->windowHandle());
        delete preferences;
        EXPECT_TRUE(box.isVisible());
        box.accept();
    });
    EXPECT_EQ(answer, app::ReminderAnswer::Seen);
}
