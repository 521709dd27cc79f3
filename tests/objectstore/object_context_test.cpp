// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <gmock/gmock.h>

using namespace library;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ObjectContext, keepsEveryKindOfValueWhateverStoodThereBefore)
{
    Library library;
    const auto context = library.context();
    ManagedObject &book = context->insert("Book");
    ManagedObject &shelf = context->insert("Shelf");
    const std::string odd("Größe; 'quoted' \"twice\" 🌳\nsecond line\0after nul", 50);
    const std::pair<const char *, std::vector<Value>> columns[]
        = {{"title", {Value(), std::string("A"), odd, std::string()}},
            {"pages", {Value(), std::int64_t{0}, std::int64_t{1}, std::int64_t{-9007199254740993}}},
            {"price", {Value(), 0.0, 0.1, -2e300}}, {"bought", {Value(), Instant{0}, Instant{1.7e9 + 0.125}}},
            {"lent", {Value(), false, true}}, {"cover", {Value(), Bytes{std::byte{0}, std::byte{255}}, Bytes{}}},
            {"shelf", {Value(), shelf.objectID()}}};
    (void)value(context->save());
    for (const auto &[name, values] : columns) {
        for (const Value &first : values) {
            for (const Value &second : values) {
                book.setValue(name, first);
                (void)value(context->save());
                book.setValue(name, second);
                (void)value(context->save());
                const auto reader = library.context();
                const ManagedObject &read = *reader->object(book.objectID());
                EXPECT_TRUE(sameValue(read.value(name), view(second))) << name;
                for (const Property *column : book.entity().columns())
                    EXPECT_TRUE(sameValue(book.value(*column), read.value(*column))) << name << ' ' << column->name;
            }
        }
    }
}

TEST(ObjectContext, savesWhatWasPackedAndWhatChangedAfterwards)
{
    Library library;
    const auto context = library.context();
    ManagedObject &made = book(*context, "Novel", 3);
    context->pack(made);
    made.setValue("lent", true);
    value(context->save());
    EXPECT_EQ(count(*library.context(), "Book", "title == 'Novel' AND pages == 3 AND lent == YES"), 1);
}

TEST(ObjectContext, readsAsManyRowsOfAListAsAreWanted)
{
    Library library;
    auto writer = library.context();
    std::vector<ObjectID> ids;
    for (int i = 0; i < 150; ++i) // more than are read together
        ids.push_back(book(*writer, std::to_string(i)).objectID());
    value(writer->save());
    std::reverse(ids.begin(), ids.end());
    auto context = library.context();
    const auto books = context->objects(ids);
    context->fill(std::span(books).first(140));
    for (std::size_t i = 0; i < books.size(); ++i) {
        EXPECT_EQ(books[i]->isFault(), i >= 140) << i;
        EXPECT_EQ(books[i]->objectID(), ids[i]);
    }
    for (std::size_t i = 0; i < books.size(); ++i)
        EXPECT_EQ(books[i]->text("title"), std::to_string(149 - i));
}

TEST(ObjectContext, aDeletionTakesWhatBelongsToTheObject)
{
    Library library;
    auto context = library.context();
    ManagedObject &novel = book(*context, "Novel");
    ManagedObject &chapter = context->insert("Chapter");
    chapter.setRelated("book", &novel);
    value(context->save());
    context->remove(novel);
    EXPECT_TRUE(chapter.isDeleted());
    value(context->save());
    EXPECT_THAT(fetch(*library.context(), "Chapter"), IsEmpty());
}

TEST(ObjectContext, tellsWhatChangedSinceTheLastSave)
{
    Library library;
    auto context = library.context();
    ManagedObject &novel = book(*context, "Novel", 3);
    value(context->save());
    std::vector<std::string> announced;
    const Subscription subscription = context->onObjectsDidChange([&](const ObjectsChange &change) {
        for (const ManagedObject *object : change.updated) {
            for (const auto &[property, changed] : object->changedValues())
                announced.push_back(property->name);
        }
    });
    novel.setValue("pages", std::int64_t{3}); // the same value is no change
    novel.setValue("title", std::string("Story"));
    novel.setPrimitiveValue("price", 2.0);
    context->processPendingChanges();
    EXPECT_THAT(announced, ElementsAre("title", "price"));
    EXPECT_TRUE(novel.hasChanged("title"));
    novel.setValue("title", std::string("Novel")); // back to what is stored
    EXPECT_FALSE(novel.hasChanged("title"));
    value(context->save());
    EXPECT_FALSE(novel.hasChanges());
}

TEST(ObjectContext, recordsAreNamedByUris)
{
    Library library;
    auto context = library.context();
    ManagedObject &novel = book(*context, "Novel");
    const std::string uri = context->uri(novel);
    value(context->save());
    auto other = library.context();
    ASSERT_TRUE(other->objectWithURI(uri));
    EXPECT_EQ(other->objectWithURI(uri)->text("title"), "Novel");
    EXPECT_FALSE(Library().store->objectID(uri)) << "it is of another store";
    for (const std::string &wrong : {std::string(), std::string("Book/1"), uri + "e3", uri + "/"})
        EXPECT_FALSE(library.store->objectID(wrong)) << wrong;
    EXPECT_EQ(other->objectWithURI(uri + "7"), nullptr);
    context->remove(novel);
    value(context->save());
    EXPECT_EQ(library.context()->objectWithURI(uri), nullptr);
}

TEST(ObjectContext, sortsByKeyPathsWithNothingFirst)
{
    Library library;
    auto context = library.context();
    ManagedObject &attic = context->insert("Shelf");
    attic.setValue("title", std::string("attic"));
    ManagedObject &zoo = context->insert("Shelf");
    zoo.setValue("title", std::string("Zoo"));
    book(*context, "b", 2).setRelated("shelf", &zoo);
    book(*context, "É", 2).setRelated("shelf", &attic);
    book(*context, "f", 1);
    value(context->save());
    const auto sorted = [&](std::vector<SortDescriptor> by) {
        return titles(value(context->fetch({.entity = "Book", .predicate = {}, .sortDescriptors = std::move(by)})));
    };
    EXPECT_THAT(sorted({{.key = "shelf.title", .localized = true}}), ElementsAre("f", "É", "b"));
    EXPECT_THAT(sorted({{.key = "pages", .ascending = false}, {.key = "title"}}), ElementsAre("b", "É", "f"));
    EXPECT_FALSE(context->fetch({.entity = "Book", .predicate = {}, .sortDescriptors = {{.key = "colour"}}}));
    EXPECT_FALSE(context->fetch({.entity = "Pamphlet", .predicate = {}, .sortDescriptors = {}}));
}

TEST(FetchValues, refusesWhatHasNoSingleValue)
{
    Library library;
    auto context = library.context();
    const FetchRequest all{.entity = "Book", .predicate = {}, .sortDescriptors = {}};
    const auto never = [](const ObjectID &, std::span<const ValueView>) { FAIL(); };
    for (const char *key : {"labels", "shelf.title", "colour", ""})
        EXPECT_FALSE(context->fetchValues(all, {key}, never)) << key;
    EXPECT_FALSE(context->fetchValues(
        {.entity = "Book", .predicate = {}, .sortDescriptors = {{.key = "title"}}}, {"title"}, never));
}
