// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/live_count.h"
#include "viewcontrollers/task_catalog.h"

#include "objectstore/undo_manager.h"
#include "support/test_application.h"

#include <QTest>
#include <gmock/gmock.h>
#include <random>

using namespace viewcontrollers;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using support::aTask;

namespace {

class Catalog : public testing::Test
{
protected:
    void waitUntilReady()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return catalog.isReady(); }, 20'000));
    }

    std::vector<ObjectID> everyID()
    {
        std::vector<ObjectID> ids;
        EXPECT_TRUE(application.moc().fetchIDs(model::everyTask(), [&](const ObjectID &id) { ids.push_back(id); }));
        return ids;
    }

    /// The catalog's answer and the store's, as titles; both in one order.
    void expectAnswersOfTheStore(std::string_view text, Qt::SortOrder order)
    {
        objectstore::FetchRequest request = model::tasksContaining(text);
        request.sortDescriptors = {{.key = "title", .ascending = order == Qt::AscendingOrder, .localized = true}};
        const auto fetched = application.moc().fetch(request).value();
        auto found = text.empty() ? everyID() : catalog.containing(text).value();
        EXPECT_EQ(catalog.arranged(std::move(found), order).value(), fetched) << '"' << text << '"';
    }

    /// The count of the tasks that answer conditions of this text, one after the other as if they were being edited.
    void expectCountsOfTheStore(const std::string &text)
    {
        objectstore::FetchRequest same = model::everyTask();
        same.predicate
            = objectstore::Predicate::format("title CONTAINS[c] 'pi' OR folders.title CONTAINS[c] 'pi' OR star == YES");
        EXPECT_EQ(countOfTheSame.count(same).value(), application.moc().count(same).value());
        for (const char *format : {"title CONTAINS[c] $X", "notes CONTAINS[c] $X", "NOT title BEGINSWITH[c] $X",
                 "title CONTAINS[c] $X AND star == YES AND NOT notes ENDSWITH[c] 'z'",
                 "star == YES OR (notes CONTAINS[c] $X AND folders.title CONTAINS[c] 'p') OR title == 'pi'",
                 "NOT (priority == 0 OR title ENDSWITH[c] $X) OR title CONTAINS $X OR notes == $X"}) {
            objectstore::FetchRequest request = model::everyTask();
            request.predicate = objectstore::Predicate::format(format).withVariables({{"X", objectstore::Value(text)}});
            EXPECT_EQ(liveCount.count(request).value(), application.moc().count(request).value())
                << request.predicate.text();
        }
    }

    std::string text()
    {
        static constexpr std::array parts{"Ärger", "arger", "ARGER", "pi", "PIANO", " ", "ß", "Łódź", "łódź", "z", "-"};
        std::string text;
        for (std::size_t left = random() % 4; left > 0; --left)
            text += parts[random() % parts.size()];
        return text;
    }
    model::Tasks *anyTask()
    {
        const auto tasks = application.moc().fetch(model::everyTask()).value();
        return tasks.empty() ? nullptr : model::as<model::Tasks>(tasks[random() % tasks.size()]);
    }

    /// One of the things that happen to tasks, here or in another program.
    void change()
    {
        objectstore::ObjectContext &moc = application.moc();
        model::Tasks *task = anyTask();
        switch (random() % 11) {
        case 0:
            return (void)application.add(aTask().titled(text()));
        case 1:
            return moc.remove(*task);
        case 2:
            return moc.undoManager()->undo();
        case 3:
            return application.delegate().saveAction();
        case 4: {
            application.delegate().saveAction();
            const auto other = application.openStore();
            auto there = other->managedObjectContext().fetch(model::everyTask()).value();
            other->managedObjectContext().remove(*there.front());
            there.back()->setValue("title", text());
            model::insert<model::Tasks>(other->managedObjectContext()).setTitle(text());
            EXPECT_TRUE(other->managedObjectContext().save());
            return application.delegate().mergeExternalChanges();
        }
        case 5:
            return task->setNotes(text());
        case 8:
            return task->setRelated("folders", random() % 2 == 0 ? &folder : nullptr);
        case 9:
            return folder.setTitle(random() % 2 == 0 ? "Piano" : "Garden");
        case 10:
            return task->setStar(random() % 2 == 0);
        default:
            return task->setTitle(text());
        }
    }

    support::TestApplication application;
    model::Folders &folder = model::insert<model::Folders>(application.moc());
    TaskCatalog catalog{application.delegate(), 1};
    LiveCount liveCount{application.delegate(), catalog};
    LiveCount countOfTheSame{application.delegate(), catalog};
    std::mt19937 random;
};

} // namespace

TEST_F(Catalog, answersAsTheStoreDoesWhateverHappensToTasks)
{
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    random.seed(seed);
    for (int i = 0; i < 40; ++i)
        application.add(aTask().titled(text()).noted(text())).setRelated("folders", i % 2 == 0 ? &folder : nullptr);
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        change();
        application.moc().processPendingChanges();
        if (!catalog.isReady()) {
            QTest::qWait(490 + static_cast<int>(random() % 30)); // and on, about when the store is read
            change();
            waitUntilReady();
        }
        for (const std::string &wanted : {std::string(), std::string("arger"), std::string("PI"), text()}) {
            expectAnswersOfTheStore(wanted, Qt::AscendingOrder);
            expectAnswersOfTheStore(wanted, Qt::DescendingOrder);
            expectCountsOfTheStore(wanted);
        }
    }
}

TEST_F(Catalog, findsNoTextThatBeginsInOneTaskAndEndsInAnother)
{
    application.add(aTask().titled("one").noted("two"));
    application.add(aTask().titled("three"));
    application.delegate().saveAction();
    waitUntilReady();
    for (const std::string_view text : {"onetwo", "twothree", "wo\nth"})
        EXPECT_THAT(catalog.containing(text).value(), testing::IsEmpty()) << text;
    EXPECT_EQ(catalog.containing("TW").value().size(), 1U);
}
