// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <gmock/gmock.h>

using namespace library;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Undoable {
    Library library;
    std::unique_ptr<ObjectContext> context = library.context();
    Undoable() { context->enableUndo(); }
    UndoManager &undo() { return *context->undoManager(); }
};

} // namespace

TEST(UndoManager, takesBackAndDoesAgainOneNamedGroupAtATime)
{
    Undoable it;
    it.undo().beginGroup("Add Book");
    ManagedObject &novel = book(*it.context, "Novel", 1);
    it.undo().endGroup();
    it.undo().beginGroup("Rename");
    novel.setValue("title", std::string("Story"));
    it.undo().endGroup();
    value(it.context->save());

    EXPECT_EQ(it.undo().undoName(), "Rename");
    it.undo().undo();
    EXPECT_EQ(novel.text("title"), "Novel");
    EXPECT_EQ(it.undo().redoName(), "Rename");
    it.undo().undo(); // the insertion, which has been saved
    EXPECT_THAT(fetch(*it.context, "Book"), IsEmpty());
    value(it.context->save());
    EXPECT_FALSE(it.undo().canUndo());
    it.undo().redo();
    it.undo().redo();
    value(it.context->save());
    EXPECT_THAT(titles(fetch(*it.library.context(), "Book", "pages == 1")), ElementsAre("Story"));
    EXPECT_FALSE(it.undo().canRedo());
}

TEST(UndoManager, bringsBackADeletedObjectWithItsRelationships)
{
    Undoable it;
    ManagedObject &shelf = it.context->insert("Shelf");
    ManagedObject &label = it.context->insert("Label");
    ManagedObject &novel = book(*it.context, "Novel");
    novel.setRelated("shelf", &shelf);
    novel.addObject("labels", label);
    value(it.context->save());
    it.context->remove(novel);
    value(it.context->save());
    it.undo().undo();
    EXPECT_THAT(shelf.objects("books"), ElementsAre(&novel));
    value(it.context->save());
    auto later = it.library.context();
    ASSERT_THAT(titles(fetch(*later, "Book")), ElementsAre("Novel"));
    EXPECT_EQ(fetch(*later, "Label")[0]->objects("books").size(), 1U);
    EXPECT_TRUE(fetch(*later, "Book")[0]->related("shelf"));
}

TEST(UndoManager, aNewChangeEndsTheChanceToRedo)
{
    Undoable it;
    ManagedObject &novel = book(*it.context, "Novel");
    it.context->processPendingChanges();
    novel.setValue("title", std::string("A"));
    it.undo().undo();
    EXPECT_EQ(novel.text("title"), "Novel");
    novel.setValue("title", std::string("B"));
    it.context->processPendingChanges();
    EXPECT_FALSE(it.undo().canRedo());
    it.undo().disableRegistration();
    novel.setValue("title", std::string("C"));
    it.undo().enableRegistration();
    it.undo().undo();
    EXPECT_EQ(novel.text("title"), "Novel");
}
