// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/detail_pane.h"

#include "support/test_application.h"
#include "views/date_field.h"
#include "views/token_field.h"

#include <QPlainTextEdit>
#include <QTest>

using support::at;
using support::aTask;
using views::DetailPane;

namespace {

class Detail : public testing::Test
{
protected:
    QPlainTextEdit &notes() { return *pane.findChild<QPlainTextEdit *>(QStringLiteral("notes")); }
    QPlainTextEdit &title() { return *pane.findChild<QPlainTextEdit *>(QStringLiteral("titleField")); }
    views::TokenField &tags() { return *pane.findChild<views::TokenField *>(); }
    views::DateField &due()
    {
        for (auto *field : pane.findChildren<views::DateField *>()) {
            if (field->accessibleName() == QStringLiteral("Due"))
                return *field;
        }
        throw std::logic_error("no due date");
    }

    support::TestApplication application;
    DetailPane pane{application.delegate()};
};

} // namespace

TEST_F(Detail, keepsWhatIsTypedWhenAnotherTaskIsChosen)
{
    auto &first = application.add(aTask().titled("One").noted("old"));
    auto &second = application.add(aTask().titled("Two"));
    pane.setTasks({&first});
    QTest::keyClicks(&notes(), QStringLiteral("new "));
    pane.setTasks({&second});
    EXPECT_EQ(first.notes(), "new old");
    EXPECT_EQ(second.notes(), "");
    EXPECT_EQ(title().toPlainText(), QStringLiteral("Two"));
    EXPECT_EQ(notes().toPlainText(), QString());
}

TEST_F(Detail, keepsWhatIsTypedWhenTheProgramQuits)
{
    auto &task = application.add(aTask().titled("One"));
    pane.setTasks({&task});
    QTest::keyClicks(&notes(), QStringLiteral("last words"));
    ASSERT_TRUE(application.delegate().applicationShouldTerminate());
    EXPECT_EQ(task.notes(), "last words");
    EXPECT_FALSE(application.moc().hasChanges());
}

TEST_F(Detail, showsAChangeFromElsewhereButNotOverWhatIsBeingTyped)
{
    auto &task = application.add(aTask().titled("One").noted("mine"));
    pane.setTasks({&task});
    QTest::keyClicks(&notes(), QStringLiteral("still "));
    task.setTitle("Renamed elsewhere");
    task.setNotes("theirs");
    application.moc().processPendingChanges();
    EXPECT_EQ(title().toPlainText(), QStringLiteral("Renamed elsewhere"));
    EXPECT_EQ(notes().toPlainText(), QStringLiteral("still mine"));
    pane.commitEditing();
    EXPECT_EQ(task.notes(), "still mine");
}

TEST_F(Detail, changesNothingByShowingATask)
{
    auto &task = application.add(aTask().titled("One").noted("a\nb").due("2026-11-24 14:00").tagged("x"));
    application.delegate().saveAction();
    pane.setTasks({&task});
    pane.commitEditing();
    pane.setTasks({});
    EXPECT_FALSE(application.moc().hasChanges());
}

TEST_F(Detail, takesADateThatIsTypedAndMarksTextThatIsNone)
{
    auto &task = application.add(aTask().titled("One"));
    pane.setTasks({&task});
    due().clear();
    QTest::keyClicks(&due(), QStringLiteral("tomorrow 14:00"));
    QTest::keyClick(&due(), Qt::Key_Return);
    EXPECT_EQ(task.dueDate(), at("2026-11-25 14:00"));
    due().selectAll();
    QTest::keyClicks(&due(), QStringLiteral("some day"));
    QTest::keyClick(&due(), Qt::Key_Return);
    EXPECT_EQ(task.dueDate(), at("2026-11-25 14:00"));
    EXPECT_EQ(due().text(), QStringLiteral("some day"));
    EXPECT_TRUE(due().property("isWrong").toBool());
    due().selectAll();
    QTest::keyClick(&due(), Qt::Key_Delete);
    QTest::keyClick(&due(), Qt::Key_Return);
    EXPECT_FALSE(task.dueDate());
}

TEST_F(Detail, makesATagOfWhatIsTypedAndUsesTheOneThatExists)
{
    auto &task = application.add(aTask().titled("One"));
    application.add(aTask().titled("Two").tagged("garden"));
    pane.setTasks({&task});
    QTest::keyClicks(tags().edit(), QStringLiteral("garden,winter"));
    QTest::keyClick(tags().edit(), Qt::Key_Return);
    EXPECT_EQ(task.tags().size(), 2U);
    EXPECT_EQ(application.records().getTags()->size(), 2U);
    QTest::keyClick(tags().edit(), Qt::Key_Backspace);
    EXPECT_EQ(task.tags().size(), 1U);
}

TEST_F(Detail, forgetsATaskThatIsDeletedElsewhere)
{
    auto &task = application.add(aTask().titled("One"));
    pane.setTasks({&task});
    QTest::keyClicks(&notes(), QStringLiteral("too late"));
    application.moc().remove(task);
    application.moc().processPendingChanges();
    EXPECT_EQ(pane.task(), nullptr);
    pane.commitEditing();
}
