// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/smart_folder_edit_controller.h"

#include "model/relative_date.h"
#include "objectstore/undo_manager.h"
#include "support/test_application.h"
#include "views/criteria_view.h"
#include "views/main_window.h"
#include "views/source_list_view.h"
#include "views/tasks_table_view.h"

#include <QMenu>
#include <QSpinBox>
#include <QTest>

using objectstore::Predicate;
using support::at;
using support::aTask;
using views::Command;
using views::SmartFolderEditController;

namespace {

class Editor : public testing::Test
{
protected:
    void open(const char *predicate = "title CONTAINS 'task'")
    {
        folder = &model::insert<model::SmartFolder>(application.moc());
        folder->setTitle("Mine");
        folder->setPredicate(Predicate::format(predicate));
        application.delegate().saveAction();
        reopen();
    }
    void reopen()
    {
        editor = new SmartFolderEditController(application.delegate(), catalog, *folder);
        editor->show();
    }
    ~Editor() override { delete editor.data(); }

    template <class Widget> QList<Widget *> all(const char *name)
    {
        return rowsFirst(editor->findChildren<Widget *>(QString::fromLatin1(name)));
    }
    template <class Widget> Widget &nth(const char *name, int place)
    {
        const auto found = all<Widget>(name);
        if (place >= found.size())
            throw std::out_of_range(name);
        return *found.at(place);
    }
    /// What is seen, from top to bottom: a row that was removed may not be deleted yet.
    template <class Widget> QList<Widget *> rowsFirst(QList<Widget *> found)
    {
        editor->findChild<QWidget *>(QStringLiteral("criteriaContent"))->layout()->activate();
        erase_if(found, [](const Widget *widget) { return !widget->isVisible(); });
        std::stable_sort(found.begin(), found.end(), [this](const Widget *a, const Widget *b) {
            return a->mapTo(editor, QPoint()).y() < b->mapTo(editor, QPoint()).y();
        });
        return found;
    }
    void choose(QComboBox &list, const char *text)
    {
        const int place = list.findText(QString::fromUtf8(text));
        ASSERT_GE(place, 0) << text;
        list.setFocus();
        list.setCurrentIndex(place);
        Q_EMIT list.activated(place);
    }
    void click(const char *button, int place)
    {
        QTest::mouseClick(&nth<QToolButton>(button, place), Qt::LeftButton);
        QTest::qWait(300); // the window grows
    }
    QString count() { return editor->findChild<QLabel *>(QStringLiteral("subline"))->text(); }
    bool countBecomes(const char *text)
    {
        return QTest::qWaitFor([&] { return count().startsWith(QString::fromUtf8(text)); });
    }
    void save() { QTest::mouseClick(editor->findChild<QPushButton *>(QStringLiteral("save")), Qt::LeftButton); }

    support::TestApplication application;
    viewcontrollers::TaskCatalog catalog{application.delegate()};
    model::SmartFolder *folder = nullptr;
    QPointer<SmartFolderEditController> editor;
};

} // namespace

TEST_F(Editor, savesNothingWithoutBeingTold)
{
    open();
    nth<QLineEdit>("operand", 0).end(false);
    QTest::keyClicks(&nth<QLineEdit>("operand", 0), QStringLiteral("s"));
    EXPECT_EQ(editor->predicate(), Predicate::format("title CONTAINS 'tasks'"));
    editor->close();
    EXPECT_EQ(folder->predicate(), Predicate::format("title CONTAINS 'task'"));
    EXPECT_FALSE(application.moc().hasChanges());
}

TEST_F(Editor, savesNameAndConditionsAsOneStepThatUndoTakesBack)
{
    open();
    choose(nth<QComboBox>("criterion", 0), "Due date");
    QTest::keyClick(&nth<QSpinBox>("number", 0), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&nth<QSpinBox>("number", 0), QStringLiteral("3"));
    choose(nth<QComboBox>("units", 0), "weeks");
    auto &title = nth<QLineEdit>("smartFolderTitle", 0);
    title.clear();
    save();
    EXPECT_TRUE(editor.isNull() || !editor->isVisible());
    EXPECT_EQ(folder->title(), "");
    const auto saved = folder->predicate();
    ASSERT_TRUE(saved);
    const objectstore::RelativeDate &date = saved->root().right.relative;
    EXPECT_EQ(date, model::relativeDate(3, 1, false, application.clock.now()));
    EXPECT_FALSE(application.moc().hasChanges());
    application.moc().undoManager()->undo();
    EXPECT_EQ(folder->title(), "Mine");
    EXPECT_EQ(folder->predicate(), Predicate::format("title CONTAINS 'task'"));
}

TEST_F(Editor, growsAndShrinksByARowWithItsTopEdgeInPlace)
{
    open();
    editor->move(40, 30);
    const QRect before = editor->geometry();
    click("addButton", 1);
    const QRect grown = editor->geometry();
    EXPECT_EQ(grown.topLeft(), before.topLeft());
    EXPECT_GT(grown.height(), before.height());
    click("addButton", 1);
    EXPECT_EQ(editor->height() - grown.height(), grown.height() - before.height());
    click("removeButton", 0);
    click("removeButton", 0);
    EXPECT_EQ(editor->geometry(), before);
    EXPECT_EQ(nth<QLineEdit>("operand", 0).text(), QString());
    click("removeButton", 0);
    EXPECT_EQ(all<QComboBox>("criterion").size(), 1) << "the last row comes back, empty";
    EXPECT_EQ(editor->geometry(), before);
}

TEST_F(Editor, aGroupWithoutRowsGoesAndOneWithinIsSaved)
{
    open("star == YES");
    click("groupButton", 1);
    choose(nth<QComboBox>("groupKind", 1), "None of these holds");
    QTest::keyClicks(&nth<QLineEdit>("operand", 0), QStringLiteral("milk"));
    QTest::keyClicks(&nth<QLineEdit>("operand", 1), QStringLiteral("bread"));
    EXPECT_EQ(editor->predicate(),
        Predicate::format("star == YES AND NOT (title CONTAINS[c] 'milk' OR title CONTAINS[c] 'bread')"));
    click("removeButton", 2);
    click("removeButton", 2);
    EXPECT_EQ(editor->predicate(), Predicate::format("star == YES"));
    EXPECT_EQ(all<QComboBox>("groupKind").size(), 1);
}

TEST_F(Editor, countsTheTasksThatTheListWouldShowWhileOneTypes)
{
    application.settings.set("SmartFoldersApplyShowCompleted", false);
    for (const char *title : {"Milk", "Milk and bread", "Butter"})
        application.add(aTask().titled(title));
    application.add(aTask().titled("Old milk").inTheTrash());
    open("title CONTAINS[c] 'milk'");
    EXPECT_TRUE(countBecomes("2 tasks"));
    nth<QLineEdit>("operand", 0).end(false);
    QTest::keyClicks(&nth<QLineEdit>("operand", 0), QStringLiteral(" and"));
    EXPECT_TRUE(countBecomes("1 task")) << count().toStdString();
    choose(nth<QComboBox>("test", 0), "does not contain");
    EXPECT_TRUE(countBecomes("2 tasks"));
    application.add(aTask().titled("Cheese"));
    EXPECT_TRUE(countBecomes("3 tasks"));
}

TEST_F(Editor, takesADateAsItIsTypedAndWaitsForOneThatIsNone)
{
    open();
    choose(nth<QComboBox>("criterion", 0), "Start date");
    choose(nth<QComboBox>("test", 0), "is before");
    auto &field = nth<QLineEdit>("operand", 0);
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("someday"));
    save();
    EXPECT_TRUE(editor && editor->isVisible());
    EXPECT_EQ(folder->predicate(), Predicate::format("title CONTAINS 'task'"));
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("2026-12-01"));
    save();
    EXPECT_EQ(folder->predicate(), Predicate::format("startDate < %@", {objectstore::Value(at("2026-12-01"))}));
}

TEST_F(Editor, keepsAConditionThatHasNoRowAndATitleThatNoRecordHasAnyMore)
{
    application.addRecord<model::Folders>("Garden");
    const char *text = "title MATCHES '.*(milk|bread)' AND folders.title == 'Gone'";
    open(text);
    EXPECT_EQ(nth<QLineEdit>("keptCondition", 0).text(), QStringLiteral("title MATCHES \".*(milk|bread)\""));
    auto &titles = nth<QComboBox>("operand", 0);
    EXPECT_EQ(titles.currentText(), QStringLiteral("Gone"));
    EXPECT_EQ(editor->predicate(), Predicate::format(text));
    choose(titles, "Garden");
    save();
    EXPECT_EQ(folder->predicate(), Predicate::format("title MATCHES '.*(milk|bread)' AND folders.title == 'Garden'"));
}

TEST_F(Editor, opensADamagedFolderWithTheDefaultAndSaysSo)
{
    open();
    editor->close();
    folder->setValue("predicateData", objectstore::Bytes{std::byte{1}, std::byte{2}});
    reopen();
    EXPECT_TRUE(editor->findChild<QLabel *>(QStringLiteral("notice"))->isVisible());
    EXPECT_EQ(editor->predicate(), Predicate::format("title CONTAINS 'task'"));
}

TEST_F(Editor, savesWhatWasEditedEvenWhenTheRecordIsGone)
{
    open("star == YES");
    application.moc().remove(*folder);
    application.delegate().saveAction();
    save();
    const auto folders = application.moc().fetch({.entity = "SmartFolder", .predicate = {}, .sortDescriptors = {}});
    ASSERT_EQ(folders->size(), 1U);
    EXPECT_EQ(folders->front()->text("title"), "Mine");
    EXPECT_EQ(model::as<model::SmartFolder>(folders->front())->predicate(), Predicate::format("star == YES"));
}

TEST_F(Editor, startsFromAReadyMadeFolder)
{
    open();
    auto *menu = editor->findChild<QPushButton *>(QStringLiteral("readyMade"))->menu();
    menu->actions().at(4)->trigger();
    EXPECT_EQ(nth<QLineEdit>("smartFolderTitle", 0).text(), QStringLiteral("Starred"));
    EXPECT_EQ(editor->predicate(), Predicate::format("star == YES"));
}

TEST_F(Editor, tabGoesThroughTheRowsAsTheyStand)
{
    open("star == YES AND complete == NO");
    click("addButton", 0); // at the top, made last
    QStringList names;
    QWidget *at = &nth<QComboBox>("groupKind", 0);
    for (int step = 0; step < 40 && at->objectName() != QLatin1String("save"); ++step) {
        if (auto *list = qobject_cast<QComboBox *>(at); list && list->objectName() == QLatin1String("criterion"))
            names.append(list->currentText());
        at = at->nextInFocusChain();
    }
    EXPECT_EQ(names.join(QLatin1Char(' ')), QStringLiteral("Title Star Complete"));
}

TEST(SmartFolderCommands, makeEditAndCancelFromTheMainWindow)
{
    support::TestApplication application;
    application.add(aTask().titled("Milk").starred());
    application.add(aTask().titled("A task"));
    views::MainWindow window(application.delegate());
    window.show();
    auto &outline = *window.findChild<views::FoldersOutlineView *>(QStringLiteral("sidebarList"));
    auto &sources = *static_cast<viewcontrollers::SourceListController *>(outline.model());
    const auto group = [&] { return sources.indexOf(viewcontrollers::SourceKind::SmartFoldersGroup); };
    const auto editor = [&] { return window.findChild<SmartFolderEditController *>(); };
    const auto shown = [&] {
        QStringList titles;
        const auto *model = window.findChild<views::TasksTableView *>(QStringLiteral("taskTable"))->model();
        for (int row = 0; row < model->rowCount(); ++row)
            titles.append(model->index(row, 0).data().toString());
        return titles.join(QLatin1Char('|')).toStdString();
    };
    const auto settle = [] { QTest::qWait(20); };

    window.action(Command::NewSmartFolder)->trigger();
    EXPECT_EQ(sources.rowCount(group()), 1);
    EXPECT_EQ(shown(), "A task");
    ASSERT_NE(editor(), nullptr);
    editor()->reject();
    settle();
    EXPECT_EQ(sources.rowCount(group()), 0);

    window.action(Command::NewSmartFolder)->trigger();
    editor()->setCriteria(viewcontrollers::criteriaOf(Predicate::format("star == YES")));
    editor()->persistPredicate();
    settle();
    EXPECT_EQ(shown(), "Milk");

    ASSERT_TRUE(window.action(Command::EditSmartFolder)->isEnabled());
    window.action(Command::EditSmartFolder)->trigger();
    window.action(Command::EditSmartFolder)->trigger();
    EXPECT_EQ(window.findChildren<SmartFolderEditController *>().size(), 1) << "the same folder has one editor";
    editor()->setCriteria(viewcontrollers::criteriaOf(Predicate::format("star == NO")));
    editor()->persistPredicate();
    settle();
    EXPECT_EQ(shown(), "A task");
    window.action(Command::Undo)->trigger();
    settle();
    EXPECT_EQ(shown(), "Milk");
    window.action(Command::GoToToday)->trigger();
    EXPECT_FALSE(window.action(Command::EditSmartFolder)->isEnabled());
}
