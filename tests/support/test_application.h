// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "foundation/settings.h"
#include "model/settings_defaults.h"
#include "support/task_builder.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "support/test_location.h"

#include <QStringList>
#include <stdexcept>

namespace support {

/// Keeps what the user would have been told, and answers as the test says.
class TestUser : public app::UserInteraction
{
public:
    void presentError(const foundation::Error &error) override { errors.push_back(error); }
    void displayAlert(const QString &title, const QString &) override { alerts.append(title); }
    bool ask(const QString &message, const QString &, const QString &) override
    {
        questions.append(message);
        return answer;
    }
    void displayNotification(const QString &title, const QString &) override { notifications.append(title); }

    std::vector<foundation::Error> errors;
    QStringList alerts;
    QStringList questions;
    QStringList notifications;
    bool answer = false;
};

/// The program without its windows, over a store of its own.
class TestApplication
{
public:
    TestApplication() : settings(m_settingsFile, model::settingsDefaults())
    {
        m_delegate = std::make_unique<app::TMApplicationDelegate>(
            app::Environment{.application = *static_cast<app::TMApplication *>(qApp),
                .store = openStore(),
                .settings = settings,
                .clock = clock,
                .user = user,
                .makeLocationManager = location.makeManager()});
        delegate().editTracking().registerForChangeNotifications();
    }
    ~TestApplication() { delegate().application().setIsFilteringByLocation(false); }

    [[nodiscard]] app::TMApplicationDelegate &delegate() { return *m_delegate; }
    [[nodiscard]] objectstore::ObjectContext &moc() { return m_delegate->managedObjectContext(); }
    [[nodiscard]] model::DataUtilities records() { return m_delegate->records(); }

    model::Tasks &add(const TaskBuilder &task)
    {
        model::Tasks &added = task.addTo(records());
        moc().processPendingChanges();
        return added;
    }
    template <class Record> Record &addRecord(std::string title)
    {
        Record &record = model::insert<Record>(moc());
        record.setTitle(std::move(title));
        moc().processPendingChanges();
        return record;
    }

    /// The same store as another program has it open.
    [[nodiscard]] std::unique_ptr<model::TaskStore> openStore()
    {
        auto store = model::TaskStore::open(folder.path(), clock, user);
        if (!store)
            throw std::runtime_error("not opened: " + store.error().message);
        return std::move(*store);
    }

    TemporaryFolder folder;
    TestClock clock;
    TestUser user;
    TestLocation location;

private:
    foundation::MemorySettingsFile m_settingsFile;

public:
    foundation::Settings settings;

private:
    std::unique_ptr<app::TMApplicationDelegate> m_delegate;
};

} // namespace support
