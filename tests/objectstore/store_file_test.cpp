// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <SQLiteCpp/Database.h>
#include <fstream>
#include <gmock/gmock.h>

using namespace library;
using testing::ElementsAre;

TEST(StoreFile, isRefusedWithTheReason)
{
    Library library;
    const auto file = library.folder.path() / "other.store";
    const auto reason = [&library](const std::filesystem::path &opened) {
        return static_cast<StoreErrorCode>(Store::open(model(), opened, library.clock).error().code);
    };
    std::ofstream(file) << std::string(5000, 'x');
    EXPECT_EQ(reason(file), StoreErrorCode::Damaged);
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(reason(file), StoreErrorCode::CannotOpen);
    SQLite::Database(library.store->file().string(), SQLite::OPEN_READWRITE).exec("PRAGMA user_version=99");
    EXPECT_EQ(reason(library.store->file()), StoreErrorCode::NewerSchema);
}

TEST(StoreFile, anOlderStoreIsMigratedAndItsLastStateKept)
{
    Library library;
    auto context = library.context();
    book(*context, "Novel", 5);
    value(context->save());
    context.reset();

    auto schemas = entities();
    schemas[1].properties.push_back({.name = "isbn", .kind = PropertyKind::Attribute, .type = AttributeType::Text});
    schemas[1].properties.push_back({.name = "lost", .type = AttributeType::Boolean, .defaultValue = false});
    schemas.push_back({.name = "Reader", .properties = {{.name = "name"}}, .indexes = {{"name"}}});
    const ObjectModel newer(2, std::move(schemas));
    const auto store = value(Store::open(newer, library.store->file(), library.clock));
    EXPECT_EQ(store->uuid(), library.store->uuid());
    ObjectContext migrated(*store, MergePolicy::Rollback);
    EXPECT_THAT(titles(fetch(migrated, "Book", "pages == 5 AND isbn == NULL AND lost == NO")), ElementsAre("Novel"));
    migrated.insert("Reader").setValue("name", std::string("Ana"));
    EXPECT_TRUE(migrated.save());
    EXPECT_TRUE(std::filesystem::exists(library.store->file().string() + ".before-2"));
}

TEST(StoreFile, aSaveThatCannotBeMadeKeepsTheChanges)
{
    Library library;
    auto context = library.context();
    ManagedObject &novel = book(*context, "Novel");
    value(context->save());
    novel.setValue("title", std::string("Story"));
    {
        SQLite::Database other(library.store->file().string(), SQLite::OPEN_READWRITE);
        other.exec("ALTER TABLE Book RENAME TO Elsewhere");
        const auto saved = context->save();
        ASSERT_FALSE(saved);
        EXPECT_EQ(saved.error().code, static_cast<int>(StoreErrorCode::NotSaved));
        EXPECT_TRUE(context->hasChanges());
        other.exec("ALTER TABLE Elsewhere RENAME TO Book");
    }
    value(context->save());
    EXPECT_THAT(titles(fetch(*library.context(), "Book")), ElementsAre("Story"));
}
