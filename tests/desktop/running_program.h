// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/task_queries.h"
#include "model/task_store.h"
#include "support/collected_errors.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "support/x_server.h"

#include <QDBusConnectionInterface>
#include <QFile>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>

namespace support {

constexpr int patience = 20'000; ///< milliseconds for another process to do a thing, under a sanitizer, too

/// Quelvin as a process on a desktop that a test owns, with a store and settings of its own.
class RunningProgram : public testing::Test
{
protected:
    RunningProgram() { writeSettings("{\"HasBeenRun\": true}"); }
    ~RunningProgram() override
    {
        for (const auto &program : m_programs) {
            program->terminate();
            if (!program->waitForFinished(patience))
                program->kill();
        }
    }

    void writeSettings(const QByteArray &json)
    {
        QFile file(QString::fromStdString((folder.path() / "settings.json").string()));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(json);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    }

    /// Starts the program over the store in the folder `store`.
    QProcess &start(const QStringList &arguments = {}, const char *store = "store")
    {
        auto program = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), screen.display());
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString::fromStdString(folder.path().string()));
        program->setProcessEnvironment(environment);
        program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program->start(QStringLiteral(QUELVIN_PROGRAM),
            QStringList{QStringLiteral("--store"), QString::fromStdString((folder.path() / store).string()),
                QStringLiteral("--settings"), QString::fromStdString((folder.path() / "settings.json").string())}
                + arguments);
        m_programs.push_back(std::move(program));
        return *m_programs.back();
    }
    int windows(const QString &title) const
    {
        const QString found = screen.xdotool(QStringLiteral("search --onlyvisible --name \"%1\"").arg(title));
        return static_cast<int>(found.split(QLatin1Char('\n'), Qt::SkipEmptyParts).size());
    }
    bool comesUp(const char *title, int count = 1) const
    {
        return QTest::qWaitFor([&] { return windows(QString::fromUtf8(title)) == count; }, patience);
    }
    /// Whether the window with this title takes the keys in the end.
    bool takesKeys(const char *title) const
    {
        return QTest::qWaitFor(
            [&] {
                return screen.xdotool(QStringLiteral("getwindowfocus getwindowname")).contains(QLatin1String(title));
            },
            patience);
    }
    /// Presses keys until they have an effect: a busy machine may bring them before the program listens.
    bool pressUntil(const QString &keys, const std::function<bool()> &hasEffect) const
    {
        constexpr int attempts = 4;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            screen.press(keys);
            if (QTest::qWaitFor(hasEffect, patience / attempts))
                return true;
        }
        return false;
    }
    /// Presses Return in a quick entry until only `left` are open.
    bool acceptQuickEntry(int left = 0) const
    {
        return takesKeys("Quick Entry") && pressUntil(QStringLiteral("Return"), [this, left] {
            return windows(QStringLiteral("Quick Entry")) == left;
        });
    }
    /// The titles of the stored tasks, once there are any.
    QStringList storedTasks()
    {
        QStringList titles;
        CollectedErrors errors;
        const TestClock clock;
        const auto store = model::TaskStore::open(folder.path() / "store", clock, errors);
        if (!store)
            return {QStringLiteral("not opened")};
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                [[maybe_unused]] const auto merged = (*store)->managedObjectContext().mergeExternalChanges();
                return (*store)->managedObjectContext().count(model::everyTask()).value_or(0) > 0;
            },
            patience));
        const auto tasks = (*store)->managedObjectContext().fetch(model::everyTask()).value();
        for (const auto *task : tasks)
            titles.append(QString::fromStdString(std::string(task->text("title"))));
        return titles;
    }
    /// The name under which the program is on the bus, once it is.
    QString busName()
    {
        const QDBusConnection connection = bus.connection();
        QString name;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                const QStringList names = connection.interface()->registeredServiceNames().value();
                name = names.filter(QStringLiteral("org.quelvin.")).value(0);
                return !name.isEmpty();
            },
            patience));
        return name;
    }
    QDBusMessage call(const QString &interface, const QString &method, const QVariantList &arguments)
    {
        const QString name = busName();
        auto message = QDBusMessage::createMethodCall(
            name, QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/')), interface, method);
        message.setArguments(arguments);
        return bus.connection().call(message);
    }

    PrivateBus bus;
    XServer screen;
    TemporaryFolder folder;
    QString busAddress = bus.address();

private:
    std::vector<std::unique_ptr<QProcess>> m_programs;
};

} // namespace support
