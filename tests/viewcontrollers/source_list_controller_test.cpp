// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/source_list_controller.h"

#include "objectstore/undo_manager.h"
#include "support/test_application.h"

#include <QAbstractItemModelTester>
#include <QTest>

using support::at;
using support::aTask;
using namespace viewcontrollers;

namespace {

class SourceList : public testing::Test
{
protected:
    QModelIndex row(const char *title)
    {
        for (int top = 0; top < list.rowCount(); ++top) {
            const QModelIndex parent = list.index(top, 0);
            if (parent.data().toString() == QLatin1String(title))
                return parent;
            for (int child = 0; child < list.rowCount(parent); ++child) {
                if (const QModelIndex index = list.index(child, 0, parent);
                    index.data().toString() == QString::fromUtf8(title))
                    return index;
            }
        }
        return {};
    }
    /// The number that the row comes to; the first time that one is asked for, it waits for the next turn.
    int badge(const char *title)
    {
        QVariant number = row(title).data(SourceListController::BadgeRole);
        for (; list.isCounting(); number = row(title).data(SourceListController::BadgeRole))
            QCoreApplication::processEvents();
        return number.toInt();
    }

    support::TestApplication application;
    SourceListController list{application.delegate()};
    QAbstractItemModelTester tester{&list, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(SourceList, countsAnewAfterEveryChange)
{
    QString launcher;
    QObject::connect(&application.delegate(), &app::TMApplicationDelegate::dockBadgeChanged,
        [&launcher](const QString &text) { launcher = text; });
    auto &task = application.add(aTask().titled("Milk").due("2026-11-24"));
    application.add(aTask().titled("Later").in("House").due("2026-11-25"));
    EXPECT_EQ(badge("Today"), 1);
    EXPECT_EQ(badge("Inbox"), 1);
    EXPECT_TRUE(QTest::qWaitFor([&launcher] { return launcher == QLatin1String("1/1"); })) << launcher.toStdString();

    task.setDeleteOnSync(true);
    application.moc().processPendingChanges();
    EXPECT_EQ(badge("Today"), 0);
    EXPECT_EQ(badge("Inbox"), 0);
    EXPECT_EQ(badge("Trash"), 1);
    EXPECT_TRUE(QTest::qWaitFor([&launcher] { return launcher.isEmpty(); })) << launcher.toStdString();
    task.setMarkedDeleted(true);
    application.moc().processPendingChanges();
    EXPECT_EQ(badge("Trash"), 0) << "emptied";

    application.clock.set(at("2026-11-25 09:00"));
    application.delegate().newDay();
    EXPECT_EQ(badge("Today"), 1);
}

TEST_F(SourceList, keepsItsNumbersRightWhileTasksAndWhatTheyPointAtChange)
{
    auto &milk = application.add(aTask().titled("Milk").in("House"));
    auto &bread = application.add(aTask().titled("Bread").in("House"));
    auto &house = *milk.folders();
    const auto smartFolder = [this](const char *title, const char *format) {
        auto &made = model::insert<model::SmartFolder>(application.moc());
        made.setTitle(title);
        made.setPredicate(objectstore::Predicate::format(format));
    };
    smartFolder("Indoors", "folders.title == 'House'");
    smartFolder("Food", "ANY tags.title == 'food'");
    list.refreshOutlineView();
    const auto badges = [this] {
        application.moc().processPendingChanges();
        return QStringLiteral("%1 %2 %3").arg(badge("House")).arg(badge("Indoors")).arg(badge("Food")).toStdString();
    };
    EXPECT_EQ(badges(), "2 2 0");
    application.records().addTaskToFolderByObject(application.records().getFolderByTitle("Inbox"), &bread);
    EXPECT_EQ(badges(), "1 1 0");
    milk.addObject("tags", application.addRecord<model::Tags>("food"));
    EXPECT_EQ(badges(), "1 1 1");
    application.moc().undoManager()->undo();
    EXPECT_EQ(badges(), "1 1 0");
    house.setTitle("Home");
    application.moc().processPendingChanges();
    EXPECT_EQ(badge("Indoors"), 0);
    application.moc().undoManager()->undo();
    EXPECT_EQ(badges(), "1 1 0");
    application.moc().remove(milk);
    EXPECT_EQ(badges(), "0 0 0");
}

TEST_F(SourceList, tellsHowMuchWorkASmartFolderIs)
{
    for (int i = 0; i < 4; ++i)
        application.add(aTask().titled("task"));
    auto &made = model::insert<model::SmartFolder>(application.moc());
    made.setTitle("Work");
    list.refreshOutlineView();
    EXPECT_EQ(row("Work").data(Qt::ToolTipRole).toString(), QStringLiteral("Work\n4 tasks, 1.33 day"));
}

TEST_F(SourceList, keepsARowThroughARefreshThatMovesIt)
{
    application.addRecord<model::Folders>("Garden");
    QTRY_VERIFY(row("Garden").isValid());
    const QPersistentModelIndex garden = row("Garden");
    application.addRecord<model::Folders>("Attic");
    QTRY_VERIFY(row("Attic").isValid());
    EXPECT_EQ(garden.data().toString(), QStringLiteral("Garden"));
    EXPECT_EQ(garden.row(), row("Attic").row() + 1);
}

TEST_F(SourceList, takesFoldersThatAreArchivedOrDeletedElsewhere)
{
    auto &folder = application.addRecord<model::Folders>("Garden");
    list.refreshOutlineView();
    EXPECT_EQ(list.kind(list.indexOf(folder)), SourceKind::Folder);
    folder.setArchived(true);
    list.refreshOutlineView();
    EXPECT_EQ(list.kind(list.indexOf(folder)), SourceKind::ArchivedFolder);
    EXPECT_EQ(list.tip(list.indexOf(folder)), TipType::Folder);
    folder.setMarkedForDeletion(true);
    list.refreshOutlineView();
    EXPECT_FALSE(list.indexOf(folder).isValid());
}

TEST_F(SourceList, renamesARecordButNotTheInboxAndNotToNothing)
{
    auto &folder = application.addRecord<model::Folders>("Garden");
    list.refreshOutlineView();
    EXPECT_TRUE(list.setData(list.indexOf(folder), QStringLiteral("  Orchard "), Qt::EditRole));
    EXPECT_EQ(folder.title(), "Orchard");
    EXPECT_FALSE(application.moc().hasChanges()) << "a rename is saved at once";
    EXPECT_FALSE(list.setData(list.indexOf(folder), QStringLiteral("  "), Qt::EditRole));
    EXPECT_FALSE(list.flags(list.indexOf(*application.records().getFolderByTitle("Inbox"))) & Qt::ItemIsEditable);
    EXPECT_FALSE(list.flags(list.indexOf(SourceKind::Today)) & Qt::ItemIsEditable);
}

TEST_F(SourceList, showsInASmartFolderEitherOpenOrCompletedTasks)
{
    application.add(aTask().titled("task one"));
    application.add(aTask().titled("task two").completed("2026-11-23"));
    application.add(aTask().titled("other"));
    auto &smart = application.moc().insert("SmartFolder");
    smart.setValue("title", std::string("Tasks"));
    smart.setValue("predicateData", objectstore::archive(objectstore::Predicate::format("title CONTAINS 'task'")));
    list.refreshOutlineView();
    EXPECT_EQ(badge("Tasks"), 1);
    application.settings.set("SmartFoldersApplyShowCompleted", false);
    list.refreshOutlineView();
    EXPECT_EQ(badge("Tasks"), 2);

    smart.setValue("predicateData", objectstore::Bytes{std::byte{7}});
    list.refreshOutlineView();
    EXPECT_EQ(badge("Tasks"), 3) << "one that cannot be read asks for nothing";
}

TEST_F(SourceList, drawsTheDayOfTheMonthWithoutAZero)
{
    EXPECT_EQ(todayImageName(at("2026-12-05 23:59")), QStringLiteral("today_5"));
    EXPECT_EQ(list.index(0, 0).data(SourceListController::IconRole).toString(), QStringLiteral("today_24"));
}
