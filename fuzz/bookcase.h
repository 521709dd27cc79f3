// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fuzz/property.h"
#include "objectstore/library.h"

#include <limits>

namespace fuzz {

/// A few saved books of every make, to ask predicates of.
class Bookcase
{
public:
    Bookcase()
    {
        fill(*m_library.context());
        look();
    }

    /// Insists that a predicate gives the same answers in memory and in SQL, or is refused with a sentence.
    void ask(const objectstore::Predicate &predicate)
    {
        if (++m_questions % 512 == 0)
            look(); // a connection keeps every statement that it has ever prepared
        for (const char *entity : {"Book", "Shelf"})
            ask(predicate, entity);
    }

private:
    using ObjectContext = objectstore::ObjectContext;

    void ask(const objectstore::Predicate &predicate, const char *entity)
    {
        const auto found
            = m_context->fetch({.entity = entity, .predicate = predicate, .sortDescriptors = {}, .limit = 0});
        const auto counted
            = m_context->count({.entity = entity, .predicate = predicate, .sortDescriptors = {}, .limit = 0});
        require(found.has_value() == counted.has_value(), "what can be fetched can be counted", predicate.text());
        if (!found) {
            require(found.error().code == static_cast<int>(objectstore::StoreErrorCode::BadRequest),
                "a predicate is refused before it comes to the store", predicate.text() + "\n" + found.error().detail);
            require(!found.error().message.empty(), "a refusal is a sentence", predicate.text());
            return;
        }
        std::vector<objectstore::ManagedObject *> matching;
        for (objectstore::ManagedObject *object : library::fetch(*m_context, entity))
            if (predicate.matches(*object))
                matching.push_back(object);
        require(*found == matching && *counted == static_cast<std::int64_t>(matching.size()),
            "memory and SQL give the same answer", predicate.text());
    }

    void look() { m_context = m_library.context(); }

    static void fill(ObjectContext &context)
    {
        using objectstore::Value;
        auto &shelf = context.insert("Shelf");
        shelf.setValue("title", std::string("Fiction"));
        auto &label = context.insert("Label");
        label.setValue("title", std::string("caf\xc3\xa9"));
        const auto add = [&](Value title, Value pages, Value price, Value bought, Value lent, Value cover) {
            auto &book = context.insert("Book");
            book.setValue("title", std::move(title));
            book.setValue("pages", std::move(pages));
            book.setValue("price", std::move(price));
            book.setValue("bought", std::move(bought));
            book.setValue("lent", std::move(lent));
            book.setValue("cover", std::move(cover));
            return &book;
        };
        using objectstore::Bytes;
        using objectstore::Instant;
        constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
        auto *novel = add(std::string("Novel"), std::int64_t{320}, 9.99, Instant{1790000000}, true,
            Bytes{std::byte{0}, std::byte{255}});
        auto *story = add(std::string("\xc3\x89t\xc3\xa9"), most, -0.5, Instant{0.001}, false, Value());
        auto *nothing = add(Value(), Value(), Value(), Value(), Value(), Value());
        add(std::string(), std::int64_t{0}, 0.0, Instant{-1e10}, false, Bytes());
        novel->setRelated("shelf", &shelf);
        nothing->setRelated("shelf", &shelf);
        story->setRelated("sequel", novel);
        novel->addObject("labels", label);
        auto &chapter = context.insert("Chapter");
        chapter.setValue("title", std::string("One"));
        chapter.setRelated("book", novel);
        library::value(context.save());
    }

    library::Library m_library;
    std::unique_ptr<ObjectContext> m_context;
    std::size_t m_questions = 0;
};

} // namespace fuzz
