// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <gtest/gtest.h>

using namespace library;

// What comes of changes that are taken back is in store_property_test.cpp.
TEST(UndoManager, takesNamedGroupsAndWhatIsAnnouncedTogether)
{
    Library library;
    const auto context = library.context();
    context->enableUndo();
    UndoManager &undo = *context->undoManager();
    ManagedObject &novel = book(*context, "Novel");
    context->processPendingChanges();
    novel.setValue("title", std::string("A"));
    undo.undo();
    EXPECT_EQ(novel.text("title"), "Novel") << "its insertion was announced before";

    for (const char *name : {"B", "C"}) {
        undo.beginGroup(name);
        novel.setValue("title", std::string(name));
        undo.endGroup();
    }
    EXPECT_EQ(undo.undoName(), "C");
    undo.undo();
    EXPECT_EQ(undo.undoName() + undo.redoName(), "BC");

    undo.disableRegistration();
    novel.setValue("title", std::string("D"));
    undo.enableRegistration();
    undo.undo();
    EXPECT_EQ(novel.text("title"), "Novel");
}
