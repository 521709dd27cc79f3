// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/object_context.h"
#include "objectstore/undo_manager.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

#include <stdexcept>

namespace library {

using namespace objectstore;

/// A small model that has one of everything: shelves hold books, books carry labels, a book may have a sequel.
inline std::vector<EntitySchema> entities()
{
    using enum PropertyKind;
    using enum AttributeType;
    const auto attribute = [](std::string name, AttributeType type, Value standard = {}) {
        return PropertySchema{
            .name = std::move(name), .kind = Attribute, .type = type, .defaultValue = std::move(standard)};
    };
    const auto relationship = [](std::string name, PropertyKind kind, std::string destination, std::string inverse,
                                  DeleteRule rule = DeleteRule::Nullify) {
        return PropertySchema{.name = std::move(name),
            .kind = kind,
            .destination = std::move(destination),
            .inverse = std::move(inverse),
            .deleteRule = rule};
    };
    return {
        {.name = "Shelf",
            .properties = {attribute("title", Text), relationship("books", ToMany, "Book", "shelf")},
            .indexes = {}},
        {.name = "Book",
            .properties = {attribute("title", Text, std::string("Untitled")), attribute("pages", Integer),
                attribute("price", Double), attribute("bought", Date), attribute("lent", Boolean, false),
                attribute("cover", Binary), relationship("shelf", ToOne, "Shelf", "books"),
                relationship("labels", ToMany, "Label", "books"), relationship("sequel", ToOne, "Book", "prequels"),
                relationship("prequels", ToMany, "Book", "sequel"),
                relationship("chapters", ToMany, "Chapter", "book", DeleteRule::Cascade)},
            .indexes = {{"shelf", "lent"}}},
        {.name = "Label",
            .properties = {attribute("title", Text), relationship("books", ToMany, "Book", "labels")},
            .indexes = {}},
        {.name = "Chapter",
            .properties = {attribute("title", Text), relationship("book", ToOne, "Book", "chapters")},
            .indexes = {}},
    };
}

inline const ObjectModel &model()
{
    static const ObjectModel made(1, entities());
    return made;
}

template <typename T> T value(foundation::Result<T> result)
{
    if (!result)
        throw std::runtime_error(result.error().message + " " + result.error().detail);
    return std::move(*result);
}

/// A store of books in a temporary folder, and as many contexts over it as a test wants.
struct Library {
    support::TemporaryFolder folder;
    support::TestClock clock;
    std::unique_ptr<Store> store = value(Store::open(model(), folder.path() / "books.store", clock));

    void reopen()
    {
        store.reset();
        store = value(Store::open(model(), folder.path() / "books.store", clock));
    }
    [[nodiscard]] std::unique_ptr<ObjectContext> context(MergePolicy policy = MergePolicy::Rollback)
    {
        return std::make_unique<ObjectContext>(*store, policy);
    }
};

inline ManagedObject &book(ObjectContext &context, std::string title, std::int64_t pages = 0)
{
    ManagedObject &made = context.insert("Book");
    made.setValue("title", std::move(title));
    made.setValue("pages", pages);
    return made;
}

inline std::vector<ManagedObject *> fetch(ObjectContext &context, std::string entity,
    std::string_view predicate = "TRUEPREDICATE", std::initializer_list<Argument> arguments = {})
{
    return value(context.fetch(
        {.entity = std::move(entity), .predicate = Predicate::format(predicate, arguments), .sortDescriptors = {}}));
}

inline std::int64_t count(ObjectContext &context, std::string entity, std::string_view predicate,
    std::initializer_list<Argument> arguments = {})
{
    return value(context.count(
        {.entity = std::move(entity), .predicate = Predicate::format(predicate, arguments), .sortDescriptors = {}}));
}

inline std::vector<std::string> titles(const std::vector<ManagedObject *> &objects)
{
    std::vector<std::string> found;
    for (const ManagedObject *object : objects)
        found.emplace_back(object->text("title"));
    return found;
}

} // namespace library
