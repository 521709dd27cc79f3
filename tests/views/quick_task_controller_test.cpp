// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/quick_task_controller.h"

#include "support/test_application.h"
#include "viewcontrollers/foreign_text.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QPointer>
#include <QTest>

using support::at;
using views::QuickTaskController;

namespace {

class QuickTask : public testing::Test
{
protected:
    QuickTaskController &open(const char *title = "")
    {
        window = new QuickTaskController(application.delegate(), QString::fromUtf8(title));
        window->showWindow();
        return *window;
    }
    model::Tasks *onlyTask()
    {
        const auto tasks = application.moc().fetch(model::everyTask()).value();
        return tasks.size() == 1 ? model::as<model::Tasks>(tasks.front()) : nullptr;
    }
    bool isGone()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window.isNull();
    }

    support::TestApplication application;
    QPointer<QuickTaskController> window;
};

} // namespace

TEST_F(QuickTask, returnAddsTheTypedTaskAtThePlacesOfANewOneAndSavesIt)
{
    open();
    QTest::keyClicks(&window->taskTitleField(), QStringLiteral("Buy milk"));
    QTest::keyClick(&window->taskTitleField(), Qt::Key_Return);
    EXPECT_TRUE(isGone());
    const model::Tasks *task = onlyTask();
    ASSERT_TRUE(task);
    EXPECT_EQ(task->title(), "Buy milk");
    EXPECT_EQ(task->folders(), application.records().getFolderByTitle("Inbox"));
    EXPECT_EQ(task->contexts(), application.records().getContextById(0));
    EXPECT_EQ(task->states(), application.records().getStateById(0));
    EXPECT_EQ(task->priorities(), application.records().getPriorityByName("0"));
    EXPECT_FALSE(application.moc().hasChanges());
}

TEST_F(QuickTask, goesToTheChosenPlacesAndToNoneWhereNoneIsChosen)
{
    const auto &garden = application.addRecord<model::Folders>("Garden");
    auto &house = application.addRecord<model::Folders>("House");
    open("Prune").setPlace(QuickTaskController::Folder, &garden);
    window->setPlace(QuickTaskController::Priority, application.records().getPriorityByName("2"));
    window->saveAction();
    model::Tasks *task = onlyTask();
    ASSERT_TRUE(task);
    EXPECT_EQ(task->folders(), &garden);
    EXPECT_EQ(task->priorities(), application.records().getPriorityByName("2"));
    application.moc().remove(*task);

    open("Nowhere").setPlace(QuickTaskController::Folder, nullptr);
    window->setPlace(QuickTaskController::State, nullptr);
    window->saveAction();
    task = onlyTask();
    ASSERT_TRUE(task);
    EXPECT_EQ(task->folders(), nullptr) << "not in the Inbox either";
    EXPECT_EQ(task->states(), nullptr);
    application.moc().remove(*task);

    open("Late").setPlace(QuickTaskController::Folder, &house);
    application.moc().remove(house);
    window->saveAction();
    ASSERT_TRUE(onlyTask()) << "a folder that went meanwhile takes no task with it";
    EXPECT_EQ(onlyTask()->folders(), nullptr);
}

TEST_F(QuickTask, closesWithoutATaskOnEscapeAndKeepsAnEmptyTitleEmpty)
{
    open("Something");
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(isGone());
    EXPECT_EQ(onlyTask(), nullptr);
    open().saveAction();
    ASSERT_TRUE(onlyTask());
    EXPECT_EQ(onlyTask()->title(), "");
}

TEST_F(QuickTask, takesATypedDueDateThoughReturnWasPressedInTheTitle)
{
    open("Call");
    auto *due = window->findChildren<QLineEdit *>().last();
    due->setFocus();
    QTest::keyClicks(due, QStringLiteral("tomorrow 14:00"));
    window->taskTitleField().setFocus();
    QTest::keyClick(&window->taskTitleField(), Qt::Key_Return);
    ASSERT_TRUE(onlyTask());
    EXPECT_EQ(onlyTask()->dueDate(), at("2026-11-25 14:00"));
}

TEST_F(QuickTask, F53_a_text_that_is_too_long_or_not_plain_is_cut_and_shown_as_it_is_and_says_so)
{
    views::QuickEntry service(application.delegate());
    const auto opened = [this](const QString &text, views::QuickEntry &entry) {
        entry.addTaskService(text);
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *candidate = qobject_cast<QuickTaskController *>(widget); candidate && candidate->isVisible())
                window = candidate;
        }
        return window;
    };
    const auto notice = [this] { return window->findChild<QLabel *>(QStringLiteral("subline"))->isVisible(); };

    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(opened(QString(5'000'000, QLatin1Char('a')) + QString(5'000'000, QChar(0x202E)), service));
    EXPECT_LT(time.elapsed(), 2000);
    EXPECT_EQ(window->taskTitleField().text().size(), viewcontrollers::longestForeignLine);
    EXPECT_TRUE(notice());
    window->dontSaveAction();
    EXPECT_TRUE(isGone());

    const QString emoji = QStringLiteral("\U0001F600");
    ASSERT_TRUE(opened(QLatin1Char('x') + emoji.repeated(viewcontrollers::longestForeignLine), service));
    EXPECT_FALSE(window->taskTitleField().text().back().isHighSurrogate()) << "not in the middle of a character";
    window->dontSaveAction();
    EXPECT_TRUE(isGone());

    ASSERT_TRUE(opened(QStringLiteral("\u202EPay\u0000 \u0007\u009B31m\r\nAna \u2067\u05D0\u2069\u200D"), service));
    EXPECT_EQ(window->taskTitleField().text(), QStringLiteral("Pay 31m Ana \u05D0\u200D"));
    EXPECT_FALSE(notice());
    QGuiApplication::clipboard()->setText(QString(10'000'000, QLatin1Char('b')));
    window->taskTitleField().paste();
    EXPECT_TRUE(notice()) << "what is pasted is cut, too";
    window->dontSaveAction();
}

TEST_F(QuickTask, aFailedSaveIsShownAndTheTaskIsKept)
{
    const auto store = application.folder.path() / "Quelvin.qvl";
    open("Milk");
    application.moc().processPendingChanges();
    std::filesystem::rename(store, application.folder.path() / "gone");
    window->saveAction();
    EXPECT_TRUE(isGone());
    EXPECT_EQ(application.user.errors.size(), 1U);
    EXPECT_TRUE(application.moc().hasChanges());
    EXPECT_TRUE(onlyTask());
}
