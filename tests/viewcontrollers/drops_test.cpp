// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/undo_manager.h"
#include "support/test_application.h"
#include "viewcontrollers/foreign_text.h"
#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_drag.h"

#include <QMimeData>

using support::at;
using support::aTask;
using namespace viewcontrollers;

namespace {

class Drop : public testing::Test
{
protected:
    bool drop(const std::vector<const objectstore::ManagedObject *> &tasks, const QModelIndex &target, int row = -1)
    {
        const std::unique_ptr<QMimeData> data(makeTaskData(tasks));
        return list.dropMimeData(data.get(), Qt::MoveAction, row, -1, target);
    }

    support::TestApplication application;
    SourceListController list{application.delegate()};
};

} // namespace

TEST_F(Drop, filesStartsOrDeletesTheTasksAsTheRowSays)
{
    auto &first = application.add(aTask().titled("One").in("House").due("2026-12-24"));
    auto &second = application.add(aTask().titled("Two"));
    auto &garden = application.addRecord<model::Folders>("Garden");
    auto &phone = application.addRecord<model::Contexts>("Phone");
    list.refreshOutlineView();
    EXPECT_TRUE(drop({&first, &second}, list.indexOf(garden)));
    EXPECT_EQ(garden.tasks().size(), 2U);
    EXPECT_TRUE(drop({&first}, list.indexOf(phone)));
    EXPECT_EQ(first.contexts(), &phone);
    EXPECT_TRUE(drop({&first}, list.indexOf(SourceKind::Today)));
    EXPECT_EQ(first.startDate(), application.clock.now());
    EXPECT_EQ(first.dueDate(), at("2026-12-24"));
    EXPECT_EQ(first.folders(), &garden);
    EXPECT_TRUE(drop({&first, &second}, list.indexOf(SourceKind::Trash)));
    EXPECT_TRUE(first.deleteOnSync() && second.deleteOnSync());
    EXPECT_TRUE(drop({&first}, list.indexOf(SourceKind::Inbox)));
    EXPECT_EQ(first.folders()->title(), "Inbox");
}

TEST_F(Drop, ofTextMakesANewTaskWhereOneCanBePut)
{
    auto &garden = application.addRecord<model::Folders>("Garden");
    auto &phone = application.addRecord<model::Contexts>("Phone");
    list.refreshOutlineView();
    QMimeData text;
    text.setText(QStringLiteral("Plant bulbs"));
    const auto dropText
        = [&](const QModelIndex &target) { return list.dropMimeData(&text, Qt::CopyAction, -1, -1, target); };
    EXPECT_TRUE(dropText(list.indexOf(garden)) && dropText(list.indexOf(phone))
        && dropText(list.indexOf(SourceKind::Today)) && dropText(list.indexOf(SourceKind::Inbox)));
    EXPECT_FALSE(dropText(list.indexOf(SourceKind::Trash)) || dropText(list.indexOf(SourceKind::Location)));
    QMimeData empty;
    empty.setText(QStringLiteral("  "));
    EXPECT_FALSE(list.dropMimeData(&empty, Qt::CopyAction, -1, -1, list.indexOf(garden)));
    EXPECT_EQ(list.dropAction(text, list.indexOf(garden)), Qt::CopyAction) << "a move would delete it at its source";

    ASSERT_EQ(garden.tasks().size(), 1U);
    ASSERT_EQ(phone.tasks().size(), 1U);
    const auto inbox = application.delegate().records().getFolderByTitle("Inbox")->tasks();
    ASSERT_EQ(inbox.size(), 3U) << "of the context, Today and the Inbox itself";
    EXPECT_EQ(std::count_if(inbox.begin(), inbox.end(),
                  [](const objectstore::ManagedObject *task) {
                      return model::as<model::Tasks>(task)->startDate().has_value();
                  }),
        1);
    application.delegate().managedObjectContext().undoManager()->undo();
    EXPECT_EQ(application.delegate().records().getFolderByTitle("Inbox")->tasks().size(), 2U);
}

TEST_F(Drop, isRefusedElsewhereBetweenRowsAndWithoutTasks)
{
    auto &task = application.add(aTask().in("House"));
    auto &smart = application.moc().insert("SmartFolder");
    list.refreshOutlineView();
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Location)));
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::FoldersGroup)));
    EXPECT_FALSE(drop({&task}, list.indexOf(smart)));
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Trash), 2));
    EXPECT_FALSE(drop({}, list.indexOf(SourceKind::Trash)));
    application.moc().remove(task);
    application.moc().processPendingChanges();
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Trash))) << "the task is gone";
}

TEST_F(Drop, F51_what_other_programs_offer_as_tasks_is_ignored)
{
    auto &here = application.add(aTask().titled("Here"));
    auto &gone = application.add(aTask().titled("Gone"));
    auto &folder = application.addRecord<model::Folders>("Garden");
    application.delegate().saveAction();
    const QByteArray good = QByteArray::fromStdString(application.moc().uri(here));
    const QByteArray deleted = QByteArray::fromStdString(application.moc().uri(gone));
    application.moc().remove(gone);
    application.delegate().saveAction();
    support::TestApplication elsewhere;
    const QByteArray foreign = QByteArray::fromStdString(elsewhere.moc().uri(elsewhere.add(aTask().titled("There"))));
    const QByteArray place = good.left(good.lastIndexOf('/') + 1);
    const QByteArray offers[] = {deleted, foreign, QByteArray::fromStdString(application.moc().uri(folder)), "",
        "\n\n\n", QByteArray("\0\0\0", 3), place, place + "0", place + "-1", place + "99999999999999999999999999",
        place + "1.5", place + "1 OR 1=1", good + '\0', ' ' + good, "x-objectstore://", "x-objectstore:///Tasks/1",
        "file:///etc/passwd", place + QByteArray(1'000'000, '9'), QByteArray(1'000'000, '\xff'),
        QByteArray(40 * 1024 * 1024, '\n') + good};
    list.refreshOutlineView();
    for (const QByteArray &offer : offers) {
        QMimeData data;
        data.setData(taskDataType(), offer);
        EXPECT_TRUE(tasksOf(data, application.moc()).empty()) << offer.left(80).toStdString();
        EXPECT_FALSE(list.dropMimeData(&data, Qt::MoveAction, -1, -1, list.indexOf(SourceKind::Trash)));
    }
    QMimeData mixed;
    mixed.setData(taskDataType(), "nonsense\n" + deleted + '\n' + good + '\n' + good);
    EXPECT_EQ(tasksOf(mixed, application.moc()), std::vector<model::Tasks *>{&here}) << "what is good of it, once";
    EXPECT_FALSE(here.deleteOnSync());
}

TEST(DroppedText, F51_of_any_length_and_with_any_character_becomes_a_readable_line)
{
    QMimeData endless;
    endless.setText(QString(20'000'000, QLatin1Char('a')));
    EXPECT_EQ(droppedTask(endless)->title.size(), longestForeignLine);
    EXPECT_TRUE(droppedTask(endless)->isCut);
    QMimeData tricks;
    tricks.setText(QStringLiteral(" \u202Egnp.exe\u202C\u0007\u001B[2J \u2066x\u2069\u0000 "));
    EXPECT_EQ(droppedTask(tricks)->title, QStringLiteral("gnp.exe[2J x"));
    QMimeData odd;
    for (const QByteArray &bytes :
        {QByteArray("x"), QByteArray("\n"), QByteArray("h\0\n\0\xd8", 5), QByteArray(3, '\n')}) {
        odd.setData(QStringLiteral("text/x-moz-url"), bytes);
        EXPECT_FALSE(droppedTask(odd)) << bytes.toHex().toStdString();
    }
}

TEST_F(Drop, ofTasksIntoAnotherProgramGivesTheirTitles)
{
    const std::unique_ptr<QMimeData> data(makeTaskData(
        {&application.add(aTask().titled("Buy milk")), &application.add(aTask().titled("Prune the currants"))}));
    EXPECT_EQ(data->text(), QStringLiteral("Buy milk\nPrune the currants"));
}

TEST(DroppedText, becomesTheTitleAndALinkTheNotes)
{
    QMimeData text;
    text.setText(QStringLiteral(" Buy\n milk "));
    EXPECT_EQ(droppedTask(text)->title, QStringLiteral("Buy milk"));
    EXPECT_EQ(createMessageLink(QStringLiteral("short")), QStringLiteral("short"));
    EXPECT_FALSE(droppedTask(QMimeData()));

    const QString mail = QStringLiteral("message:<id@host>\nRe: the offer");
    const QByteArray page = "https://example.org/a b\nÉcran";
    const struct {
        const char *type;
        QByteArray bytes;
        QString title;
        QString notes;
    } links[] = {
        {"text/x-moz-url", QByteArray(reinterpret_cast<const char *>(mail.utf16()), mail.size() * 2),
            QStringLiteral("Re: the offer"), QStringLiteral("message://<id@host>")},
        {"_NETSCAPE_URL", page, QStringLiteral("Écran"), QStringLiteral("https://example.org/a b")},
        {"text/uri-list", "file:///home/ana/a%20list.txt\r\nfile:///home/ana/other\r\n", QStringLiteral("a list.txt"),
            QStringLiteral("file:///home/ana/a%20list.txt")},
        {"text/uri-list", "https://example.org/a\r\n", QStringLiteral("https://example.org/a"), QString()},
    };
    for (const auto &link : links) {
        QMimeData data;
        data.setData(QString::fromLatin1(link.type), link.bytes);
        data.setData(QStringLiteral("text/plain"), "the same once more");
        ASSERT_TRUE(offersText(data)) << link.type;
        const auto task = droppedTask(data);
        ASSERT_TRUE(task) << link.type;
        EXPECT_EQ(task->title, link.title);
        EXPECT_EQ(task->notes, link.notes);
    }
}
