// SPDX-License-Identifier: GPL-3.0-or-later
#include "generator.h"

#include "foundation/clock.h"
#include "model/entities.h"
#include "model/smart_folder.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace bench {

namespace {

using objectstore::Instant;
using objectstore::ManagedObject;

constexpr std::array<const char *, 40> vocabulary{"call", "the", "movers", "about", "piano", "return", "library",
    "books", "draft", "release", "notes", "plant", "winter", "garlic", "pay", "electricity", "bill", "ask", "Zoë",
    "for", "tickets", "order", "paint", "kitchen", "write", "report", "meeting", "with", "supplier", "repair",
    "bicycle", "book", "dentist", "renew", "passport", "clean", "gutters", "water", "plants", "Łódź"};

unsigned next(unsigned &state)
{
    state = state * 1664525U + 1013904223U;
    return state >> 8U;
}

class Presenter final : public foundation::ErrorPresenter
{
public:
    void presentError(const foundation::Error &error) override
    {
        throw std::runtime_error(error.message + " " + error.detail);
    }
};

std::vector<ManagedObject *> make(objectstore::ObjectContext &moc, const char *entity, int number, const char *title)
{
    std::vector<ManagedObject *> made;
    for (int i = 1; i <= number; ++i) {
        ManagedObject &object = moc.insert(entity);
        object.setValue("title", std::string(title) + " " + std::to_string(i));
        made.push_back(&object);
    }
    return made;
}

void save(objectstore::ObjectContext &moc)
{
    if (const auto saved = moc.save(); !saved)
        throw std::runtime_error(saved.error().message + " " + saved.error().detail);
}

std::vector<ManagedObject *> all(objectstore::ObjectContext &moc, const char *entity)
{
    auto found = moc.fetch({.entity = entity, .predicate = {}});
    if (!found)
        throw std::runtime_error(found.error().message);
    return std::move(*found);
}

/// As people make them: a word in the title, a priority, a star, a place, a tag, or two of these.
void makeSmartFolders(objectstore::ObjectContext &moc, int number)
{
    constexpr std::array formats{
        "title CONTAINS[c] 'garlic'",
        "star == YES AND complete == NO",
        "priorities.priority >= 2 AND complete == NO",
        "(title CONTAINS[c] 'piano' OR notes CONTAINS[c] 'winter') AND star == YES",
        "folders.title == 'Folder 7' AND complete == NO",
        "ANY tags.title == 'tag 11'",
        "contexts.title == 'Context 3' OR contexts.title == 'Context 4'",
    };
    for (int i = 0; i < number; ++i) {
        auto &folder = model::insert<model::SmartFolder>(moc);
        folder.setTitle("Smart folder " + std::to_string(i + 1));
        folder.setPredicate(objectstore::Predicate::format(formats[static_cast<std::size_t>(i) % formats.size()]));
    }
}

} // namespace

Workplace::Workplace()
{
    std::string name = (std::filesystem::temp_directory_path() / "quelvin-bench-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    m_path = name;
}

Workplace::~Workplace()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string words(std::size_t length, unsigned &state)
{
    std::string text;
    while (text.size() < length) {
        if (!text.empty())
            text += ' ';
        text += vocabulary[next(state) % vocabulary.size()];
    }
    return text;
}

std::unique_ptr<model::TaskStore> generate(const std::filesystem::path &folder, const Amount &amount)
{
    static const foundation::SystemClock clock;
    static Presenter presenter;
    auto opened = model::TaskStore::open(folder, clock, presenter);
    if (!opened)
        throw std::runtime_error(opened.error().message);
    unsigned state = amount.seed;
    {
        objectstore::ObjectContext moc((*opened)->store(), objectstore::MergePolicy::Rollback);
        const auto folders = make(moc, "Folders", amount.folders, "Folder");
        const auto contexts = make(moc, "Contexts", amount.contexts, "Context");
        const auto tags = make(moc, "Tags", amount.tags, "tag");
        makeSmartFolders(moc, amount.smartFolders);
        const auto states = all(moc, "States");
        const auto priorities = all(moc, "Priorities");
        const double now = clock.now().seconds;
        for (int i = 0; i < amount.tasks; ++i) {
            ManagedObject &task = moc.insert("Tasks");
            task.setValue("title", words(38, state));
            if (next(state) % 10 < 4)
                task.setValue("notes", words(198, state));
            task.setValue("complete", next(state) % 10 < 7);
            task.setValue("taskID", std::int64_t{i + 1});
            task.setValue("isNew", false);
            task.setValue("star", next(state) % 8 == 0);
            task.setValue("priority", static_cast<std::int64_t>(next(state) % 5) - 1);
            task.setDate("creationDate", Instant{now - 86400.0 * (next(state) % 1000)});
            task.setDate("modifiedDate", Instant{now - 86400.0 * (next(state) % 1000)});
            if (next(state) % 3 == 0)
                task.setDate("dueDate", Instant{now + 86400.0 * (static_cast<double>(next(state) % 200) - 20)});
            task.setRelated("folders", folders[next(state) % folders.size()]);
            task.setRelated("contexts", contexts[next(state) % contexts.size()]);
            task.setRelated("states", states[next(state) % states.size()]);
            task.setRelated("priorities", priorities[next(state) % priorities.size()]);
            for (int tag = 0; tag < 2; ++tag)
                task.addObject("tags", *tags[next(state) % tags.size()]);
            if (i % 10000 == 9999)
                save(moc);
        }
        save(moc);
    }
    return std::move(*opened);
}

} // namespace bench
