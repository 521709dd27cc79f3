// SPDX-License-Identifier: GPL-3.0-or-later
// Two contexts on one store do what they like and save in every order; a simple model tells what must come of it.
#include "faults/harness.h"
#include "faults/invariants.h"
#include "objectstore/library.h"

#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>

namespace {

using namespace library;
namespace fs = std::filesystem;
using Random = std::mt19937_64;

constexpr int shelves = 2;
constexpr int labels = 3;
constexpr int mostCommands = 100;

struct Mismatch : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A book as it should be. Its number lies in the attribute "pages".
struct Book {
    std::string title;
    std::string price;
    friend bool operator==(const Book &, const Book &) = default;
};
using Books = std::map<int, Book>;

std::ostream &operator<<(std::ostream &out, const Books &books)
{
    for (const auto &[number, held] : books)
        out << number << ":" << held.title << "/" << held.price << " ";
    return out;
}

/// What the store should hold: books with the save that last wrote them, and which book has which label.
struct StoreState {
    struct Row {
        Book book;
        int save = 0;
    };
    std::map<int, Row> rows;
    std::set<std::pair<int, int>> links;
    int saves = 0;
};

/// What one context should know: the changes it has not saved, each over the row as it was read.
struct Desk {
    struct Change {
        bool inserted = false;
        bool deleted = false;
        StoreState::Row base;
        std::optional<std::string> title;
        std::optional<std::string> price;
        std::map<int, bool> labels;
        [[nodiscard]] bool isEmpty() const { return !inserted && !deleted && !title && !price && labels.empty(); }
    };

    std::unique_ptr<ObjectContext> context;
    MergePolicy policy = MergePolicy::Rollback;
    std::map<int, Change> changes;

    [[nodiscard]] Books view(const StoreState &store) const
    {
        Books books;
        for (const auto &[number, row] : store.rows)
            books[number] = row.book;
        for (const auto &[number, change] : changes) {
            if (change.deleted) {
                books.erase(number);
                continue;
            }
            Book book = change.base.book;
            if (change.title)
                book.title = *change.title;
            if (change.price)
                book.price = *change.price;
            books[number] = book;
        }
        return books;
    }
};

/// The rules by which a save settles with the store; returns what it deleted.
std::set<int> saveInModel(Desk &desk, StoreState &store)
{
    std::set<int> deleted;
    const int save = store.saves + 1;
    bool any = false;
    for (auto &[number, change] : desk.changes) {
        any = true;
        const auto row = store.rows.find(number);
        if (change.inserted) {
            store.rows[number] = {change.base.book, save};
            if (change.title)
                store.rows[number].book.title = *change.title;
            if (change.price)
                store.rows[number].book.price = *change.price;
        } else if (change.deleted || row == store.rows.end()) {
            continue;
        } else {
            const bool conflict = row->second.save != change.base.save;
            const auto settle = [&](std::optional<std::string> &value, std::string &now, const std::string &before) {
                if (!value || (conflict && (desk.policy == MergePolicy::Rollback || now != before)))
                    return false;
                now = *value;
                return true;
            };
            bool wrote = settle(change.title, row->second.book.title, change.base.book.title);
            wrote = settle(change.price, row->second.book.price, change.base.book.price) || wrote;
            if (wrote || !change.labels.empty())
                row->second.save = save;
        }
    }
    for (const auto &[number, change] : desk.changes) {
        if (change.deleted) {
            store.rows.erase(number);
            deleted.insert(number);
            std::erase_if(store.links, [n = number](const auto &link) { return link.first == n; });
        }
    }
    for (const auto &[number, change] : desk.changes) {
        if (!store.rows.contains(number))
            continue;
        for (const auto &[label, there] : change.labels) {
            if (there)
                store.links.insert({number, label});
            else
                store.links.erase({number, label});
        }
    }
    desk.changes.clear();
    if (any)
        store.saves = save;
    return deleted;
}

/// One sequence of commands and the store that it runs on.
class Sequence
{
public:
    Sequence(const fs::path &file, std::uint64_t seed) : m_random(seed), m_file(file), m_withShelves(m_random() % 2)
    {
        m_store = value(Store::open(model(), file, m_clock));
        m_desks[0].policy = MergePolicy::Rollback;
        m_desks[1].policy = MergePolicy::StoreTrump;
        for (Desk &desk : m_desks)
            desk.context = std::make_unique<ObjectContext>(*m_store, desk.policy);
    }

    void run()
    {
        for (int left = 1 + static_cast<int>(m_random() % mostCommands); left > 0; --left)
            step(m_desks[m_random() % 2]);
        settle();
    }

    [[nodiscard]] std::string commands() const { return m_commands.str(); }

private:
    void step(Desk &desk)
    {
        using Command = void (Sequence::*)(Desk &);
        static constexpr std::array<Command, 12> commands{&Sequence::insert, &Sequence::insert, &Sequence::edit,
            &Sequence::edit, &Sequence::edit, &Sequence::shelve, &Sequence::label, &Sequence::label, &Sequence::remove,
            &Sequence::save, &Sequence::merge, &Sequence::rollback};
        const std::size_t which = m_random() % (commands.size() * 4);
        (this->*commands[which < commands.size() * 4 - 3 ? which % (commands.size() - 1) : commands.size() - 1])(desk);
        check(desk);
    }

    std::ostream &say(const Desk &desk, const char *what)
    {
        return m_commands << (&desk == m_desks.data() ? "A " : "B ") << what << " ";
    }

    ManagedObject *any(Desk &desk)
    {
        const auto books = fetch(*desk.context, "Book");
        return books.empty() ? nullptr : books[m_random() % books.size()];
    }
    static int numberOf(const ManagedObject &object) { return static_cast<int>(object.integer("pages")); }
    /// What the model knows of the book's changes; a first change is over the row as the store has it now.
    Desk::Change &changeOf(Desk &desk, int number)
    {
        const auto [change, first] = desk.changes.try_emplace(number);
        if (const auto row = m_state.rows.find(number); first && row != m_state.rows.end())
            change->second.base = row->second;
        return change->second;
    }
    static void forgetIfEmpty(Desk &desk, int number)
    {
        if (desk.changes[number].isEmpty())
            desk.changes.erase(number);
    }

    void insert(Desk &desk)
    {
        const int number = ++m_lastNumber;
        say(desk, "insert") << number << "; ";
        book(*desk.context, "new", number).setValue("price", 1.0);
        Desk::Change &change = desk.changes[number];
        change.inserted = true;
        change.base.book = {"new", "1"};
    }
    void edit(Desk &desk)
    {
        ManagedObject *object = any(desk);
        if (!object)
            return;
        const int number = numberOf(*object);
        Desk::Change &change = changeOf(desk, number);
        const auto text = std::to_string(m_random() % 5);
        const bool title = m_random() % 2;
        say(desk, title ? "title" : "price") << number << "=" << text << "; ";
        std::string &before = title ? change.base.book.title : change.base.book.price;
        if (title)
            object->setValue("title", text);
        else
            object->setValue("price", std::stod(text));
        auto &held = title ? change.title : change.price;
        held = text == before ? std::nullopt : std::optional(text);
        forgetIfEmpty(desk, number);
    }
    /// Shelves are not in the model: the invariants and the agreement of both contexts are looked at.
    void shelve(Desk &desk)
    {
        if (!m_withShelves)
            return edit(desk);
        const auto all = fetch(*desk.context, "Shelf");
        if (m_random() % 8 == 0 && all.size() > 1) {
            say(desk, "remove a shelf; ");
            m_shelvesMoved = true;
            desk.context->remove(*all[m_random() % all.size()]);
        } else if (ManagedObject *object = any(desk); object && !all.empty()) {
            say(desk, "shelve") << numberOf(*object) << "; ";
            m_shelvesMoved = true;
            object->setRelated("shelf", all[m_random() % all.size()]);
        }
    }
    void label(Desk &desk)
    {
        merge(desk); // links are kept as they were read until the next merge
        ManagedObject *object = any(desk);
        if (!object)
            return;
        const int number = numberOf(*object);
        const auto all = fetch(*desk.context, "Label");
        const int which = static_cast<int>(m_random() % all.size());
        ManagedObject &tag = *all[static_cast<std::size_t>(which)];
        const auto &held = object->objects("labels");
        const bool there = std::find(held.begin(), held.end(), &tag) != held.end();
        say(desk, there ? "unlabel" : "label") << number << " " << which << "; ";
        if (there)
            object->removeObject("labels", tag);
        else
            object->addObject("labels", tag);
        changeOf(desk, number).labels[which] = !there;
    }
    void remove(Desk &desk)
    {
        ManagedObject *object = any(desk);
        if (!object)
            return;
        const int number = numberOf(*object);
        say(desk, "remove") << number << "; ";
        desk.context->remove(*object);
        if (desk.changes[number].inserted)
            desk.changes.erase(number);
        else
            desk.changes[number].deleted = true;
    }
    void save(Desk &desk)
    {
        say(desk, "save; ");
        const SaveReport report = value(desk.context->save());
        const std::set<int> deleted = saveInModel(desk, m_state);
        Desk &other = &desk == m_desks.data() ? m_desks[1] : m_desks[0];
        if (m_random() % 2) {
            m_commands << "(merged) ";
            other.context->mergeChanges(report.changes);
            std::erase_if(other.changes, [&](const auto &entry) { return deleted.contains(entry.first); });
        }
    }
    void merge(Desk &desk)
    {
        say(desk, "merge; ");
        (void)value(desk.context->mergeExternalChanges());
        forgetDeleted(desk);
    }
    void rollback(Desk &desk)
    {
        say(desk, "rollback; ");
        desk.context->rollback();
        desk.changes.clear();
    }
    /// A merge takes the changes of records that were deleted elsewhere.
    void forgetDeleted(Desk &desk) const
    {
        std::erase_if(desk.changes,
            [this](const auto &entry) { return !entry.second.inserted && !m_state.rows.contains(entry.first); });
    }

    static Books shown(ObjectContext &context)
    {
        Books books;
        for (const ManagedObject *object : fetch(context, "Book")) {
            std::ostringstream price;
            price << object->number("price");
            books[numberOf(*object)] = {std::string(object->text("title")), price.str()};
        }
        return books;
    }
    void check(Desk &desk)
    {
        if (m_shelvesMoved)
            return; // a shelf moves the save of a row, of which the model knows nothing
        const Books is = shown(*desk.context);
        const Books expected = desk.view(m_state);
        if (is == expected)
            return;
        std::ostringstream text;
        text << (&desk == m_desks.data() ? "A" : "B") << " shows " << is << "instead of " << expected;
        throw Mismatch(text.str());
    }

    /// Both save and look again: now both, and whoever comes new, see the same.
    void settle()
    {
        for (Desk &desk : m_desks)
            save(desk);
        for (Desk &desk : m_desks) {
            merge(desk);
            desk.context->rollback();
            desk.changes.clear();
            check(desk);
        }
        ObjectContext fresh(*m_store, MergePolicy::Rollback);
        const std::string seen = everything(fresh);
        for (Desk &desk : m_desks) {
            if (const std::string here = everything(*desk.context); here != seen)
                throw Mismatch("the contexts end apart: " + here + " and " + seen);
        }
        if (!m_shelvesMoved) {
            std::ostringstream links;
            for (const auto &[number, which] : m_state.links)
                links << number << "-" << which << " ";
            if (const std::string held = linksOf(fresh); held != links.str())
                throw Mismatch("links " + held + "instead of " + links.str());
        }
        for (const std::string &problem : faults::storeProblems(m_file, model()))
            throw Mismatch(problem);
    }
    static std::string linksOf(ObjectContext &context)
    {
        const auto all = fetch(context, "Label");
        std::set<std::pair<int, int>> links;
        for (const ManagedObject *object : fetch(context, "Book")) {
            for (ManagedObject *tag : object->objects("labels"))
                links.insert(
                    {numberOf(*object), static_cast<int>(std::find(all.begin(), all.end(), tag) - all.begin())});
        }
        std::ostringstream text;
        for (const auto &[number, which] : links)
            text << number << "-" << which << " ";
        return text.str();
    }
    static std::string everything(ObjectContext &context)
    {
        std::ostringstream text;
        text << shown(context) << linksOf(context);
        for (const ManagedObject *object : fetch(context, "Book")) {
            const ManagedObject *on = object->related("shelf");
            text << numberOf(*object) << "@" << (on ? on->objectID().key : 0) << " ";
        }
        return text.str();
    }

    Random m_random;
    fs::path m_file;
    support::TestClock m_clock;
    std::unique_ptr<Store> m_store;
    std::array<Desk, 2> m_desks;
    StoreState m_state;
    int m_lastNumber = 0;
    bool m_withShelves;
    bool m_shelvesMoved = false;
    std::ostringstream m_commands;
};

class TwoContexts
{
public:
    std::int64_t prepare(std::uint64_t seed)
    {
        m_seed = seed;
        fs::create_directory(m_folder.path() / "empty");
        support::TestClock clock(support::at("2026-01-01"));
        const auto store = value(Store::open(model(), m_folder.path() / "empty" / "books.store", clock));
        ObjectContext context(*store, MergePolicy::Rollback);
        for (int i = 0; i < shelves; ++i)
            context.insert("Shelf");
        for (int i = 0; i < labels; ++i)
            context.insert("Label");
        (void)value(context.save());
        return 0;
    }

    std::optional<std::string> run(std::int64_t number)
    {
        const fs::path folder = m_folder.path() / "case";
        fs::remove_all(folder);
        fs::copy(m_folder.path() / "empty", folder);
        Sequence sequence(folder / "books.store", m_seed * 1000003 + static_cast<std::uint64_t>(number));
        try {
            sequence.run();
            return std::nullopt;
        } catch (const std::exception &failure) {
            return std::string(failure.what()) + "\n  after " + sequence.commands();
        }
    }

private:
    support::TemporaryFolder m_folder;
    std::uint64_t m_seed = 1;
};

} // namespace

int main(int argc, char **argv)
{
    TwoContexts contexts;
    return faults::runHarness(argc, argv,
        {"harness_contexts", [&](std::uint64_t seed) { return contexts.prepare(seed); },
            [&](std::int64_t number) { return contexts.run(number); }, {}});
}
