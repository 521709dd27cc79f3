// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <map>
#include <rapidcheck/gtest.h>
#include <set>

using namespace library;

namespace {

/// What the store should hold: books by a number of their own, each with a title, a shelf and labels.
struct BookState {
    std::string title;
    int shelf = -1;
    std::set<int> labels;
    friend bool operator==(const BookState &, const BookState &) = default;
};
using State = std::map<int, BookState>;

/// A context with undo over a store, a second one that only merges, and beside them the state as it should be.
class Desk
{
public:
    Desk()
    {
        open();
        for (int i = 0; i < shelves; ++i)
            m_context->insert("Shelf");
        for (int i = 0; i < labels; ++i)
            m_context->insert("Label");
        value(m_context->save());
        reopen();
    }

    void insert(int seed)
    {
        change([&] {
            ManagedObject &made = book(*m_context, "book " + std::to_string(seed), ++m_lastNumber);
            made.setRelated("shelf", fetch(*m_context, "Shelf")[static_cast<std::size_t>(seed % shelves)]);
            m_now[m_lastNumber] = {"book " + std::to_string(seed), seed % shelves, {}};
        });
    }
    void edit(int seed)
    {
        withBook(seed, [&](ManagedObject &made, BookState &state) {
            state.title = "edited " + std::to_string(seed);
            made.setValue("title", state.title);
        });
    }
    void move(int seed)
    {
        withBook(seed, [&](ManagedObject &made, BookState &state) {
            state.shelf = seed % (shelves + 1) - 1;
            if (seed % 2)
                made.setRelated("shelf", shelf(state.shelf));
            else if (state.shelf >= 0)
                shelf(state.shelf)->addObject("books", made);
            else if (ManagedObject *old = made.related("shelf"))
                old->removeObject("books", made);
        });
    }
    void label(int seed)
    {
        withBook(seed, [&](ManagedObject &made, BookState &state) {
            const int number = seed % labels;
            ManagedObject &tag = *fetch(*m_context, "Label")[static_cast<std::size_t>(number)];
            const bool add = state.labels.erase(number) == 0;
            if (add)
                state.labels.insert(number);
            ManagedObject &owner = seed % 2 ? made : tag;
            ManagedObject &member = seed % 2 ? tag : made;
            const char *name = seed % 2 ? "labels" : "books";
            add ? owner.addObject(name, member) : owner.removeObject(name, member);
        });
    }
    void remove(int seed)
    {
        if (m_now.empty())
            return;
        change([&] {
            const int number = pick(seed);
            m_context->remove(*find(*m_context, number));
            m_now.erase(number);
        });
    }
    void undo()
    {
        if (m_past.empty())
            return;
        m_context->undoManager()->undo();
        m_future.push_back(std::exchange(m_now, m_past.back()));
        m_past.pop_back();
    }
    void redo()
    {
        if (m_future.empty())
            return;
        m_context->undoManager()->redo();
        m_past.push_back(std::exchange(m_now, m_future.back()));
        m_future.pop_back();
    }
    void save()
    {
        const SaveReport report = value(m_context->save());
        RC_ASSERT(report.discarded.empty());
        m_saved = m_now;
        m_other->mergeChanges(report.changes);
    }
    void rollback()
    {
        m_context->rollback();
        m_now = m_saved;
        m_past.clear();
        m_future.clear();
    }
    void reopen()
    {
        m_context.reset();
        m_other.reset();
        m_library.reopen();
        open();
        m_now = m_saved;
        m_past.clear();
        m_future.clear();
    }

    void check()
    {
        RC_ASSERT(stateOf(*m_context) == m_now);
        RC_ASSERT(stateOf(*m_other) == m_saved);
        RC_ASSERT(count(*m_context, "Book", "shelf != NULL AND labels.@count > 0")
            == std::count_if(m_now.begin(), m_now.end(),
                [](const auto &entry) { return entry.second.shelf >= 0 && !entry.second.labels.empty(); }));
        RC_ASSERT(m_context->undoManager()->canUndo() == !m_past.empty());
        RC_ASSERT(m_context->undoManager()->canRedo() == !m_future.empty());
    }

private:
    static constexpr int shelves = 3;
    static constexpr int labels = 4;

    void open()
    {
        m_context = m_library.context();
        m_context->enableUndo();
        m_other = m_library.context();
    }
    template <typename Work> void change(Work work)
    {
        const State before = m_now;
        m_context->undoManager()->beginGroup("change");
        work();
        m_context->undoManager()->endGroup();
        if (m_now == before)
            return;
        m_past.push_back(before);
        m_future.clear();
    }
    template <typename Work> void withBook(int seed, Work work)
    {
        if (m_now.empty())
            return;
        const int number = pick(seed);
        change([&] { work(*find(*m_context, number), m_now[number]); });
    }
    [[nodiscard]] int pick(int seed) const
    {
        return std::next(m_now.begin(), seed % static_cast<int>(m_now.size()))->first;
    }
    static ManagedObject *find(ObjectContext &context, int number)
    {
        const auto found = fetch(context, "Book", "pages == %@", {Value(std::int64_t{number})});
        RC_ASSERT(found.size() == 1U);
        return found[0];
    }
    ManagedObject *shelf(int number)
    {
        return number < 0 ? nullptr : fetch(*m_context, "Shelf")[static_cast<std::size_t>(number)];
    }
    /// Reads everything back from the books' side and insists that the other sides say the same.
    static State stateOf(ObjectContext &context)
    {
        const auto allShelves = fetch(context, "Shelf");
        const auto allLabels = fetch(context, "Label");
        const auto place = [](const std::vector<ManagedObject *> &all, const ManagedObject *one) {
            return static_cast<int>(std::find(all.begin(), all.end(), one) - all.begin());
        };
        State state;
        std::size_t onShelves = 0;
        std::size_t links = 0;
        for (const ManagedObject *made : fetch(context, "Book")) {
            BookState held{std::string(made->text("title")), -1, {}};
            if (ManagedObject *on = made->related("shelf")) {
                held.shelf = place(allShelves, on);
                const auto &books = on->objects("books");
                RC_ASSERT(std::count(books.begin(), books.end(), made) == 1);
                ++onShelves;
            }
            for (const ManagedObject *tag : made->objects("labels")) {
                held.labels.insert(place(allLabels, tag));
                const auto &books = tag->objects("books");
                RC_ASSERT(std::count(books.begin(), books.end(), made) == 1);
                ++links;
            }
            state[static_cast<int>(made->integer("pages"))] = held;
        }
        for (const ManagedObject *on : allShelves)
            onShelves -= on->objects("books").size();
        for (const ManagedObject *tag : allLabels)
            links -= tag->objects("books").size();
        RC_ASSERT(onShelves == 0U);
        RC_ASSERT(links == 0U);
        return state;
    }

    Library m_library;
    std::unique_ptr<ObjectContext> m_context;
    std::unique_ptr<ObjectContext> m_other;
    int m_lastNumber = 0;
    State m_now;
    State m_saved;
    std::vector<State> m_past;
    std::vector<State> m_future;
};

} // namespace

RC_GTEST_PROP(ObjectStore, agreesWithASimpleModelThroughAnySequence, ())
{
    using Action = void (*)(Desk &, int);
    static constexpr std::array<Action, 10> actions{
        [](Desk &desk, int seed) { desk.insert(seed); },
        [](Desk &desk, int seed) { desk.insert(seed); },
        [](Desk &desk, int seed) { desk.edit(seed); },
        [](Desk &desk, int seed) { desk.move(seed); },
        [](Desk &desk, int seed) { desk.label(seed); },
        [](Desk &desk, int seed) { desk.remove(seed); },
        [](Desk &desk, int) { desk.undo(); },
        [](Desk &desk, int) { desk.redo(); },
        [](Desk &desk, int) { desk.save(); },
        [](Desk &desk, int seed) { seed % 3 == 0       ? desk.rollback()
                                       : seed % 3 == 1 ? desk.reopen()
                                                       : desk.save(); },
    };
    const auto below = [](int limit) { // in a small case, too, which would else know the first actions alone
        return rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, limit));
    };
    const auto steps = *rc::gen::container<std::vector<std::pair<int, int>>>(
        rc::gen::pair(below(static_cast<int>(actions.size())), below(1000)));
    Desk desk;
    for (const auto &[action, seed] : steps) {
        actions[static_cast<std::size_t>(action)](desk, seed);
        desk.check();
    }
}
